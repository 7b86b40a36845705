// rptset.dll writing destinations: SetDestSetting's results, whole-record transactions, the
// unbinding of a deleted ID, and the remote report service's destination.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "regpaths.h"
#include "services_test_util.h"
#include "store_reader.h"

namespace svctest {
namespace {

using RecordPtr = std::unique_ptr<DestData>;

class DestWriteTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        ASSERT_TRUE(LoadRptsetDLL());
        Bind(set, "SetDestSetting");
        Bind(get, "GetDestSetting");
    }
    static RecordPtr Record(uint32_t operation, const std::string& id) {
        auto r = std::make_unique<DestData>();
        DestDataSetDefaults(r.get());
        r->Operation = operation;
        std::strncpy(r->ID, id.c_str(), sizeof r->ID - 1);
        return r;
    }
    int Set(uint32_t operation, const std::string& id) { return set(Record(operation, id).get()); }
    // The stored record of id, or a record whose ID is empty when there is none.
    RecordPtr Stored(const std::string& id) {
        RecordPtr r = Record(0, id);
        if (get(r.get()) != 0)
            r->ID[0] = '\0';
        return r;
    }
    // A REG_SZ value as stored, without its terminator.
    std::string RawText(const std::string& key, const char* name) {
        return zoltest::StoreReader(root()).text(key, name).value_or("");
    }
    bool HasValue(const std::string& key, const char* name) {
        return zoltest::StoreReader(root()).has(key, name);
    }
    SetDestSetting_fn* set = nullptr;
    GetDestSetting_fn* get = nullptr;
};

TEST_F(DestWriteTest, CreateChangeDeleteAndEachRefusal) {
    RecordPtr ops = Record(DEST_OP_CREATE, "Mail Center");
    std::strcpy(ops->Method, "MANAGER (TCP_IP OUT-OF-BAND)");
    std::strcpy(ops->Address, "192.0.2.10");
    std::strcpy(ops->Password, "pa55word");
    std::strcpy(ops->Reserved, "kept");
    ops->Port = 9000;
    ops->HourMask = 0xF0;
    ops->ScheduleFlag = 7;
    ASSERT_EQ(set(ops.get()), 0) << Trace();
    EXPECT_STREQ(ops->Password, "pa55word");  // the caller's record stays plain
    RecordPtr back = Stored("mail center");
    EXPECT_EQ(std::string(back->ID) + "|" + back->Method + "|" + back->Address + "|" +
                  back->Password + "|" + back->Reserved,
              "Mail Center|MANAGER (TCP_IP OUT-OF-BAND)|192.0.2.10|pa55word|kept");
    EXPECT_EQ(std::vector<uint32_t>({back->Port, back->HourMask, back->RetryInterval,
                                     back->RetryTime, back->ScheduleFlag}),
              std::vector<uint32_t>({9000, 0xF0, 5, 72, 7}));
    EXPECT_EQ(Trace().find("pa55word"), std::string::npos);
    std::string encoded = "pa55word";
    Ras_Encode(encoded.data(), static_cast<int>(encoded.size()));
    EXPECT_EQ(RawText(kIDList + "\\Mail Center", "Password"), encoded);

    // A change under another spelling keeps the stored one.
    RecordPtr change = Record(DEST_OP_CHANGE, "MAIL CENTER");
    std::strcpy(change->Address, "192.0.2.11");
    ASSERT_EQ(set(change.get()), 0);
    back = Stored("Mail Center");
    EXPECT_STREQ(back->ID, "Mail Center");
    EXPECT_STREQ(back->Address, "192.0.2.11");
    EXPECT_STREQ(back->Password, "");

    RecordPtr unterminated = Record(DEST_OP_CREATE, "");
    std::memset(unterminated->ID, 'x', sizeof unterminated->ID);
    EXPECT_EQ(set(unterminated.get()), -2);
    const struct {
        uint32_t operation;
        std::string id;
        int result;
    } refusals[] = {
        {DEST_OP_CREATE, "mail CENTER", -3},
        {DEST_OP_CREATE, "", -2},
        {DEST_OP_CREATE, "a\\b", -2},
        {DEST_OP_CREATE, std::string(256, 'n'), -2},
        {DEST_OP_CHANGE, "Nobody", -2},
        {DEST_OP_DELETE, "Nobody", -2},
        {3, "Mail Center", -2},
    };
    for (const auto& r : refusals)
        EXPECT_EQ(Set(r.operation, r.id), r.result) << r.operation << " " << r.id.substr(0, 9);
    EXPECT_EQ(set(nullptr), -1);
    EXPECT_EQ(Set(DEST_OP_CREATE, std::string(255, 'n')), 0);

    // Built-in IDs stay, whatever their spelling.
    for (const char* id :
         {"TCP_IP In-Band", "TCP_IP Out-of-Band", "SNMP", "VANTREL REPORT", "VantrelReport"}) {
        CreateKey(kIDList + "\\" + id);
        std::string other = id;
        for (char& c : other)
            c = static_cast<char>(std::islower(c) ? std::toupper(c) : std::tolower(c));
        EXPECT_EQ(Set(DEST_OP_DELETE, other), -2) << other;
        EXPECT_STREQ(Stored(id)->ID, id);
    }
    ASSERT_EQ(Set(DEST_OP_DELETE, "mail center"), 0);
    EXPECT_STREQ(Stored("Mail Center")->ID, "");
}

