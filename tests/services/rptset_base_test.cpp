// rptset.dll base report settings over a new installation's seeded store: methods, the
// internet-mail base record, the trap list, the delivery method and generic value access.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "regpaths.h"
#include "services_test_util.h"

namespace svctest {
namespace {

const std::string kMethods = ZOL_KEY_METHOD;
const std::string kAddress = kIDList + "\\VantrelReport\\Address";

class RptsetBaseTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        // Replace the empty store with the seeded one of a new installation.
        ZolRegCloseStore();
        const auto r = zoltest::run({root().bin("zolreg").string(), "init", "/f"}, root().env());
        ASSERT_EQ(r.status, 0) << r.err;
        ASSERT_TRUE(LoadRptsetDLL());
    }
    template <class Fn>
    Fn* Bind(const char* name) {
        Fn* fn = BindFromHandle<Fn>(hLibRPTSET, name);
        EXPECT_NE(fn, nullptr) << name;
        return fn;
    }
    // Everything below SOFTWARE\Tavik as REGEDIT4 text: equal snapshots, unchanged store.
    std::string Snapshot() {
        const auto file = root().path() / "snapshot.reg";
        const auto r = zoltest::run(
            {root().bin("zolreg").string(), "export", "HKLM\\" ZOL_KEY_TAVIK, file.string(), "/y"},
            root().env());
        EXPECT_EQ(r.status, 0) << r.err;
        return zoltest::readFile(file);
    }
    BaseData Method(const char* name) {
        BaseData record{};
        std::strcpy(record.MethodName, name);
        EXPECT_EQ(Bind<GetBaseSetting_fn>("GetBaseSetting")(&record), 0) << name;
        return record;
    }
};

