// rptset.dll over a real store: the installation flag and the destination records.
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "rptset_api.h"
#include "services_test_util.h"

namespace svctest {
namespace {

class RptsetTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        ASSERT_TRUE(LoadRptsetDLL());
        checkInst = BindRptset<CheckInstVantrel_fn>(hLibRPTSET, "CheckInstVantrel");
        getAll = BindRptset<GetAllDestSetting_fn>(hLibRPTSET, "GetAllDestSetting");
        getOne = BindRptset<GetDestSetting_fn>(hLibRPTSET, "GetDestSetting");
        ASSERT_NE(checkInst, nullptr);
        ASSERT_NE(getAll, nullptr);
        ASSERT_NE(getOne, nullptr);
    }

    // DEST_MAX_RECORDS records, as the program passes them.
    struct Table {
        std::vector<std::unique_ptr<DestData>> owned;
        std::vector<DestData*> pointers;
        Table() {
            for (int i = 0; i < DEST_MAX_RECORDS; ++i) {
                owned.push_back(std::make_unique<DestData>());
                std::memset(owned.back().get(), 0x5a, sizeof(DestData));
                pointers.push_back(owned.back().get());
            }
        }
    };

    // The subkey names of ID_LIST in the store's enumeration order.
    std::vector<std::string> StoredIDs() {
        std::vector<std::string> names;
        HKEY key = nullptr;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, kIDList.c_str(), 0, KEY_READ, &key) != 0) {
            return names;
        }
        for (DWORD i = 0;; ++i) {
            char name[256];
            DWORD length = sizeof name;
            if (RegEnumKeyEx(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != 0) {
                break;
            }
            names.emplace_back(name, length);
        }
        RegCloseKey(key);
        return names;
    }

    CheckInstVantrel_fn* checkInst = nullptr;
    GetAllDestSetting_fn* getAll = nullptr;
    GetDestSetting_fn* getOne = nullptr;
};

const std::string kSetup = "SOFTWARE\\Tavik\\VNTService\\SETUP";

TEST_F(RptsetTest, InstallationFlag) {
    EXPECT_EQ(checkInst(), 0);  // no key
    CreateKey(kSetup);
    EXPECT_EQ(checkInst(), 0);  // no value
    SetDword(kSetup, "Installed", 1);
    EXPECT_EQ(checkInst(), 1);
    SetDword(kSetup, "Installed", 0);
    EXPECT_EQ(checkInst(), 0);
    SetDword(kSetup, "Installed", 2);
    EXPECT_EQ(checkInst(), 0);
    SetText(kSetup, "Installed", "1");  // not a number
    EXPECT_EQ(checkInst(), 0);
}

TEST_F(RptsetTest, AllDestinationsWithStoredValuesAndDefaults) {
    const std::string snmp = kIDList + "\\SNMP";
    SetText(snmp, "Method", "MANAGER (SNMP)");
    SetText(snmp, "Reserved", "keep me");
    SetText(snmp, "Address", "192.0.2.7");
    SetDword(snmp, "Port", 162);
    SetText(snmp, "Phone", "0312345678");
    SetText(snmp, "User", "admin");
    std::string password = "s3cret";
    Ras_Encode(password.data(), static_cast<int>(password.size()));
    ASSERT_NE(password, "s3cret");
    SetText(snmp, "Password", password);
    SetDword(snmp, "HourMask", 0x0000FF);
    SetDword(snmp, "RetryInterval", 10);
    SetDword(snmp, "RetryTime", 0);
    SetDword(snmp, "ScheduleFlag", 7);
    CreateKey(kIDList + "\\TCP_IP In-Band");

    Table table;
    table.pointers[0]->Operation = 2;
    int count = -1;
    ASSERT_EQ(getAll(table.pointers.data(), &count), 0) << Trace();
    ASSERT_EQ(count, 2);
    const std::vector<std::string> order = StoredIDs();
    ASSERT_EQ(order.size(), 2u);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(table.pointers[i]->ID, order[i]);

    const DestData* full = table.pointers[order[0] == "SNMP" ? 0 : 1];
    const DestData* empty = table.pointers[order[0] == "SNMP" ? 1 : 0];
    EXPECT_EQ(full->Operation, 0u);
    EXPECT_STREQ(full->Method, "MANAGER (SNMP)");
    EXPECT_STREQ(full->Reserved, "keep me");
    EXPECT_STREQ(full->Address, "192.0.2.7");
    EXPECT_EQ(full->Port, 162u);
    EXPECT_STREQ(full->Phone, "0312345678");
    EXPECT_STREQ(full->User, "admin");
    EXPECT_STREQ(full->Password, "s3cret");
    EXPECT_EQ(full->HourMask, 0xFFu);
    EXPECT_EQ(full->RetryInterval, 10u);
    EXPECT_EQ(full->RetryTime, 0u);
    EXPECT_EQ(full->ScheduleFlag, 7u);

    EXPECT_STREQ(empty->ID, "TCP_IP In-Band");
    EXPECT_EQ(empty->Operation, 0u);
    for (const char* text : {empty->Method, empty->Reserved, empty->Address, empty->Phone,
                             empty->User, empty->Password}) {
        EXPECT_STREQ(text, "");
    }
    EXPECT_EQ(empty->Port, 31134u);
    EXPECT_EQ(empty->HourMask, 0xFFFFFFu);
    EXPECT_EQ(empty->RetryInterval, 5u);
    EXPECT_EQ(empty->RetryTime, 72u);
    EXPECT_EQ(empty->ScheduleFlag, 0u);
    // Records past the count are not touched.
    EXPECT_EQ(static_cast<unsigned char>(table.pointers[2]->ID[0]), 0x5a);
    // The password never reaches the trace.
    EXPECT_EQ(Trace().find("s3cret"), std::string::npos);
}