TEST_F(DestWriteTest, AtMostAHundredIDs) {
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    for (int i = 0; i < DEST_MAX_RECORDS; ++i)
        CreateKey(kIDList + "\\ID" + std::to_string(i));
    ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    EXPECT_EQ(Set(DEST_OP_CREATE, "One more"), -2);
    EXPECT_EQ(Set(DEST_OP_CREATE, "id7"), -3);
    ASSERT_EQ(Set(DEST_OP_DELETE, "ID7"), 0);
    EXPECT_EQ(Set(DEST_OP_CREATE, "One more"), 0);
}

TEST_F(DestWriteTest, AFieldThatCannotBeStoredLeavesTheOldRecord) {
    RecordPtr first = Record(DEST_OP_CREATE, "Ops");
    std::strcpy(first->Method, "MANAGER (SNMP)");
    ASSERT_EQ(set(first.get()), 0);

    // Method and the numbers are written before the password is found unterminated.
    RecordPtr change = Record(DEST_OP_CHANGE, "Ops");
    std::strcpy(change->Method, "MANAGER (TCP_IP IN-BAND)");
    change->Port = 1;
    std::memset(change->Password, 'p', sizeof change->Password);
    EXPECT_EQ(set(change.get()), -2);
    RecordPtr back = Stored("Ops");
    EXPECT_STREQ(back->Method, "MANAGER (SNMP)");
    EXPECT_EQ(back->Port, 31134u);

    RecordPtr create = Record(DEST_OP_CREATE, "Half");
    std::memset(create->Phone, '5', sizeof create->Phone);
    EXPECT_EQ(set(create.get()), -2);
    EXPECT_STREQ(Stored("Half")->ID, "");
}

TEST_F(DestWriteTest, DeletingAnIDUnbindsItFromEventsAndSyslogItems) {
    const std::string events = ZOL_KEY_AGENTEVENT;
    const std::string items = ZOL_KEY_SYSLOG;
    const std::vector<std::string> bound = {
        events + "\\Disk\\1001\\Dest", events + "\\Disk\\All\\Dest", items + "\\kernel\\5\\Dest"};
    ASSERT_EQ(Set(DEST_OP_CREATE, "Ops"), 0);
    for (const std::string& dest : bound) {
        SetDword(dest, dest == bound[1] ? "OPS" : "Ops", 1);
        SetDword(dest, "SNMP", 1);
    }
    SetText(events + "\\Fan\\2001", "TrapName", "fan");  // an event without Dest
    CreateKey(kIDList + "\\SNMP");

    EXPECT_EQ(Set(DEST_OP_DELETE, "SNMP"), -2);  // refused: the bindings stay
    ASSERT_EQ(Set(DEST_OP_DELETE, "ops"), 0) << Trace();
    for (const std::string& dest : bound) {
        EXPECT_FALSE(HasValue(dest, "Ops")) << dest;
        EXPECT_TRUE(HasValue(dest, "SNMP")) << dest;
    }
    EXPECT_TRUE(HasValue(events + "\\Fan\\2001", "TrapName"));
}

class VantrelDestTest : public DestWriteTest {
  protected:
    const std::string address = kIDList + "\\VantrelReport\\Address";
};

