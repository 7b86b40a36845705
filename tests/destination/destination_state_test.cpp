// The destination screens' state functions without a terminal: method names and address lines,
// the method list of a new ID, the built-in and hidden IDs, the schedule's checks and hour
// choice, and the checks of the TCP/IP, via-manager and mail destination screens, against the
// real report-settings and copy libraries of a product root.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "destination/destination.h"
#include "frame/dscopy_calls.h"
#include "frame/libraries.h"
#include "frame/screens.h"
#include "product_root.h"
#include "remote/vantrel_dest.h"

namespace {

// Texts that show which ID was used and where its argument went.
std::string FakeText(const char* id) {
    const std::string name = id;
    if (name.find("ADD2") != std::string::npos || name.find("ADD3") != std::string::npos ||
        name.find("ADD5") != std::string::npos)
        return name + "(%s)";
    return name;
}

DestData Record(const char* method, const char* address = "") {
    DestData record;
    DestDataSetDefaults(&record);
    std::strcpy(record.Method, method);
    std::strcpy(record.Address, address);
    return record;
}

TEST(DestinationState, AddressLinesByMethod) {
    struct Case {
        const char* method;
        const char* mailTo;
        std::string list;
    };
    const Case cases[] = {
        {"MANAGER (SNMP)", "", "DEST_IDLIST_ADD1_ID"},
        {"manager (snmp)", "", "DEST_IDLIST_ADD1_ID"},
        // The editor builds methods from the built-in IDs' spelling.
        {"MANAGER (TCP_IP In-Band)", "", "DEST_IDLIST_ADD2_ID(192.0.2.9)"},
        {"MANAGER (TCP_IP OUT-OF-BAND)", "", "DEST_IDLIST_ADD3_ID(192.0.2.9)"},
        {"MANAGER (SNMP-backup)", "", "none"},
        {"", "", "none"},
        {"VANTRELREPORT", "ops@example.com", "DEST_IDLIST_ADD5_ID(ops@example.com)"},
        {"VantrelReport", "DEST_DIAL_ID", "DEST_DIAL_ID"},
        {"VantrelReport", "IDSET_ADD_HTTPS_ID", "IDSET_ADD_HTTPS_ID"},
        {"VantrelReport", "0.0.0.0", "DEST_IDLIST_ADD2_ID(0.0.0.0)"},
        {"VantrelReport", "", "none"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ListAddressLine(Record(c.method, "192.0.2.9"), c.mailTo, FakeText), c.list)
            << c.method << " / " << c.mailTo;
    }
    EXPECT_EQ(ManagerAddressLine(Record("MANAGER (SNMP)"), FakeText), "IDSET_ADD_SNMP_ID");
    EXPECT_EQ(ManagerAddressLine(Record("VANTRELREPORT"), FakeText), std::nullopt);
    EXPECT_EQ(ManagerAddressLine(Record("MANAGER (SNMP-backup)"), FakeText), std::nullopt);
    EXPECT_EQ(VantrelAddressLine(0, "a@b", FakeText), "DEST_IDLIST_ADD5_ID(a@b)");
    EXPECT_EQ(VantrelAddressLine(1, "", FakeText), "DEST_DIAL_ID");
    EXPECT_EQ(VantrelAddressLine(2, "0.0.0.0", FakeText), "DEST_IDLIST_ADD2_ID(0.0.0.0)");
    EXPECT_EQ(VantrelAddressLine(3, "", FakeText), "IDSET_ADD_HTTPS_ID");
    EXPECT_EQ(VantrelAddressLine(4, "", FakeText), std::nullopt);
}

TEST(DestinationState, MethodListAndProtectedIDs) {
    const char* listed[] = {
        "SNMP",        "TCP_IP In-Band",       "VantrelReport",      "Mail Center",
        "snmp-backup", "tcp_ip out-of-band 2", "VANTRELREPORT SNMP", "TCP_IP"};
    static char ids[8][DEST_TEXT_SIZE];
    for (int i = 0; i < 8; ++i)
        std::strcpy(ids[i], listed[i]);
    EXPECT_EQ(
        BuildMethodList(ids, 8),
        (std::vector<std::string>{"MANAGER (SNMP)", "MANAGER (TCP_IP In-Band)",
                                  "MANAGER (snmp-backup)", "MANAGER (tcp_ip out-of-band 2)"}));
    EXPECT_EQ(BuildMethodList(ids, 1), std::vector<std::string>{"MANAGER (SNMP)"});
    EXPECT_TRUE(BuildMethodList(ids + 2, 2).empty());

    // Built-in IDs are compared without regard to case, hidden IDs exactly.
    for (const char* id : {"SNMP", "snmp", "tcp_ip in-band", "TCP_IP Out-of-Band", "Vantrel Report",
                           "vantrelreport"})
        EXPECT_TRUE(TestSelected(id)) << id;
    for (const char* id : {"SNMP2", "TCP_IP", "", "Mail Center"})
        EXPECT_FALSE(TestSelected(id)) << id;
    for (const char* id : {"SYSLOG", "CRITICAL ERROR LOG", "VANTRELREPORT(HTTPS)"})
        EXPECT_TRUE(IsHiddenDestID(id)) << id;
    for (const char* id : {"syslog", "Critical Error Log", "VantrelReport(HTTPS)"})
        EXPECT_FALSE(IsHiddenDestID(id)) << id;

    const std::string longID(45, 'x');
    EXPECT_EQ(ListRow(longID, 40), std::string(40, 'x'));
    EXPECT_EQ(ListRow("SNMP", 8), "SNMP    ");
    // EUC-JP: a cut never splits a character.
    EXPECT_EQ(ListRow("\xA4\xA2\xA4\xA4\xA4\xA6", 5), "\xA4\xA2\xA4\xA4 ");
}

TEST(DestinationState, ScheduleTextForm) {
    const std::pair<const char*, bool> cases[] = {
        {"", true},        {"0-23", true},     {"8-12,13-17", true}, {"9-17,22-2", true},
        {"8-17,7", true},  {"8-17,20-", true}, {"8-17,22", true},    {"8,9-10", false},
        {",8-9", false},   {"-8", false},      {"8-9,,1-2", false},  {"8-9-10", false},
        {"8-9,-1", false}, {"8-,9-10", false}, {"1-2,3-4-5", false}, {"25-26", true},
    };
    for (const auto& [text, ok] : cases)
        EXPECT_EQ(JudgeSch(text), ok ? TRUE : FALSE) << text;
}

TEST(DestinationState, ScheduleEntriesInOrder) {
    struct Case {
        ScheduleEntries entries;
        const char* refusal;
        std::vector<std::string> args;
        uint32_t interval, time;  // the record's after the check
    };
    const Case cases[] = {
        {{"", "", "0-23"}, "ERR_RINTER_EMPTY", {}, 5, 72},
        {{"5", "", "0-23"}, "ERR_RTIME_EMPTY", {}, 5, 72},
        {{"0", "72", "0-23"}, "ERR_RINTER_ID", {"1", "30"}, 5, 72},
        {{"31", "72", "0-23"}, "ERR_RINTER_ID", {"1", "30"}, 5, 72},
        {{"1", "241", "0-23"}, "ERR_SCHE_RINTER_ID", {"0", "240"}, 5, 72},
        {{"1", "99999999999", "0-23"}, "ERR_SCHE_RINTER_ID", {"0", "240"}, 5, 72},
        // The numbers land before the hours are refused.
        {{"30", "240", "8,9-10"}, "ERR_RETRYTIME_ID", {}, 30, 240},
        {{"1", "0", ""}, nullptr, {}, 1, 0},
        {{"30", "240", "8-17"}, nullptr, {}, 30, 240},
    };
    for (const Case& c : cases) {
        DestData record = Record("MANAGER (SNMP)");
        const Refusal refusal = ApplyScheduleEntries(c.entries, record);
        EXPECT_STREQ(refusal.id, c.refusal) << c.entries.interval << "/" << c.entries.retryTime;
        EXPECT_EQ(refusal.args, c.args);
        EXPECT_EQ(record.RetryInterval, c.interval);
        EXPECT_EQ(record.RetryTime, c.time);
    }
    const Refusal range{"ERR_RINTER_ID", {"1", "30"}};
    EXPECT_EQ(RefusalText(range, [](const char*) { return std::string("From %d to %d."); }),
              "From 1 to 30.");
}

// The libraries of a staged product root, loaded as the program loads them.
class LibraryStateTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(LoadRptsetDLL());
        ASSERT_TRUE(LoadDscopyDLL());
    }
    void TearDown() override {
        FreeRptsetDLL();
        FreeDscopyDLL();
    }
    zoltest::ProductRoot root_{false};
    zoltest::ScopedEnv zolDir_{"ZolDir", root_.path().string()};
};