TEST_F(RptsetBaseTest, MethodsSeededReadWrittenAndRefused) {
    auto* getAll = Bind<GetAllBaseSetting_fn>("GetAllBaseSetting");
    auto* get = Bind<GetBaseSetting_fn>("GetBaseSetting");
    auto* set = Bind<SetBaseSetting_fn>("SetBaseSetting");
    BaseData** all = nullptr;
    int count = 0;
    ASSERT_EQ(getAll(&all, &count), 0) << Trace();
    std::string seeded;
    for (int i = 0; i < count; ++i) {
        seeded += std::string(all[i]->MethodName) + "=" + std::to_string(all[i]->Enable) + "/" +
                  std::to_string(all[i]->Value) + "/" + all[i]->Option + ";";
        std::free(all[i]);
    }
    std::free(all);
    EXPECT_EQ(seeded,
              "MANAGER (SNMP)=1/0/public;MANAGER (TCP_IP IN-BAND)=1/0/;"
              "MANAGER (TCP_IP OUT-OF-BAND)=0/0/;SHUTDOWN DELAY=0/120/;"
              "VantrelReport(Dial-up)=0/0/;VantrelReport(HTTPS)=0/0/;"
              "VantrelReport(Internet Mail)=0/0/;VantrelReport(TransToManager)=0/0/;");

    BaseData delay = Method("shutdown delay");  // names match without regard to case
    delay.Enable = 1;
    delay.Value = 1800;
    ASSERT_EQ(set(&delay), 0) << Trace();
    EXPECT_EQ(Method(BASE_METHOD_SHUTDOWN).Value, 1800);

    // Refusals: the store stays as it was, an unknown name reads as failure and is not created.
    const std::string before = Snapshot();
    struct Bad {
        const char* name;
        int32_t enable, value;
    };
    for (const Bad& bad :
         {Bad{BASE_METHOD_SHUTDOWN, 1, 1801}, Bad{BASE_METHOD_SHUTDOWN, 1, -1},
          Bad{BASE_METHOD_SNMP, 2, 0}, Bad{"NO SUCH METHOD", 1, 0}, Bad{"A\\B", 1, 0}}) {
        BaseData record{};
        std::strcpy(record.MethodName, bad.name);
        record.Enable = bad.enable;
        record.Value = bad.value;
        EXPECT_NE(set(&record), 0) << bad.name << " " << bad.value;
    }
    BaseData unterminated = Method(BASE_METHOD_SNMP);
    std::memset(unterminated.Option, 'x', sizeof unterminated.Option);
    EXPECT_NE(set(&unterminated), 0);
    EXPECT_EQ(Snapshot(), before);

    BaseData unknown{};
    std::strcpy(unknown.MethodName, "NO SUCH METHOD");
    unknown.Value = 77;
    EXPECT_EQ(get(&unknown), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(unknown.Value, 77);
    EXPECT_NE(getAll(nullptr, &count), 0);
}

TEST_F(RptsetBaseTest, InternetMailBaseRecordAndMode) {
    char path[BASE_REG_PATH_SIZE] = {};
    ASSERT_EQ(Bind<AMAMGetBaseRegPath_fn>("AMAMGetBaseRegPath")(path), 1);
    // Spelled out: the path the program is given is fixed, whatever the shared header says.
    EXPECT_STREQ(path,
                 "SOFTWARE\\Tavik\\ZolAlertMan\\BaseSetting\\Report\\VantrelReport(Internet "
                 "Mail)\\Setting");
    auto* get = Bind<GetAMBIBaseSetting_fn>("GetAMBIBaseSetting");
    auto* set = Bind<SetAMBIBaseSetting_fn>("SetAMBIBaseSetting");
    AMBIBaseData record;
    std::memset(&record, 0x5a, sizeof record);
    ASSERT_EQ(get(&record, path), 1) << Trace();
    EXPECT_EQ(std::string(record.SMTPServer) + "|" + record.MailFrom, "|");
    EXPECT_EQ(record.SMTPPort, 25u);
    EXPECT_EQ(record.DateFormat + record.PopBeforeSMTP + record.SMTPAuth, 0u);

    std::strcpy(record.SMTPServer, "mail.example.com");
    std::strcpy(record.MailFrom, "agent@example.com");
    record.SMTPPort = 65535;
    record.DateFormat = record.PopBeforeSMTP = record.SMTPAuth = 1;
    ASSERT_EQ(set(&record, path), 1) << Trace();
    AMBIBaseData back{};
    ASSERT_EQ(get(&back, path), 1);
    EXPECT_EQ(std::string(back.SMTPServer) + "|" + back.MailFrom,
              "mail.example.com|agent@example.com");
    EXPECT_EQ(
        std::vector<uint32_t>({back.SMTPPort, back.DateFormat, back.PopBeforeSMTP, back.SMTPAuth}),
        std::vector<uint32_t>({65535, 1, 1, 1}));

    const std::string before = Snapshot();
    for (int bad = 0; bad < 5; ++bad) {
        AMBIBaseData changed = record;
        const uint32_t values[] = {0, 65536, 2, 2};
        uint32_t* fields[] = {&changed.SMTPPort, &changed.SMTPPort, &changed.DateFormat,
                              &changed.SMTPAuth};
        if (bad < 4)
            *fields[bad] = values[bad];
        else
            std::memset(changed.MailFrom, 'a', sizeof changed.MailFrom);
        EXPECT_EQ(set(&changed, path), 0) << bad;
    }
    EXPECT_EQ(set(nullptr, path), 0);
    EXPECT_EQ(get(&record, nullptr), 0);
    EXPECT_EQ(Snapshot(), before);

    // Internet-mail mode: the service installed and the switch on.
    auto* mode = Bind<CheckInternetMailMode_fn>("CheckInternetMailMode");
    const std::string base = ZOL_KEY_BASESETTING;
    EXPECT_NE(mode(), 0);
    SetDword(base, "InternetMailMode", 0);
    EXPECT_EQ(mode(), 0);
    SetDword(base, "InternetMailMode", 1);
    SetDword(ZOL_KEY_VNT_SETUP, "Installed", 0);
    EXPECT_EQ(mode(), 0);
}

TEST_F(RptsetBaseTest, DottedAddressCheck) {
    auto* check = Bind<AMBIMyIPCheck_fn>("AMBIMyIPCheck");
    for (const char* good : {"0.0.0.0", "192.0.2.1", "255.255.255.255", "10.0.100.9"})
        EXPECT_EQ(check(good), 1) << good;
    for (const char* bad : {"", "1.2.3", "1.2.3.4.5", "256.1.1.1", "1.2.3.4.", ".1.2.3.4", "1..2.3",
                            "010.1.1.1", "00.1.1.1", "1.2.3.0255", " 1.2.3.4", "1.2.3.4 ",
                            "+1.2.3.4", "1.-2.3.4", "a.b.c.d", "host.example"})
        EXPECT_EQ(check(bad), 0) << bad;
    EXPECT_EQ(check(nullptr), 0);
}

TEST_F(RptsetBaseTest, TrapDestinationList) {
    auto* get = Bind<GetTrapDest_fn>("GetTrapDest");
    auto* set = Bind<SetTrapDest_fn>("SetTrapDest");
    auto* del = Bind<DelDest_fn>("DelDest");
    std::vector<std::vector<char>> buffers(TRAP_DEST_MAX + 1, std::vector<char>(TRAP_DEST_SIZE));
    std::vector<char*> list;
    for (auto& b : buffers)
        list.push_back(b.data());
    int count = -1;
    ASSERT_NE(get(&count, list.data()), 0);
    EXPECT_EQ(count, 0);

    for (int i = 0; i <= TRAP_DEST_MAX; ++i)
        std::snprintf(list[i], TRAP_DEST_SIZE, "10.0.%d.%d", i / 256, i % 256);
    ASSERT_NE(set(TRAP_DEST_MAX, list.data()), 0) << Trace();
    const std::string full = Snapshot();
    EXPECT_EQ(set(TRAP_DEST_MAX + 1, list.data()), 0);
    EXPECT_EQ(set(-1, list.data()), 0);
    EXPECT_EQ(set(1, nullptr), 0);
    std::memset(list[3], 'a', TRAP_DEST_SIZE);  // 256 characters without a terminator
    EXPECT_EQ(set(5, list.data()), 0);
    list[3][0] = '\0';
    EXPECT_EQ(set(5, list.data()), 0);
    EXPECT_EQ(Snapshot(), full);

    // Stored: four entries; the caller's array also holds a fifth, added but not yet confirmed.
    std::vector<std::string> expected = {"192.0.2.1", "192.0.2.2", "host.example", "192.0.2.2"};
    for (std::size_t i = 0; i < expected.size(); ++i)
        std::strcpy(list[i], expected[i].c_str());
    ASSERT_NE(set(4, list.data()), 0);
    std::strcpy(list[4], "192.0.2.5");
    count = 5;
    ASSERT_NE(del(&count, "192.0.2.2", list.data()), 0) << Trace();
    expected.erase(expected.begin() + 1);  // the first equal entry only; the addition unsaved
    ASSERT_EQ(count, 4);
    EXPECT_EQ(
        std::vector<std::string>(list.begin(), list.begin() + 5),
        (std::vector<std::string>{"192.0.2.1", "host.example", "192.0.2.2", "192.0.2.5", ""}));

    const std::string before = Snapshot();
    ASSERT_NE(del(&count, "192.0.2.5", list.data()), 0);  // only in the array
    EXPECT_EQ(count, 3);
    EXPECT_EQ(del(&count, "192.0.2.9", list.data()), 0);  // not listed: nothing changes
    EXPECT_EQ(count, 3);
    EXPECT_STREQ(list[2], "192.0.2.2");
    EXPECT_EQ(Snapshot(), before);

    std::vector<std::vector<char>> fresh(TRAP_DEST_MAX, std::vector<char>(TRAP_DEST_SIZE));
    std::vector<char*> readBack;
    for (auto& b : fresh)
        readBack.push_back(b.data());
    ASSERT_NE(get(&count, readBack.data()), 0);
    EXPECT_EQ(std::vector<std::string>(readBack.begin(), readBack.begin() + count), expected);
}

TEST_F(RptsetBaseTest, DeliveryMethodAndOpeningReport) {
    auto* getMethod = Bind<AMGetVntMethod_fn>("AMGetVntMethod");
    auto* setMethod = Bind<AMSetVntMethod_fn>("AMSetVntMethod");
    int method = -5;
    ASSERT_EQ(getMethod(&method), 0);
    EXPECT_EQ(method, VANTREL_INTERNETMAIL);
    ASSERT_EQ(setMethod(VANTREL_HTTPS), 0);
    ASSERT_EQ(getMethod(&method), 0);
    EXPECT_EQ(method, VANTREL_HTTPS);
    EXPECT_EQ(setMethod(4), -1);
    EXPECT_EQ(setMethod(-1), -1);
    EXPECT_EQ(getMethod(nullptr), -1);
    SetDword(ZOL_KEY_VNTSERVICE, "MethodType", 9);  // damaged: not a method
    EXPECT_EQ(getMethod(&method), -1);
    EXPECT_EQ(method, VANTREL_HTTPS);

    auto* opening = Bind<GetEOpening_fn>("GetEOpening");
    auto* reset = Bind<AMResetOpenSet_fn>("AMResetOpenSet");
    EXPECT_EQ(opening(), 0);
    SetDword(kAddress, "EOpening", 1);
    EXPECT_EQ(opening(), 1);
    ASSERT_EQ(reset(), 0);
    EXPECT_EQ(opening(), 0);
    // Without the built-in destination's key: no opening report, and the reset creates nothing.
    HKEY vantrel = nullptr;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, (kIDList + "\\VantrelReport").c_str(), 0,
                           KEY_ALL_ACCESS, &vantrel),
              ERROR_SUCCESS);
    ASSERT_EQ(RegDeleteKey(vantrel, "Address"), ERROR_SUCCESS);
    RegCloseKey(vantrel);
    EXPECT_EQ(opening(), 0);
    EXPECT_EQ(reset(), -1);
    HKEY address = nullptr;
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, kAddress.c_str(), 0, KEY_READ, &address),
              ERROR_FILE_NOT_FOUND);
}