TEST_F(VantrelDestTest, MailAddressesAndManagerIP) {
    auto* vntTo = BindFromHandle<GetVntTo_fn>(hLibRPTSET, "GetVntTo");
    auto* managerIP = BindFromHandle<GetManagerIP_fn>(hLibRPTSET, "GetManagerIP");
    ASSERT_TRUE(vntTo && managerIP);
    char out[VNT_MAILTO_SIZE] = "stale";
    EXPECT_EQ(vntTo(out), 0);  // no Address key
    EXPECT_EQ(managerIP(out), -1);
    SetText(address, "ETo", "");
    EXPECT_NE(vntTo(out), 0);
    EXPECT_STREQ(out, "");
    SetText(address, "ETo", "a@example.com,b@example.com");
    EXPECT_NE(vntTo(out), 0);
    EXPECT_STREQ(out, "a@example.com,b@example.com");
    SetText(address, "ETo", std::string(VNT_MAILTO_SIZE, 'a'));
    EXPECT_EQ(vntTo(out), 0);  // never cut

    SetText(address, "ManagerIP", "");
    EXPECT_EQ(managerIP(out), -1);
    SetText(address, "ManagerIP", "198.51.100.4");
    EXPECT_EQ(managerIP(out), 0);
    EXPECT_STREQ(out, "198.51.100.4");
    EXPECT_EQ(vntTo(nullptr), 0);
    EXPECT_EQ(managerIP(nullptr), -1);
}

TEST_F(VantrelDestTest, MailSettingsAndTheServiceStateMessage) {
    auto* getMail = BindFromHandle<GetAMAMDeseSetting_fn>(hLibRPTSET, "GetAMAMDeseSetting");
    auto* setMail = BindFromHandle<SetAMAMDeseSetting_fn>(hLibRPTSET, "SetAMAMDeseSetting");
    ASSERT_TRUE(getMail && setMail);
    VxMLDestData mail{};
    char* message = reinterpret_cast<char*>(&mail);
    EXPECT_EQ(getMail(&mail, &message), 0);  // no Address key
    EXPECT_EQ(message, nullptr);

    SetText(address, "ETo", "desk@example.com");
    SetDword(address, "EOpening", 1);
    const auto Message = [&] {
        char* text = nullptr;
        EXPECT_NE(getMail(&mail, &text), 0);
        std::string copy = text ? text : "(null)";
        std::free(text);
        return copy;
    };
    EXPECT_NE(Message().find("key floppy has not been read"), std::string::npos);
    EXPECT_EQ(std::string(mail.MailTo) + "|" + mail.Subject + "|" + std::to_string(mail.Opening),
              "desk@example.com||1");
    SetDword(ZOL_KEY_VNTSERVICE, "InstVantrelKeyFD", 1);
    EXPECT_NE(Message().find("no service centre address"), std::string::npos);
    SetText(ZOL_KEY_VNT_SETUP, "MAILADRS", "centre@example.net");
    EXPECT_NE(Message().find("centre@example.net"), std::string::npos);
    {
        zoltest::ScopedEnv japanese("LC_ALL", "ja_JP.UTF-8");
        char utf8[512];
        const std::string euc = Message();
        ASSERT_EQ(CodeConvertFromEUC(euc.c_str(), utf8, sizeof utf8), 0);
        EXPECT_NE(std::string(utf8).find("サービスセンター (centre@example.net)"),
                  std::string::npos)
            << utf8;
    }

    // Mail settings and the service's record in one write.
    CreateKey(kIDList + "\\VantrelReport");
    RecordPtr record = Record(DEST_OP_CHANGE, "VANTRELREPORT");
    record->HourMask = 0x0F;
    VxMLDestData next{};
    std::strcpy(next.MailTo, "new@example.com");
    std::strcpy(next.Subject, "Server report");
    ASSERT_NE(setMail(&next, record.get(), 0), 0) << Trace();
    Message();
    EXPECT_EQ(std::string(mail.MailTo) + "|" + mail.Subject + "|" + std::to_string(mail.Opening),
              "new@example.com|Server report|0");
    EXPECT_EQ(Stored("VantrelReport")->HourMask, 0x0Fu);

    // The record alone; refusals change nothing.
    record->HourMask = 0xF00;
    ASSERT_NE(setMail(nullptr, record.get(), 1), 0);
    EXPECT_EQ(Stored("VantrelReport")->HourMask, 0xF00u);
    std::memset(next.Subject, 's', sizeof next.Subject);
    std::strcpy(next.MailTo, "other@example.com");
    EXPECT_EQ(setMail(&next, record.get(), 0), 0);
    RecordPtr snmp = Record(DEST_OP_CHANGE, "SNMP");
    CreateKey(kIDList + "\\SNMP");
    std::strcpy(next.Subject, "x");
    EXPECT_EQ(setMail(&next, snmp.get(), 0), 0);
    EXPECT_EQ(setMail(nullptr, record.get(), 0), 0);
    Message();
    EXPECT_STREQ(mail.MailTo, "new@example.com");
}

