// Store transactions for C++ callers of the platform layer: a scope that begins one, and rolls it
// back when it is left without commit(), so that an early return or an exception never leaves
// half a record in the store. Over ZolRegBeginTransaction / ZolRegCommitTransaction /
// ZolRegRollbackTransaction, so they nest as those do: inside a caller's own transaction only the
// outermost commit writes, and a rollback dooms the caller's transaction as well.
#pragma once

#include "zolwin.h"

namespace zolwin {

class Transaction {
  public:
    Transaction() noexcept : status_(ZolRegBeginTransaction()) {}
    ~Transaction() {
        if (open())
            ZolRegRollbackTransaction();
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // ERROR_SUCCESS when the transaction was begun; otherwise why not.
    LONG status() const noexcept { return status_; }
    // Begun and neither committed nor rolled back yet.
    bool open() const noexcept { return status_ == ERROR_SUCCESS && !ended_; }

    // Writes everything since the beginning. A transaction that could not be begun commits
    // nothing and returns why: a commit of our own level would end a caller's outer transaction.
    // A transaction already ended returns ERROR_INVALID_STATE. A failed commit has already ended
    // (and discarded) the transaction in the store.
    LONG commit() noexcept {
        if (status_ != ERROR_SUCCESS)
            return status_;
        if (ended_)
            return ERROR_INVALID_STATE;
        ended_ = true;
        return ZolRegCommitTransaction();
    }
    // Discards everything since the beginning now rather than at the end of the scope.
    LONG rollback() noexcept {
        if (status_ != ERROR_SUCCESS)
            return status_;
        if (ended_)
            return ERROR_INVALID_STATE;
        ended_ = true;
        return ZolRegRollbackTransaction();
    }

  private:
    LONG status_;
    bool ended_ = false;
};

// A consistent view for a read of several values or keys: no other process's commit lands
// between them. It always ends with a commit, which writes nothing of its own and, unlike a
// rollback, leaves a caller's outer transaction usable.
class ReadSnapshot {
  public:
    ReadSnapshot() noexcept : begun_(ZolRegBeginTransaction() == ERROR_SUCCESS) {}
    ~ReadSnapshot() {
        if (begun_)
            ZolRegCommitTransaction();
    }
    ReadSnapshot(const ReadSnapshot&) = delete;
    ReadSnapshot& operator=(const ReadSnapshot&) = delete;

    bool begun() const noexcept { return begun_; }

  private:
    bool begun_;
};

}  // namespace zolwin
