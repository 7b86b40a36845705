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
    Fn* Bound(const char* name) {
        Fn* fn = nullptr;
        Bind(fn, name);
        return fn;
    }
    BaseData Method(const char* name) {
        BaseData record{};
        std::strcpy(record.MethodName, name);
        EXPECT_EQ(Bound<GetBaseSetting_fn>("GetBaseSetting")(&record), 0) << name;
        return record;
    }
};

TEST_F(RptsetBaseTest, MethodsSeededReadWrittenAndRefused) {
    auto* getAll = Bound<GetAllBaseSetting_fn>("GetAllBaseSetting");
    auto* get = Bound<GetBaseSetting_fn>("GetBaseSetting");
    auto* set = Bound<SetBaseSetting_fn>("SetBaseSetting");
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

    // A delay left out of range (by another tool) can still be switched off; it stays stored.
    SetDword(kMethods + "\\" + BASE_METHOD_SHUTDOWN, "Value", 5000);
    BaseData outOfRange = Method(BASE_METHOD_SHUTDOWN);
    ASSERT_EQ(outOfRange.Value, 5000);
    EXPECT_NE(set(&outOfRange), 0);  // still on: refused
    outOfRange.Enable = 0;
    ASSERT_EQ(set(&outOfRange), 0) << Trace();
    EXPECT_EQ(Method(BASE_METHOD_SHUTDOWN).Enable, 0);
    EXPECT_EQ(Method(BASE_METHOD_SHUTDOWN).Value, 5000);

    BaseData unknown{};
    std::strcpy(unknown.MethodName, "NO SUCH METHOD");
    unknown.Value = 77;
    EXPECT_EQ(get(&unknown), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(unknown.Value, 77);
    EXPECT_NE(getAll(nullptr, &count), 0);
}

TEST_F(RptsetBaseTest, InternetMailBaseRecordAndMode) {
    char path[BASE_REG_PATH_SIZE] = {};
    ASSERT_EQ(Bound<AMAMGetBaseRegPath_fn>("AMAMGetBaseRegPath")(path), 1);
    // Spelled out: the path the program is given is fixed, whatever the shared header says.
    EXPECT_STREQ(path,
                 "SOFTWARE\\Tavik\\ZolAlertMan\\BaseSetting\\Report\\VantrelReport(Internet "
                 "Mail)\\Setting");
    auto* get = Bound<GetAMBIBaseSetting_fn>("GetAMBIBaseSetting");
    auto* set = Bound<SetAMBIBaseSetting_fn>("SetAMBIBaseSetting");
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
    auto* mode = Bound<CheckInternetMailMode_fn>("CheckInternetMailMode");
    const std::string base = ZOL_KEY_BASESETTING;
    EXPECT_NE(mode(), 0);
    SetDword(base, "InternetMailMode", 0);
    EXPECT_EQ(mode(), 0);
    SetDword(base, "InternetMailMode", 1);
    SetDword(ZOL_KEY_VNT_SETUP, "Installed", 0);
    EXPECT_EQ(mode(), 0);
}

TEST_F(RptsetBaseTest, DottedAddressCheck) {
    auto* check = Bound<AMBIMyIPCheck_fn>("AMBIMyIPCheck");
    for (const char* good : {"0.0.0.0", "192.0.2.1", "255.255.255.255", "10.0.100.9"})
        EXPECT_EQ(check(good), 1) << good;
    for (const char* bad : {"", "1.2.3", "1.2.3.4.5", "256.1.1.1", "1.2.3.4.", ".1.2.3.4", "1..2.3",
                            "010.1.1.1", "00.1.1.1", "1.2.3.0255", " 1.2.3.4", "1.2.3.4 ",
                            "+1.2.3.4", "1.-2.3.4", "a.b.c.d", "host.example"})
        EXPECT_EQ(check(bad), 0) << bad;
    EXPECT_EQ(check(nullptr), 0);
}

TEST_F(RptsetBaseTest, TrapDestinationList) {
    auto* get = Bound<GetTrapDest_fn>("GetTrapDest");
    auto* set = Bound<SetTrapDest_fn>("SetTrapDest");
    auto* del = Bound<DelDest_fn>("DelDest");
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

// The trap screen's changes land on the list as stored at that moment: an address another
// process added meanwhile is kept, and a change the library refuses changes nothing.
TEST_F(RptsetBaseTest, TrapDestinationChangesApplyToTheStoredList) {
    auto* apply = Bound<ApplyTrapDest_fn>("ApplyTrapDest");
    auto* set = Bound<SetTrapDest_fn>("SetTrapDest");
    auto* get = Bound<GetTrapDest_fn>("GetTrapDest");
    auto stored = [&] {
        std::vector<std::vector<char>> buffers(TRAP_DEST_MAX, std::vector<char>(TRAP_DEST_SIZE));
        std::vector<char*> list;
        for (auto& b : buffers)
            list.push_back(b.data());
        int count = 0;
        EXPECT_NE(get(&count, list.data()), 0);
        return std::vector<std::string>(list.begin(), list.begin() + count);
    };
    auto call = [&](std::vector<std::string> added, std::vector<std::string> removed) {
        std::vector<char*> a, r;
        for (auto& s : added)
            a.push_back(s.data());
        for (auto& s : removed)
            r.push_back(s.data());
        return apply(static_cast<int>(a.size()), a.data(), static_cast<int>(r.size()), r.data());
    };
    std::string first = "192.0.2.1", second = "192.0.2.2";
    char* seed[] = {first.data(), second.data()};
    ASSERT_NE(set(2, seed), 0);
    // Meanwhile another process adds one.
    std::string other = "198.51.100.7";
    char* withOther[] = {first.data(), second.data(), other.data()};
    ASSERT_NE(set(3, withOther), 0);

    ASSERT_NE(call({"192.0.2.9", "192.0.2.2"}, {"192.0.2.1", "203.0.113.1"}), 0) << Trace();
    EXPECT_EQ(stored(), (std::vector<std::string>{"192.0.2.2", "198.51.100.7", "192.0.2.9"}));
    ASSERT_NE(call({}, {}), 0);

    const std::string before = Snapshot();
    for (const char* unusable : {"0.0.0.0", "255.255.255.255"})
        EXPECT_EQ(call({"192.0.2.10", unusable}, {}), 0) << unusable;
    EXPECT_EQ(call({""}, {}), 0);
    EXPECT_EQ(call({std::string(TRAP_DEST_SIZE, '1')}, {}), 0);
    EXPECT_EQ(apply(-1, nullptr, 0, nullptr), 0);
    EXPECT_EQ(apply(1, nullptr, 0, nullptr), 0);
    std::vector<std::string> tooMany;
    for (int i = 0; i < TRAP_DEST_MAX - 2; ++i)
        tooMany.push_back("10.0." + std::to_string(i / 256) + "." + std::to_string(i % 256));
    EXPECT_EQ(call(tooMany, {}), 0);  // 3 stored + 254 would be 257
    EXPECT_EQ(Snapshot(), before);
    ASSERT_NE(call(tooMany, {"192.0.2.9"}), 0);  // a removal makes room
    EXPECT_EQ(stored().size(), std::size_t{TRAP_DEST_MAX});
}

// The service's switch and method in one write: only the chosen method's record is on, and only
// while the service is; switching off keeps the method; refusals write nothing.
TEST_F(RptsetBaseTest, ServiceSwitchAndMethodTogether) {
    auto* setReport = Bound<AMSetVntReport_fn>("AMSetVntReport");
    auto* getMethod = Bound<AMGetVntMethod_fn>("AMGetVntMethod");
    const char* records[] = {"VantrelReport(Internet Mail)", "VantrelReport(Dial-up)",
                             "VantrelReport(TransToManager)", "VantrelReport(HTTPS)"};
    auto enabled = [&] {
        std::string out;
        for (const char* name : records)
            out += std::to_string(Method(name).Enable);
        return out;
    };
    int method = -1;
    ASSERT_EQ(setReport(VANTREL_HTTPS, 1), 0) << Trace();
    ASSERT_EQ(getMethod(&method), 0);
    EXPECT_EQ(method, VANTREL_HTTPS);
    EXPECT_EQ(enabled(), "0001");
    ASSERT_EQ(setReport(VANTREL_DIALUP, 1), 0);
    EXPECT_EQ(enabled(), "0100");
    ASSERT_EQ(setReport(-1, 0), 0);
    ASSERT_EQ(getMethod(&method), 0);
    EXPECT_EQ(method, VANTREL_DIALUP);
    EXPECT_EQ(enabled(), "0000");

    const std::string before = Snapshot();
    for (auto [m, on] : {std::pair{-1, 1}, std::pair{4, 0}, std::pair{-2, 0}, std::pair{0, 2}})
        EXPECT_EQ(setReport(m, on), -1) << m << " " << on;
    EXPECT_EQ(Snapshot(), before);

    // A missing record means off; it is made only to switch its method on.
    HKEY methods = nullptr;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, kMethods.c_str(), 0, KEY_ALL_ACCESS, &methods), 0);
    ASSERT_EQ(RegDeleteKey(methods, records[VANTREL_INTERNETMAIL]), 0);
    RegCloseKey(methods);
    ASSERT_EQ(setReport(VANTREL_HTTPS, 0), 0);
    BaseData absent{};
    std::strcpy(absent.MethodName, records[VANTREL_INTERNETMAIL]);
    EXPECT_EQ(Bound<GetBaseSetting_fn>("GetBaseSetting")(&absent), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(setReport(VANTREL_INTERNETMAIL, 1), 0) << Trace();
    EXPECT_EQ(enabled(), "1000");
}

// Each half of the mail logins lands whole or not at all, passwords only encoded and never in
// the trace; a write that cannot begin its transaction writes nothing.
TEST_F(RptsetBaseTest, MailLoginsWrittenWhole) {
    auto* write = Bound<AMAMSetMailLogin_fn>("AMAMSetMailLogin");
    const std::string key =
        "SOFTWARE\\Tavik\\ZolAlertMan\\BaseSetting\\Report\\VantrelReport(Internet Mail)\\Setting";
    auto text = [&](const char* name) {
        HKEY handle = nullptr;
        char data[REG_TEXT_SIZE] = "?";
        DWORD type = 0, size = sizeof data;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ, &handle) == 0) {
            RegQueryValueEx(handle, name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size);
            RegCloseKey(handle);
        }
        return std::string(data);
    };
    POPParam pop{};
    std::strcpy(pop.Server, "pop.example.com");
    std::strcpy(pop.User, "alice");
    std::strcpy(pop.Password, "s3cret-pop");
    pop.Port = 995;
    SMTPParam smtp{};
    std::strcpy(smtp.User, "bob");
    std::strcpy(smtp.Password, "s3cret-smtp");
    ASSERT_NE(write(&pop, 60, &smtp), 0) << Trace();
    EXPECT_EQ(text("POPServer") + "|" + text("POPUser") + "|" + text("SMTPAuthUser"),
              "pop.example.com|alice|bob");
    for (const auto& [name, plain] :
         {std::pair{"POPPass", "s3cret-pop"}, std::pair{"SMTPAuthPass", "s3cret-smtp"}}) {
        std::string stored = text(name);
        EXPECT_NE(stored, plain);
        Ras_Decode(stored.data(), static_cast<int>(stored.size()));
        EXPECT_EQ(stored, plain);
    }
    EXPECT_EQ(Trace().find("s3cret"), std::string::npos);

    // One half alone leaves the other as stored.
    std::strcpy(smtp.User, "carol");
    ASSERT_NE(write(nullptr, 0, &smtp), 0);
    EXPECT_EQ(text("SMTPAuthUser") + "|" + text("POPUser"), "carol|alice");

    const std::string before = Snapshot();
    POPParam badPort = pop;
    badPort.Port = 0;
    POPParam unterminated = pop;
    std::memset(unterminated.User, 'u', sizeof unterminated.User);
    SMTPParam badSmtp = smtp;
    std::memset(badSmtp.Password, 'p', sizeof badSmtp.Password);
    EXPECT_EQ(write(&badPort, 0, &smtp), 0);
    EXPECT_EQ(write(&pop, 61, &smtp), 0);
    EXPECT_EQ(write(&unterminated, 0, nullptr), 0);
    EXPECT_EQ(write(&pop, 0, &badSmtp), 0);  // the valid POP half is not written either
    EXPECT_EQ(write(nullptr, 0, nullptr), 0);
    // A transaction that cannot begin (inside one already rolled back) writes nothing.
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(ZolRegRollbackTransaction(), ERROR_SUCCESS);
    std::strcpy(pop.User, "mallory");
    EXPECT_EQ(write(&pop, 0, nullptr), 0);
    ZolRegRollbackTransaction();
    EXPECT_EQ(Snapshot(), before);
}

TEST_F(RptsetBaseTest, DeliveryMethodAndOpeningReport) {
    auto* getMethod = Bound<AMGetVntMethod_fn>("AMGetVntMethod");
    auto* setMethod = Bound<AMSetVntMethod_fn>("AMSetVntMethod");
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

    auto* opening = Bound<GetEOpening_fn>("GetEOpening");
    auto* reset = Bound<AMResetOpenSet_fn>("AMResetOpenSet");
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
    auto* read = Bound<AMAMRegReadEx_fn>("AMAMRegReadEx");
    auto* write = Bound<AMAMRegWrite_fn>("AMAMRegWrite");
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