// Address and port land together or not at all; the port reads as 31134 until one is stored.
TEST_F(VantrelDestTest, ManagerAddressAndPortAreWrittenTogether) {
    auto* setManager = BindFromHandle<SetManagerAddress_fn>(hLibRPTSET, "SetManagerAddress");
    auto* getPort = BindFromHandle<GetManagerPort_fn>(hLibRPTSET, "GetManagerPort");
    auto* getIP = BindFromHandle<GetManagerIP_fn>(hLibRPTSET, "GetManagerIP");
    ASSERT_TRUE(setManager && getPort && getIP);
    uint32_t port = 0;
    ASSERT_EQ(getPort(&port), 0);  // no Address key at all
    EXPECT_EQ(port, 31134u);
    EXPECT_EQ(getPort(nullptr), -1);

    ASSERT_EQ(setManager("198.51.100.7", 6001), 0) << Trace();
    char ip[VNT_MAILTO_SIZE] = {};
    ASSERT_EQ(getIP(ip), 0);
    ASSERT_EQ(getPort(&port), 0);
    EXPECT_EQ(std::string(ip) + ":" + std::to_string(port), "198.51.100.7:6001");

    struct Refused {
        const char* ip;
        uint32_t port;
    };
    const Refused refused[] = {{nullptr, 7000},           {"", 7000},
                               {"manager.example", 7000}, {"198.51.100.300", 7000},
                               {"198.51.100.8", 0},       {"198.51.100.8", 65536}};
    for (const Refused& r : refused) {
        EXPECT_EQ(setManager(r.ip, r.port), -1) << (r.ip ? r.ip : "(null)") << " " << r.port;
        ASSERT_EQ(getIP(ip), 0);
        ASSERT_EQ(getPort(&port), 0);
        EXPECT_EQ(std::string(ip) + ":" + std::to_string(port), "198.51.100.7:6001");
    }
    ASSERT_EQ(setManager("203.0.113.1", 65535), 0);
    ASSERT_EQ(getPort(&port), 0);
    EXPECT_EQ(port, 65535u);
    SetText(address, "ManagerPort", "7000");  // another type: the default
    ASSERT_EQ(getPort(&port), 0);
    EXPECT_EQ(port, 31134u);
}

// The test reports go through the delivery library of the stored method, whose text comes back:
// the mail library refuses to send without an SMTP server, and a method whose library is missing
// says which library could not be loaded. Nothing marks the opening as done without a sent report.
TEST_F(VantrelDestTest, TestReportsGoThroughTheSelectedMethodsLibrary) {
    auto* opening =
        BindFromHandle<AMAMVantrelOpeningReport_fn>(hLibRPTSET, "AMAMVantrelOpeningReport");
    ASSERT_NE(opening, nullptr);
    const struct {
        DWORD method;
        const char* says;
    } cases[] = {
        {VANTREL_INTERNETMAIL, "no SMTP server is set in the internet-mail base settings"},
        {VANTREL_TRANSTOMANAGER, "cannot load"},
    };
    RemoveLibrary("vntmgr.dll");
    for (const auto& c : cases) {
        SetDword(ZOL_KEY_VNTSERVICE, "MethodType", c.method);
        for (const char* name : {"AMAMVantrelTestReport", "TestFatalReport"}) {
            auto* report = BindFromHandle<AMAMVantrelTestReport_fn>(hLibRPTSET, name);
            ASSERT_NE(report, nullptr) << name;
            char* text = nullptr;
            EXPECT_EQ(report("VantrelReport", &text), 4) << name;
            ASSERT_NE(text, nullptr);
            EXPECT_NE(std::string(text).find(c.says), std::string::npos) << text;
            std::free(text);
            EXPECT_EQ(report("VantrelReport", nullptr), 4);
        }
        char* text = nullptr;
        EXPECT_EQ(opening(&text), 4);
        ASSERT_NE(text, nullptr);
        EXPECT_NE(std::string(text).find(c.says), std::string::npos) << text;
        std::free(text);
        DWORD type = 0;
        BYTE data[8];
        DWORD size = sizeof data;
        EXPECT_FALSE(
            RegReadEx(HKEY_LOCAL_MACHINE, address.c_str(), "EOpening", &type, &size, data));
    }
}

}  // namespace
}  // namespace svctest