TEST_F(LibraryStateTest, HourMaskKeepsOldHoursForUnusableText) {
    const auto convert = [](const std::string& text) {
        uint32_t mask = 0;
        ScheduleTextToMask(hLibDSCOPY, text.c_str(), &mask);
        return mask;
    };
    struct Case {
        const char *typed, *previous;
        uint32_t current, expected;
    };
    const Case cases[] = {
        {"8-17", "0-23", 0xFFFFFF, 0x03FF00},
        {"22-2", "0-23", 0xFFFFFF, 0xC00007},
        {"25-26", "0-23", 0xFFFFFF, 0xFFFFFF},  // unreadable: the text shown at opening
        {"", "9-9", 0xFFFFFF, 0x000200},
        {"", "", 0x0000F0, 0x0000F0},  // nothing usable at all: the hours stay
    };
    for (const Case& c : cases)
        EXPECT_EQ(ChooseHourMask(c.typed, c.previous, c.current, convert), c.expected) << c.typed;
    char text[SCHEDULE_TEXT_MAX] = {};
    ASSERT_TRUE(ScheduletoOutString(0xC00007, text, hLibDSCOPY));
    EXPECT_STREQ(text, "0-2,22-23");
    EXPECT_FALSE(ScheduletoOutString(0, text, nullptr));
    EXPECT_FALSE(InStringtoSchedule("1-2", nullptr, hLibDSCOPY));
}

