// rptset.dll over a real store: the installation flag and the destination records.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "regpaths.h"
#include "services_test_util.h"

namespace svctest {
namespace {

class RptsetTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        ASSERT_TRUE(LoadRptsetDLL());
        Bind(getAll, "GetAllDestSetting");
        Bind(getOne, "GetDestSetting");
        std::memset(records.data(), 0x5a, records.size() * sizeof(DestData));
        for (DestData& r : records)
            table.push_back(&r);
    }
    GetAllDestSetting_fn* getAll = nullptr;
    GetDestSetting_fn* getOne = nullptr;
    std::vector<DestData> records = std::vector<DestData>(DEST_MAX_RECORDS);
    std::vector<DestData*> table;  // as the program passes its records
    int count = -1;
};

TEST_F(RptsetTest, InstallationFlag) {
    auto* checkInst = BindFromHandle<CheckInstVantrel_fn>(hLibRPTSET, "CheckInstVantrel");
    ASSERT_NE(checkInst, nullptr);
    const std::string setup = ZOL_KEY_VNT_SETUP;
    EXPECT_EQ(checkInst(), 0);  // no key
    CreateKey(setup);
    EXPECT_EQ(checkInst(), 0);  // no value
    for (DWORD value : {1u, 0u, 2u}) {
        SetDword(setup, "Installed", value);
        EXPECT_EQ(checkInst(), value == 1 ? 1 : 0) << value;
    }
}

TEST_F(RptsetTest, AllDestinationsWithStoredValuesDefaultsAndBadValues) {
    const std::string snmp = kIDList + "\\SNMP";
    SetText(snmp, "Method", "MANAGER (SNMP)");
    SetText(snmp, "Address", "192.0.2.7");
    std::string password = "s3cret";
    Ras_Encode(password.data(), static_cast<int>(password.size()));
    SetText(snmp, "Password", password);
    SetDword(snmp, "Port", 162);
    SetDword(snmp, "RetryTime", 0);
    const std::string odd = kIDList + "\\Odd";
    ASSERT_EQ(SetRaw(odd, "Port", REG_SZ, std::string("162", 4)), 0);
    ASSERT_EQ(SetRaw(odd, "HourMask", REG_BINARY, std::string(4, '\1')), 0);
    SetText(odd, "Address", std::string(5000, 'a'));

    table[0]->Operation = 2;
    ASSERT_EQ(getAll(table.data(), &count), 0) << Trace();
    ASSERT_EQ(count, 2);
    // In the store's order of names, without regard to case.
    const DestData* bad = table[0];
    const DestData* full = table[1];
    EXPECT_STREQ(bad->ID, "Odd");
    EXPECT_STREQ(full->ID, "SNMP");
    EXPECT_EQ(full->Operation, 0u);
    EXPECT_EQ(std::string(full->Method) + "|" + full->Address + "|" + full->Password,
              "MANAGER (SNMP)|192.0.2.7|s3cret");
    EXPECT_EQ(std::vector<uint32_t>({full->Port, full->RetryTime}),
              std::vector<uint32_t>({162, 0}));
    EXPECT_EQ(Trace().find("s3cret"), std::string::npos);

    // Values of another type fall back to the defaults, an overlong text is cut.
    EXPECT_EQ(std::vector<uint32_t>({bad->Operation, bad->Port, bad->HourMask, bad->RetryInterval,
                                     bad->RetryTime, bad->ScheduleFlag}),
              std::vector<uint32_t>({0, 31134, 0xFFFFFF, 5, 72, 0}));
    EXPECT_STREQ(bad->Password, "");
    EXPECT_EQ(std::strlen(bad->Address), 4095u);
    for (const char* line : {"value Port has the wrong type", "value Address is too long"}) {
        EXPECT_EQ(TraceCount(line), 1) << line;
    }
    EXPECT_EQ(static_cast<unsigned char>(table[2]->ID[0]), 0x5a);  // past the count: untouched
}

TEST_F(RptsetTest, ListLimitsAndFailures) {
    EXPECT_NE(getAll(table.data(), &count), 0);  // no ID_LIST key
    EXPECT_EQ(count, 0);
    EXPECT_EQ(getAll(nullptr, &count), -1);
    EXPECT_EQ(getAll(table.data(), nullptr), -1);

    CreateKey(kIDList);
    ASSERT_EQ(getAll(table.data(), &count), 0);
    EXPECT_EQ(count, 0);

    // More IDs than a table holds: the first hundred, and a trace line.
    std::vector<std::string> ids;
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    for (int i = 0; i < 105; ++i) {
        ids.push_back("ID" + std::to_string(i));
        CreateKey(kIDList + "\\" + ids.back());
    }
    ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    std::sort(ids.begin(), ids.end());
    ASSERT_EQ(getAll(table.data(), &count), 0);
    EXPECT_EQ(count, 100);
    EXPECT_EQ(table[99]->ID, ids[99]);
    EXPECT_EQ(TraceCount("more than 100 destination IDs"), 1) << Trace();
}

TEST_F(RptsetTest, OneDestinationByIDWithoutRegardToCase) {
    SetText(kIDList + "\\Mail Center", "Address", "203.0.113.9");
    CreateKey(kIDList + "\\Other");
    DestData* record = table[0];
    std::strcpy(record->ID, "MAIL center");
    record->Operation = 2;
    ASSERT_EQ(getOne(record), 0) << Trace();
    EXPECT_STREQ(record->ID, "Mail Center");  // the stored spelling
    EXPECT_EQ(record->Operation, 2u);         // left as the caller set it
    EXPECT_STREQ(record->Address, "203.0.113.9");
    EXPECT_EQ(record->Port, 31134u);

    // An unknown ID: "not found", and the record is left as it was.
    std::strcpy(record->ID, "Nobody");
    EXPECT_EQ(getOne(record), 2);
    EXPECT_STREQ(record->Address, "203.0.113.9");
    EXPECT_EQ(getOne(nullptr), -1);
}

}  // namespace
}  // namespace svctest
