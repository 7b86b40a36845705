// zolwin::Transaction and zolwin::ReadSnapshot: what lands when a scope commits, returns early,
// throws, or nests inside a caller's transaction that is doomed or still open.
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>

#include "registry_fixture.h"
#include "zolwin_transaction.h"

namespace {

using namespace regtest;

class TransactionGuard : public RegistryTest {
  protected:
    void SetUp() override {
        RegistryTest::SetUp();
        ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, "Guard", key_.out()), ERROR_SUCCESS);
    }
    std::optional<DWORD> value(const char* name) { return readDword(key_.get(), name); }
    Key key_;
};

// What a scope does with its guard, and which values are in the store afterwards.
struct ScopeCase {
    const char* name;
    void (*body)(HKEY key);
    bool aLands, bLands;
};

const ScopeCase kScopes[] = {
    {"commit",
     [](HKEY k) {
         zolwin::Transaction tx;
         ASSERT_EQ(tx.status(), ERROR_SUCCESS);
         ASSERT_EQ(setDword(k, "a", 1), ERROR_SUCCESS);
         ASSERT_EQ(setDword(k, "b", 2), ERROR_SUCCESS);
         EXPECT_EQ(tx.commit(), ERROR_SUCCESS);
         EXPECT_FALSE(tx.open());
     },
     true, true},
    {"leaves without commit",
     [](HKEY k) {
         zolwin::Transaction tx;
         ASSERT_EQ(setDword(k, "a", 1), ERROR_SUCCESS);
         ASSERT_EQ(setDword(k, "b", 2), ERROR_SUCCESS);
         EXPECT_TRUE(tx.open());
     },
     false, false},
    {"throws half way",
     [](HKEY k) {
         try {
             zolwin::Transaction tx;
             ASSERT_EQ(setDword(k, "a", 1), ERROR_SUCCESS);
             throw std::runtime_error("the record is bad");
         } catch (const std::runtime_error&) {
         }
         ASSERT_EQ(setDword(k, "b", 2), ERROR_SUCCESS);  // outside: lands at once
     },
     false, true},
    {"rolls back early",
     [](HKEY k) {
         zolwin::Transaction tx;
         ASSERT_EQ(setDword(k, "a", 1), ERROR_SUCCESS);
         EXPECT_EQ(tx.rollback(), ERROR_SUCCESS);
         EXPECT_EQ(tx.commit(), ERROR_INVALID_STATE) << "an ended transaction commits nothing";
         EXPECT_EQ(tx.rollback(), ERROR_INVALID_STATE);
         ASSERT_EQ(setDword(k, "b", 2), ERROR_SUCCESS);  // after the end: no transaction
     },
     false, true},
    {"inner guard commits inside an outer one that commits",
     [](HKEY k) {
         zolwin::Transaction outer;
         {
             zolwin::Transaction inner;
             ASSERT_EQ(setDword(k, "a", 1), ERROR_SUCCESS);
             EXPECT_EQ(inner.commit(), ERROR_SUCCESS);
         }
         ASSERT_EQ(setDword(k, "b", 2), ERROR_SUCCESS);
         EXPECT_EQ(outer.commit(), ERROR_SUCCESS);
     },
     true, true},
    {"inner guard left uncommitted dooms the outer one",
     [](HKEY k) {
         zolwin::Transaction outer;
         ASSERT_EQ(setDword(k, "a", 1), ERROR_SUCCESS);
         { zolwin::Transaction inner; }
         EXPECT_EQ(setDword(k, "b", 2), ERROR_INVALID_STATE);
         EXPECT_EQ(outer.commit(), ERROR_INVALID_STATE);
     },
     false, false},
};

TEST_F(TransactionGuard, WhatLandsForEachWayOfLeavingTheScope) {
    for (const ScopeCase& c : kScopes) {
        SCOPED_TRACE(c.name);
        RegDeleteValue(key_.get(), "a");
        RegDeleteValue(key_.get(), "b");
        c.body(key_.get());
        EXPECT_EQ(value("a").has_value(), c.aLands);
        EXPECT_EQ(value("b").has_value(), c.bLands);
        // Every scope ended its transaction: a new one begins at the outermost level.
        EXPECT_EQ(ZolRegCommitTransaction(), ERROR_INVALID_STATE);
    }
}

// A guard that could not begin (here: inside a doomed transaction) must neither commit nor roll
// back, or it would end the caller's transaction at the caller's level.
TEST_F(TransactionGuard, OneThatCouldNotBeginLeavesTheCallersTransactionAlone) {
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(ZolRegRollbackTransaction(), ERROR_SUCCESS);  // dooms the outer level
    {
        zolwin::Transaction tx;
        EXPECT_EQ(tx.status(), ERROR_INVALID_STATE);
        EXPECT_FALSE(tx.open());
        EXPECT_EQ(tx.commit(), ERROR_INVALID_STATE);
        EXPECT_EQ(tx.rollback(), ERROR_INVALID_STATE);
        zolwin::ReadSnapshot snapshot;
        EXPECT_FALSE(snapshot.begun());
    }
    // The caller's level is still there to end, exactly once.
    EXPECT_EQ(ZolRegCommitTransaction(), ERROR_INVALID_STATE);
    EXPECT_EQ(ZolRegCommitTransaction(), ERROR_INVALID_STATE);
    zolwin::Transaction fresh;
    EXPECT_EQ(fresh.status(), ERROR_SUCCESS);
}

// A snapshot inside a caller's transaction ends with a commit of its own level, which keeps the
// caller's writes and lets the caller go on writing.
TEST_F(TransactionGuard, ReadSnapshotInsideAWriteKeepsItUsable) {
    zolwin::Transaction tx;
    ASSERT_EQ(setDword(key_.get(), "a", 1), ERROR_SUCCESS);
    {
        zolwin::ReadSnapshot snapshot;
        EXPECT_TRUE(snapshot.begun());
        EXPECT_EQ(value("a"), 1u);
    }
    ASSERT_EQ(setDword(key_.get(), "b", 2), ERROR_SUCCESS);
    EXPECT_EQ(tx.commit(), ERROR_SUCCESS);
    EXPECT_EQ(value("a"), 1u);
    EXPECT_EQ(value("b"), 2u);
}

// Without a store nothing begins, and the guard says why.
TEST_F(TransactionGuard, NoStoreIsReportedByStatusAndCommit) {
    ASSERT_EQ(ZolRegRemoveStore(), ERROR_SUCCESS);
    zolwin::Transaction tx;
    EXPECT_NE(tx.status(), ERROR_SUCCESS);
    EXPECT_EQ(tx.commit(), tx.status());
}

}  // namespace