TEST_F(LibraryStateTest, TcpipEntriesCheckedThenStored) {
    struct Case {
        const char *address, *port;
        const char* refusal;
        const char* storedAddress;
        uint32_t storedPort;
    };
    const std::string tooLong(257, 'h');
    const Case cases[] = {
        {"", "80", "FWMANAGER_IP_EMPTY_ID", "192.0.2.1", 31134},
        {"192.0.2.7", "", "FWMANAGER_PORT_EMPTY_ID", "192.0.2.1", 31134},
        {tooLong.c_str(), "80", "IDS_ERR_HOST_TOO_LONG", "192.0.2.1", 31134},
        {"300.1.2.3", "80", "IDS_ERR_INVALID_IPADDRESS", "192.0.2.1", 31134},
        {"localhost", "0", nullptr, "127.0.0.1", 0},
        {"198.51.100.20", "1234567", nullptr, "198.51.100.20", 1234567},
        {"198.51.100.20", "1234567890123", nullptr, "198.51.100.20", 123456789},
    };
    for (const Case& c : cases) {
        DestData record = Record("MANAGER (TCP_IP OUT-OF-BAND)", "192.0.2.1");
        std::strcpy(record.User, "kept");
        TcpipEntries entries;
        entries.address = c.address;
        entries.port = c.port;
        entries.user = "operator";
        const Refusal refusal = ApplyTcpipEntries(entries, hLibRPTSET, record);
        EXPECT_STREQ(refusal.id, c.refusal) << c.address;
        EXPECT_STREQ(record.Address, c.storedAddress) << c.address;
        EXPECT_EQ(record.Port, c.storedPort) << c.port;
        EXPECT_STREQ(record.User, "kept");  // in band: the dial-in fields are not the screen's
    }
    DestData record = Record("MANAGER (TCP_IP OUT-OF-BAND)");
    TcpipEntries entries;
    entries.outOfBand = true;
    entries.address = "192.0.2.3";
    entries.port = "31134";
    entries.password = "s3cret";
    ASSERT_FALSE(ApplyTcpipEntries(entries, hLibRPTSET, record));
    EXPECT_EQ(std::string(record.Password) + "|" + record.User + "|" + record.Phone, "s3cret||");
}

TEST_F(LibraryStateTest, ViaManagerAndMailEntries) {
    struct Case {
        const char *address, *port, *refusal, *ip;
        uint32_t storedPort;
    };
    const Case cases[] = {
        {"", "7000", "FWMANAGER_IP_EMPTY_ID", "", 0},
        {"192.0.2.5", "", "FWMANAGER_PORT_EMPTY_ID", "", 0},
        {"192.0.2.5", "6000", "IDS_ERR_NOT_LANGE_PORTNUMBER", "", 0},
        {"192.0.2.5", "65536", "IDS_ERR_NOT_LANGE_PORTNUMBER", "", 0},
        {"192.0.2.5", "99999999999", "IDS_ERR_NOT_LANGE_PORTNUMBER", "", 0},
        {"192.0.2", "7000", "IDS_ERR_INVALID_IPADDRESS", "", 0},
        {"192.0.2.5", "6001", nullptr, "192.0.2.5", 6001},
        {"localhost", "65535", nullptr, "127.0.0.1", 65535},
    };
    for (const Case& c : cases) {
        ViaManagerValues values;
        EXPECT_STREQ(CheckViaManagerEntries({c.address, c.port}, hLibRPTSET, &values), c.refusal)
            << c.address << ":" << c.port;
        EXPECT_EQ(values.ip, c.ip);
        EXPECT_EQ(values.port, c.storedPort);
    }

    VxMLDestData mail{};
    std::strcpy(mail.MailTo, "old@example.com");
    const std::string full(kMailDestTextMax, 'a');
    EXPECT_STREQ(ApplyMailDestEntries({full + "a", "s"}, mail), "IMAIL_DEST_MLTO_ERR2");
    EXPECT_STREQ(ApplyMailDestEntries({"a@b", full + "s"}, mail), "IMAIL_DEST_SUBJ_ERR1");
    EXPECT_STREQ(mail.MailTo, "old@example.com");
    EXPECT_EQ(ApplyMailDestEntries({full, full}, mail), nullptr);
    EXPECT_EQ(std::string(mail.MailTo), full);
    EXPECT_EQ(ApplyMailDestEntries({"a@b", ""}, mail), nullptr);
    EXPECT_EQ(std::string(mail.MailTo) + "|" + mail.Subject, "a@b|");
}

}  // namespace