TEST_F(RptsetTest, BadStoredValuesFallBackOrAreCut) {
    const std::string id = kIDList + "\\Odd";
    SetText(id, "Port", "162");  // text where a number belongs
    SetRaw(id, "HourMask", REG_BINARY, std::string("\x01\x02\x03\x04", 4));  // binary
    SetDword(id, "Method", 5);                       // number where a text belongs
    SetText(id, "Address", std::string(5000, 'a'));  // longer than the field
    SetRaw(id, "User", REG_SZ, "no terminator");     // stored without its zero

    Table table;
    int count = 0;
    ASSERT_EQ(getAll(table.pointers.data(), &count), 0);
    ASSERT_EQ(count, 1);
    const DestData* d = table.pointers[0];
    EXPECT_EQ(d->Port, 31134u);
    EXPECT_EQ(d->HourMask, 0xFFFFFFu);
    EXPECT_STREQ(d->Method, "");
    EXPECT_EQ(std::strlen(d->Address), 4095u);
    EXPECT_STREQ(d->User, "no terminator");
    EXPECT_EQ(TraceCount("value Port has the wrong type"), 1) << Trace();
    EXPECT_EQ(TraceCount("value Method has the wrong type"), 1);
    EXPECT_EQ(TraceCount("value HourMask has the wrong type"), 1);
    EXPECT_EQ(TraceCount("value Address is too long"), 1);
}

TEST_F(RptsetTest, ListLimitsAndFailures) {
    Table table;
    int count = -1;
    // No ID_LIST key at all: a failure, nothing returned.
    EXPECT_NE(getAll(table.pointers.data(), &count), 0);
    EXPECT_EQ(count, 0);
    // Bad arguments.
    EXPECT_EQ(getAll(nullptr, &count), -1);
    EXPECT_EQ(getAll(table.pointers.data(), nullptr), -1);
    table.pointers[99] = nullptr;
    EXPECT_EQ(getAll(table.pointers.data(), &count), -1);
    table.pointers[99] = table.owned[99].get();

    // An empty list.
    CreateKey(kIDList);
    ASSERT_EQ(getAll(table.pointers.data(), &count), 0);
    EXPECT_EQ(count, 0);

    // More IDs than a table holds: the first hundred, and a trace line.
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    for (int i = 0; i < 105; ++i)
        CreateKey(kIDList + "\\ID" + std::to_string(i));
    ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(getAll(table.pointers.data(), &count), 0);
    EXPECT_EQ(count, 100);
    const std::vector<std::string> order = StoredIDs();
    EXPECT_EQ(table.pointers[99]->ID, order[99]);
    EXPECT_EQ(TraceCount("more than 100 destination IDs"), 1) << Trace();
}

TEST_F(RptsetTest, OneDestinationByIDWithoutRegardToCase) {
    SetText(kIDList + "\\Mail Center", "Address", "203.0.113.9");
    SetDword(kIDList + "\\Mail Center", "RetryTime", 240);
    CreateKey(kIDList + "\\Other");

    auto record = std::make_unique<DestData>();
    std::strcpy(record->ID, "MAIL center");
    record->Operation = 2;
    ASSERT_EQ(getOne(record.get()), 0) << Trace();
    EXPECT_STREQ(record->ID, "Mail Center");  // the stored spelling
    EXPECT_EQ(record->Operation, 2u);         // left as the caller set it
    EXPECT_STREQ(record->Address, "203.0.113.9");
    EXPECT_EQ(record->RetryTime, 240u);
    EXPECT_EQ(record->Port, 31134u);

    // An unknown ID: "not found", and the record is left as it was.
    auto missing = std::make_unique<DestData>();
    std::strcpy(missing->ID, "Nobody");
    std::strcpy(missing->Address, "unchanged");
    EXPECT_EQ(getOne(missing.get()), 2);
    EXPECT_STREQ(missing->Address, "unchanged");
    EXPECT_STREQ(missing->ID, "Nobody");

    auto blank = std::make_unique<DestData>();
    EXPECT_EQ(getOne(blank.get()), -1);
    EXPECT_EQ(getOne(nullptr), -1);
}

}  // namespace
}  // namespace svctest
