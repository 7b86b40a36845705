// rptset.dll over a real store: the installation flag and the destination records.
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "services_test_util.h"

namespace svctest {
namespace {

class RptsetTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        ASSERT_TRUE(LoadRptsetDLL());
        getAll = BindRptset<GetAllDestSetting_fn>(hLibRPTSET, "GetAllDestSetting");
        getOne = BindRptset<GetDestSetting_fn>(hLibRPTSET, "GetDestSetting");
        ASSERT_TRUE(getAll && getOne);
        for (auto& r : owned) {
            r = std::make_unique<DestData>();
            std::memset(r.get(), 0x5a, sizeof(DestData));
            table.push_back(r.get());
        }
    }
    // The first n subkey names of ID_LIST in the store's enumeration order.
    std::vector<std::string> StoredIDs(DWORD n) {
        std::vector<std::string> names;
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, kIDList.c_str(), 0, KEY_READ, &key), 0);
        char name[256];
        for (DWORD i = 0, length = sizeof name;
             i < n && RegEnumKeyEx(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) == 0;
             ++i, length = sizeof name) {
            names.emplace_back(name, length);
        }
        RegCloseKey(key);
        return names;
    }
    GetAllDestSetting_fn* getAll = nullptr;
    GetDestSetting_fn* getOne = nullptr;
    std::unique_ptr<DestData> owned[DEST_MAX_RECORDS];
    std::vector<DestData*> table;  // as the program passes its records
    int count = -1;
};

TEST_F(RptsetTest, InstallationFlag) {
    auto* checkInst = BindRptset<CheckInstVantrel_fn>(hLibRPTSET, "CheckInstVantrel");
    ASSERT_NE(checkInst, nullptr);
    const std::string setup = "SOFTWARE\\Tavik\\VNTService\\SETUP";
    EXPECT_EQ(checkInst(), 0);  // no key
    CreateKey(setup);
    EXPECT_EQ(checkInst(), 0);  // no value
    for (DWORD value : {1u, 0u, 2u}) {
        SetDword(setup, "Installed", value);
        EXPECT_EQ(checkInst(), value == 1 ? 1 : 0) << value;
    }
    SetText(setup, "Installed", "1");  // a text is not the flag
    EXPECT_EQ(checkInst(), 0);
}

