// The login values are stored as whole records: one refused write leaves the record as stored.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <cstring>

#include "baseset/popsmtp.h"
#include "product_root.h"
#include "store_reader.h"

TEST(MailLoginRecord, OneRefusedWriteLeavesTheWholeRecordAsStored) {
    zoltest::ProductRoot root;
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    ASSERT_EQ(TraceLogInit(0, "logintest", 0, 5, 0), 0);
    HMODULE lib = LoadLibrary(REFUSING_WRITER);
    ASSERT_NE(lib, nullptr);

    POPParam pop{};
    std::strcpy(pop.Server, "pop.example.com");
    std::strcpy(pop.User, "alice");
    std::strcpy(pop.Password, "s3cret");
    pop.Port = 995;
    EXPECT_EQ(PutPopParam(lib, &pop, 5), -1);
    EXPECT_EQ(PutPopParam(nullptr, &pop, 5), -1);
    FreeLibrary(lib);

    // As seeded: the values before the port were not kept either.
    EXPECT_EQ(zoltest::StoreReader(root).text(kMailLoginKey, "POPServer"), "");
    const std::string trace = zoltest::readFile(root.traceFile("logintest"));
    EXPECT_NE(trace.find(std::string("pAMAMRegWrite ") + kMailLoginKey + "/POPPort failed."),
              std::string::npos);
    EXPECT_EQ(trace.find("s3cret"), std::string::npos);
}