TEST_F(RptsetBaseTest, GenericValueReadAndWrite) {
    auto* read = Bind<AMAMRegReadEx_fn>("AMAMRegReadEx");
    auto* write = Bind<AMAMRegWrite_fn>("AMAMRegWrite");
    const std::string key = ZOL_KEY_VNT_SETTING "\\Extra";  // created on write
    const char comment[] = "free text";
    const DWORD port = 2525;
    ASSERT_NE(write(HKEY_LOCAL_MACHINE, key.c_str(), "Comment", REG_SZ, comment, 20), 0);
    ASSERT_NE(write(HKEY_LOCAL_MACHINE, key.c_str(), "Port", REG_DWORD, &port, 4), 0);

    char text[REG_TEXT_SIZE];
    std::memset(text, 'z', sizeof text);
    ASSERT_NE(read(HKEY_LOCAL_MACHINE, key.c_str(), "Comment", REG_SZ, text, sizeof text), 0);
    EXPECT_STREQ(text, comment);
    DWORD number = 0;
    ASSERT_NE(read(HKEY_LOCAL_MACHINE, key.c_str(), "Port", REG_DWORD, &number, 4), 0);
    EXPECT_EQ(number, port);
    ASSERT_NE(TraceCount("AMAMRegWrite"), 0);
    EXPECT_EQ(Trace().find(comment), std::string::npos);  // value data never reach the trace

    // Failures leave the caller's buffer as it was.
    std::strcpy(text, "kept");
    number = 7;
    const struct {
        const char* value;
        DWORD type;
        void* data;
        DWORD size;
    } failures[] = {
        {"Comment", REG_DWORD, &number, 4},  // another type
        {"Port", REG_SZ, text, sizeof text},
        {"Comment", REG_SZ, text, 9},  // no room for the terminator
        {"Port", REG_DWORD, &number, 3},
        {"Missing", REG_SZ, text, sizeof text},
        {"Comment", REG_BINARY, text, sizeof text},
        {nullptr, REG_SZ, text, sizeof text},
    };
    for (const auto& f : failures) {
        EXPECT_EQ(read(HKEY_LOCAL_MACHINE, key.c_str(), f.value, f.type, f.data, f.size), 0)
            << (f.value ? f.value : "null") << " " << f.type << " " << f.size;
    }
    EXPECT_EQ(read(HKEY_LOCAL_MACHINE, nullptr, "Comment", REG_SZ, text, sizeof text), 0);
    EXPECT_STREQ(text, "kept");
    EXPECT_EQ(number, 7u);

    const std::string before = Snapshot();
    EXPECT_EQ(write(HKEY_LOCAL_MACHINE, key.c_str(), "Comment", REG_SZ, comment, 9), 0);
    EXPECT_EQ(write(HKEY_LOCAL_MACHINE, key.c_str(), "Port", REG_DWORD, &port, 8), 0);
    EXPECT_EQ(write(HKEY_LOCAL_MACHINE, (key + "\\New").c_str(), "X", REG_BINARY, &port, 4), 0);
    EXPECT_EQ(write(HKEY_LOCAL_MACHINE, key.c_str(), "Comment", REG_SZ, nullptr, 4), 0);
    EXPECT_EQ(Snapshot(), before);
}

}  // namespace
}  // namespace svctest