TEST_F(RptsetTest, AllDestinationsWithStoredValuesDefaultsAndBadValues) {
    const std::string snmp = kIDList + "\\SNMP";
    for (auto [name, text] : {std::pair{"Method", "MANAGER (SNMP)"},
                              {"Reserved", "keep me"},
                              {"Address", "192.0.2.7"},
                              {"Phone", "0312"},
                              {"User", "admin"}}) {
        SetText(snmp, name, text);
    }
    std::string password = "s3cret";
    Ras_Encode(password.data(), static_cast<int>(password.size()));
    SetText(snmp, "Password", password);
    for (auto [name, value] : {std::pair{"Port", 162u},
                               {"HourMask", 0xFFu},
                               {"RetryInterval", 10u},
                               {"RetryTime", 0u},
                               {"ScheduleFlag", 7u}}) {
        SetDword(snmp, name, value);
    }
    const std::string odd = kIDList + "\\Odd";
    ASSERT_EQ(SetRaw(odd, "Port", REG_SZ, std::string("162", 4)), 0);
    ASSERT_EQ(SetRaw(odd, "HourMask", REG_BINARY, std::string(4, '\1')), 0);
    SetDword(odd, "Method", 5);
    SetText(odd, "Address", std::string(5000, 'a'));
    ASSERT_EQ(SetRaw(odd, "User", REG_SZ, "no terminator"), 0);

    table[0]->Operation = 2;
    ASSERT_EQ(getAll(table.data(), &count), 0) << Trace();
    ASSERT_EQ(count, 2);
    const std::vector<std::string> order = StoredIDs(2);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(table[i]->ID, order[i]);
    const DestData* full = table[order[0] == "SNMP" ? 0 : 1];
    const DestData* bad = table[order[0] == "SNMP" ? 1 : 0];
    EXPECT_EQ(full->Operation, 0u);
    EXPECT_STREQ(full->Method, "MANAGER (SNMP)");
    EXPECT_STREQ(full->Reserved, "keep me");
    EXPECT_STREQ(full->Address, "192.0.2.7");
    EXPECT_STREQ(full->Phone, "0312");
    EXPECT_STREQ(full->User, "admin");
    EXPECT_STREQ(full->Password, "s3cret");
    EXPECT_EQ(std::vector<uint32_t>({full->Port, full->HourMask, full->RetryInterval,
                                     full->RetryTime, full->ScheduleFlag}),
              std::vector<uint32_t>({162, 0xFF, 10, 0, 7}));
    EXPECT_EQ(Trace().find("s3cret"), std::string::npos);

    // Values of another type fall back to the defaults, an overlong text is cut.
    EXPECT_EQ(std::vector<uint32_t>({bad->Operation, bad->Port, bad->HourMask, bad->RetryInterval,
                                     bad->RetryTime, bad->ScheduleFlag}),
              std::vector<uint32_t>({0, 31134, 0xFFFFFF, 5, 72, 0}));
    EXPECT_STREQ(bad->Method, "");
    EXPECT_STREQ(bad->Password, "");
    EXPECT_EQ(std::strlen(bad->Address), 4095u);
    EXPECT_STREQ(bad->User, "no terminator");
    for (const char* line : {"value Port has the wrong type", "value HourMask has the wrong type",
                             "value Method has the wrong type", "value Address is too long"}) {
        EXPECT_EQ(TraceCount(line), 1) << line;
    }
    EXPECT_EQ(static_cast<unsigned char>(table[2]->ID[0]), 0x5a);  // past the count: untouched
}

TEST_F(RptsetTest, ListLimitsAndFailures) {
    EXPECT_NE(getAll(table.data(), &count), 0);  // no ID_LIST key
    EXPECT_EQ(count, 0);
    EXPECT_EQ(getAll(nullptr, &count), -1);
    EXPECT_EQ(getAll(table.data(), nullptr), -1);
    table[99] = nullptr;
    EXPECT_EQ(getAll(table.data(), &count), -1);
    table[99] = owned[99].get();

    CreateKey(kIDList);
    ASSERT_EQ(getAll(table.data(), &count), 0);
    EXPECT_EQ(count, 0);

    // More IDs than a table holds: the first hundred, and a trace line.
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    for (int i = 0; i < 105; ++i)
        CreateKey(kIDList + "\\ID" + std::to_string(i));
    ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(getAll(table.data(), &count), 0);
    EXPECT_EQ(count, 100);
    EXPECT_EQ(table[99]->ID, StoredIDs(100).at(99));
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
    EXPECT_STREQ(record->ID, "Nobody");
    EXPECT_STREQ(record->Address, "203.0.113.9");
    record->ID[0] = '\0';
    EXPECT_EQ(getOne(record), -1);
    EXPECT_EQ(getOne(nullptr), -1);
}

// A new installation's store (seeded from data/default.reg) as the library sees it.
TEST(RptsetSeededStore, InstalledAndBuiltInDestination) {
    zoltest::ProductRoot root;
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    HMODULE lib = LoadLibrary((root.path() / "lib" / "rptset.dll").c_str());
    ASSERT_NE(lib, nullptr);
    EXPECT_EQ(BindRptset<CheckInstVantrel_fn>(lib, "CheckInstVantrel")(), 1);
    auto record = std::make_unique<DestData>();
    std::strcpy(record->ID, "VANTRELREPORT");
    EXPECT_EQ(BindRptset<GetDestSetting_fn>(lib, "GetDestSetting")(record.get()), 0);
    EXPECT_STREQ(record->ID, "VantrelReport");
    FreeLibrary(lib);
    ZolRegCloseStore();
}

}  // namespace
}  // namespace svctest
