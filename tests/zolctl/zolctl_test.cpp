// The staged zolctl run end to end in fresh product roots: check on the seeded store and on stores
// with one kind of finding each (built by zolreg import), --fix, route for an event and for syslog
// lines, test reports to a TCP listener, the remote report service and snmptrapd, and the exit
// statuses of bad usage and an unreadable store.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zolwin.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "net_servers.h"
#include "product_root.h"
#include "rptset_api.h"
#include "test_process.h"

namespace {

namespace fs = std::filesystem;
using zoltest::ProductRoot;
using zoltest::RunResult;

const std::string kIDList =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Tavik\\ZolAlertMan\\Destination\\ID_LIST";
const std::string kShortIDList = "HKLM\\SOFTWARE\\Tavik\\ZolAlertMan\\Destination\\ID_LIST";
const std::string kAlertMan = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Tavik\\ZolAlertMan";

RunResult zolctl(const ProductRoot& root, std::vector<std::string> args) {
    args.insert(args.begin(), root.bin("zolctl").string());
    return zoltest::run(args, root.env({{"LC_ALL", "C.UTF-8"}}));
}

RunResult zolreg(const ProductRoot& root, std::vector<std::string> args) {
    args.insert(args.begin(), root.bin("zolreg").string());
    return zoltest::run(args, root.env());
}

void import(const ProductRoot& root, const std::string& body) {
    const fs::path file = root.path() / "fragment.reg";
    zoltest::writeFile(file, "REGEDIT4\n\n" + body);
    const RunResult r = zolreg(root, {"import", file.string()});
    ASSERT_EQ(r.status, 0) << r.err << body;
}

// A destination ID's key with the given values (REGEDIT4 value lines).
std::string destination(const std::string& id, const std::string& values) {
    return "[" + kIDList + "\\" + id + "]\n" + values + "\n";
}
// A REGEDIT4 dword value's text.
std::string dword(int value) {
    char text[16];
    std::snprintf(text, sizeof text, "dword:%08x", value);
    return text;
}
std::string inBand(const std::string& id, const std::string& address, int port = 31134,
                   const std::string& extra = "") {
    return destination(id, "\"Method\"=\"MANAGER (TCP_IP IN-BAND)\"\n\"Address\"=\"" + address +
                               "\"\n\"Port\"=" + dword(port) + "\n" + extra);
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        out.push_back(line);
    return out;
}

TEST(ZolctlCheck, SeededStoreHasNoFindings) {
    ProductRoot root;
    RunResult r = zolctl(root, {"check"});
    EXPECT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_EQ(r.out, "");
    r = zolctl(root, {"check", "--json"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "[]\n");
}

struct FindingCase {
    const char* what;
    std::string fragment;
    std::vector<std::string> expected;  // lines check must print, in its order
};

std::string manyDestinations(int count) {
    std::string out;
    for (int i = 0; i < count; ++i)
        out += destination("Extra" + std::to_string(i), "\"Method\"=\"MANAGER (SNMP)\"");
    return out;
}

const std::string kDiskDest = kAlertMan + "\\AgentEvent\\ZolDisk\\C0000402\\Dest";
const std::string kKernelItem = kAlertMan + "\\SyslogMonitor\\kernel\\C0000001";
const std::string kShortDisk = "HKLM\\SOFTWARE\\Tavik\\ZolAlertMan\\AgentEvent\\ZolDisk\\C0000402";
const std::string kShortKernel =
    "HKLM\\SOFTWARE\\Tavik\\ZolAlertMan\\SyslogMonitor\\kernel\\C0000001";

TEST(ZolctlCheck, ReportsEachKindOfFinding) {
    const FindingCase cases[] = {
        {"port",
         inBand("Ops", "192.0.2.1", 70000),
         {kShortIDList + "\\Ops\\Port: port outside 1 to 65535 (70000)"}},
        {"host name",
         inBand("Ops", "manager.example"),
         {kShortIDList +
          "\\Ops\\Address: not a dotted IPv4 address (host names are stored resolved) "
          "(manager.example)"}},
        {"method",
         destination("Fax", "\"Method\"=\"MANAGER (FAX)\""),
         {kShortIDList + "\\Fax\\Method: unknown report method (MANAGER (FAX))"}},
        {"no hour",
         inBand("Ops", "192.0.2.1", 31134, "\"HourMask\"=dword:00000000"),
         {kShortIDList +
          "\\Ops\\HourMask: no reporting hour: nothing is ever sent to this ID (0x000000)"}},
        {"hour 24",
         inBand("Ops", "192.0.2.1", 31134, "\"HourMask\"=dword:01ffffff"),
         {kShortIDList + "\\Ops\\HourMask: hour mask sets bits above hour 23 (0x1FFFFFF)"}},
        {"retries",
         inBand("Ops", "192.0.2.1", 31134,
                "\"RetryInterval\"=dword:0000001f\n\"RetryTime\"=dword:000000f1"),
         {kShortIDList + "\\Ops\\RetryInterval: retry interval outside 1 to 30 minutes (31)",
          kShortIDList + "\\Ops\\RetryTime: retry time outside 0 to 240 hours (241)"}},
        {"telephone",
         destination("Dial",
                     "\"Method\"=\"MANAGER (TCP_IP OUT-OF-BAND)\"\n\"Address\"=\"192.0.2.7"
                     "\"\n\"Phone\"=\"03-1234-x\""),
         {kShortIDList + "\\Dial\\Phone: telephone number holds characters other than digits, "
                         "'-', '(' and ')' (03-1234-x)"}},
        {"unset address bound",
         "[" + kDiskDest + "]\n\"TCP_IP In-Band\"=dword:00000001\n",
         {kShortIDList + "\\TCP_IP In-Band\\Address: no manager address, yet 1 events or syslog "
                         "items report to this ID"}},
        {"count",
         manyDestinations(91),
         {kShortIDList + ": 101 destination IDs; at most 100 are read (hidden ones included), the "
                         "rest are never reported to (101)"}},
        {"built-in",
         "[-" + kIDList + "\\TCP_IP Out-of-Band]\n",
         {kShortIDList + "\\TCP_IP Out-of-Band: built-in destination ID missing"}},
        {"event binding",
         "[" + kDiskDest + "]\n\"Ghost\"=dword:00000001\n",
         {kShortDisk + "\\Dest\\Ghost: reports to destination ID \"Ghost\", which does not exist "
                       "(1)"}},
        {"syslog binding",
         "[" + kKernelItem + "\\Dest]\n\"Gone\"=dword:00000001\n",
         {kShortKernel + "\\Dest\\Gone: reports to destination ID \"Gone\", which does not exist "
                         "(1)"}},
        {"keywords",
         "[" + kKernelItem + "]\n\"Keyword1\"=\"\"\n",
         {kShortKernel + "\\Keyword1: no keyword: the item matches no line"}},
        {"item hours",
         "[" + kKernelItem + "]\n\"TimeTable\"=dword:00000000\n",
         {kShortKernel + "\\TimeTable: no hour of the day: the item is never reported (0x000000)"}},
        {"mail list",
         "[" + kIDList + "\\VantrelReport\\Address]\n\"ETo\"=\"ops@example.com,nobody\"\n",
         {kShortIDList + "\\VantrelReport\\Address\\ETo: a mail address that is not valid, or more "
                         "than 100 addresses (ops@example.com,nobody)"}},
        {"sender",
         "[" + kAlertMan +
             "\\BaseSetting\\Report\\VantrelReport(Internet Mail)\\Setting]\n"
             "\"MailFrom\"=\"@example.com\"\n",
         {"HKLM\\SOFTWARE\\Tavik\\ZolAlertMan\\BaseSetting\\Report\\VantrelReport(Internet Mail)"
          "\\Setting\\MailFrom: not one valid mail address (one \"@\", neither first nor last) "
          "(@example.com)"}},
        {"service on",
         "[" + kAlertMan +
             "\\BaseSetting\\Method\\VantrelReport(Internet Mail)]\n"
             "\"Enable\"=dword:00000001\n",
         {"HKLM\\SOFTWARE\\Tavik\\VNTService\\InstVantrelKeyFD: the remote report service is "
          "switched on but its key floppy has not been read (0)",
          kShortIDList + "\\VantrelReport\\Address\\ETo: the service reports by mail but has no "
                         "mail address to send to",
          "HKLM\\SOFTWARE\\Tavik\\ZolAlertMan\\BaseSetting\\Report\\VantrelReport(Internet Mail)"
          "\\Setting\\SMTPServer: the service reports by mail but has no SMTP server"}},
        {"service on by dial-up",
         "[" + kAlertMan +
             "\\BaseSetting\\Method\\VantrelReport(Dial-up)]\n"
             "\"Enable\"=dword:00000001\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tavik\\VNTService]\n"
             "\"MethodType\"=dword:00000001\n\"InstVantrelKeyFD\"=dword:00000001\n",
         {"HKLM\\SOFTWARE\\Tavik\\ZolAlertMan\\BaseSetting\\Report\\VantrelReport(Dial-up)\\Setting"
          "\\PhoneNo1: the service reports by dial-up but has no telephone number"}},
        {"service on via the manager",
         "[" + kAlertMan +
             "\\BaseSetting\\Method\\VantrelReport(TransToManager)]\n"
             "\"Enable\"=dword:00000001\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tavik\\VNTService]\n"
             "\"MethodType\"=dword:00000002\n\"InstVantrelKeyFD\"=dword:00000001\n",
         {kShortIDList + "\\VantrelReport\\Address\\ManagerIP: the service reports via the manager "
                         "but has no manager address"}},
        {"service on by HTTPS",
         "[" + kAlertMan +
             "\\BaseSetting\\Method\\VantrelReport(HTTPS)]\n"
             "\"Enable\"=dword:00000001\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tavik\\VNTService]\n"
             "\"MethodType\"=dword:00000003\n\"InstVantrelKeyFD\"=dword:00000001\n",
         {"HKLM\\SOFTWARE\\Tavik\\ZolAlertMan\\BaseSetting\\Report\\VantrelReport(HTTPS)\\Setting"
          "\\HTTPD1URL: the service reports over HTTPS but has no first URL"}},
    };
    for (const FindingCase& c : cases) {
        SCOPED_TRACE(c.what);
        ProductRoot root;
        import(root, c.fragment);
        const RunResult r = zolctl(root, {"check"});
        EXPECT_EQ(r.status, 1) << r.err;
        EXPECT_EQ(lines(r.out), c.expected) << r.out;
    }
}

TEST(ZolctlCheck, FixRemovesOnlyDanglingBindingsInOneGo) {
    ProductRoot root;
    import(root, "[" + kDiskDest + "]\n\"Ghost\"=dword:00000001\n[" + kKernelItem +
                     "\\Dest]\n\"Gone\"=dword:00000001\n" + inBand("Ops", "192.0.2.1", 0));
    const std::string before = root.path() / "before.reg";
    const std::string after = root.path() / "after.reg";
    ASSERT_EQ(zolreg(root, {"export", "HKLM\\SOFTWARE\\Tavik", before}).status, 0);

    RunResult r = zolctl(root, {"check", "--json"});
    EXPECT_EQ(r.status, 1);
    std::string jsonIDList;
    for (const char c : kShortIDList)
        jsonIDList += c == '\\' ? std::string("\\\\") : std::string(1, c);
    EXPECT_NE(r.out.find("\"key\":\"" + jsonIDList +
                         "\\\\Ops\\\\Port\",\"value\":\"0\","
                         "\"finding\":\"port outside 1 to 65535\",\"fixable\":false"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("\"fixable\":true"), std::string::npos) << r.out;

    r = zolctl(root, {"check", "--fix"});
    EXPECT_EQ(r.status, 1) << r.err;  // the port is no repair of zolctl's
    EXPECT_EQ(lines(r.out), (std::vector<std::string>{
                                "fixed: " + kShortDisk +
                                    "\\Dest\\Ghost: reports to destination ID \"Ghost\", "
                                    "which does not exist (1)",
                                "fixed: " + kShortKernel +
                                    "\\Dest\\Gone: reports to destination ID \"Gone\", "
                                    "which does not exist (1)",
                                kShortIDList + "\\Ops\\Port: port outside 1 to 65535 (0)"}));

    // Only the two bindings are gone; everything else is as it was.
    ASSERT_EQ(zolreg(root, {"export", "HKLM\\SOFTWARE\\Tavik", after}).status, 0);
    std::vector<std::string> removed, added;
    const auto a = lines(zoltest::readFile(before)), b = lines(zoltest::readFile(after));
    for (const auto& l : a)
        if (std::find(b.begin(), b.end(), l) == b.end())
            removed.push_back(l);
    for (const auto& l : b)
        if (std::find(a.begin(), a.end(), l) == a.end())
            added.push_back(l);
    EXPECT_EQ(removed,
              (std::vector<std::string>{"\"Ghost\"=dword:00000001", "\"Gone\"=dword:00000001"}));
    EXPECT_TRUE(added.empty());

    // With the port mended the store is clean; a second --fix has nothing to do.
    import(root, inBand("Ops", "192.0.2.1", 31134));
    r = zolctl(root, {"check", "--fix", "--json"});
    EXPECT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_EQ(r.out, "{\"fixed\":[],\n\"findings\":[]}\n");
}

// Two destinations with different hours, both bound to one event (which also reports to SNMP).
void twoSchedules(const ProductRoot& root) {
    import(root, inBand("Day", "192.0.2.10", 31134, "\"HourMask\"=dword:0003ff00") +
                     inBand("Night", "192.0.2.20", 4000,
                            "\"HourMask\"=dword:00c0003f\n\"RetryInterval\"=dword:0000000a") +
                     "[" + kDiskDest + "]\n\"Day\"=dword:00000001\n\"Night\"=dword:00000001\n");
}

TEST(ZolctlRoute, EventToTwoDestinationsWithTheirHours) {
    ProductRoot root;
    twoSchedules(root);
    RunResult r = zolctl(root, {"route", "zoldisk", "c0000402"});
    EXPECT_EQ(r.status, 0) << r.err;
    const auto out = lines(r.out);
    ASSERT_EQ(out.size(), 5u) << r.out;
    EXPECT_TRUE(out[0].starts_with("agent event ZolDisk C0000402 (trap ")) << out[0];
    EXPECT_TRUE(out[1].starts_with("  handling: action ")) << out[1];
    EXPECT_EQ(out[2],
              "  Day: MANAGER (TCP_IP IN-BAND), 192.0.2.10 port 31134; hours 8-17; retry "
              "every 5 min for 72 h");
    EXPECT_EQ(out[3],
              "  Night: MANAGER (TCP_IP IN-BAND), 192.0.2.20 port 4000; hours 0-5,22-23; "
              "retry every 10 min for 72 h");
    EXPECT_EQ(out[4],
              "  SNMP: MANAGER (SNMP), no trap destination set; hours 0-23; retry every 5 "
              "min for 72 h");

    r = zolctl(root, {"route", "ZolDisk", "C0000402", "--json"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("{\"id\":\"Night\",\"exists\":true,\"method\":\"MANAGER (TCP_IP "
                         "IN-BAND)\",\"address\":\"192.0.2.20\",\"port\":4000,"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("\"hours\":\"8-17\",\"hourMask\":261888"), std::string::npos) << r.out;

    // An event nobody hears about, and one that is not in the catalogue.
    r = zolctl(root, {"route", "ZolThermal", "80000004"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("  not reported to any destination\n"), std::string::npos) << r.out;
    // The remote report service's ID goes where the service's method sends.
    import(root, "[" + kAlertMan +
                     "\\AgentEvent\\ZolThermal\\80000004\\Dest]\n"
                     "\"VantrelReport\"=dword:00000001\n[" +
                     kIDList +
                     "\\VantrelReport\\Address]\n"
                     "\"ETo\"=\"centre@example.com\"\n");
    r = zolctl(root, {"route", "ZolThermal", "80000004"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("\n  VantrelReport: VANTRELREPORT, internet mail to centre@example.com; "
                         "hours 0-23;"),
              std::string::npos)
        << r.out;
    r = zolctl(root, {"route", "ZolDisk", "C9999999"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "no agent event ZolDisk C9999999 in the catalogue: not reported\n");
}

TEST(ZolctlRoute, SyslogLineAgainstTheKeywords) {
    ProductRoot root;
    RunResult r = zolctl(root, {"route", "--syslog", "kernel",
                                "blk_update_request: I/O error, dev sda, sector 2048"});
    EXPECT_EQ(r.status, 0) << r.err;
    auto out = lines(r.out);
    ASSERT_GE(out.size(), 3u) << r.out;
    EXPECT_EQ(out[0],
              "item C0000001 matched (keywords \"I/O error\"; fires at 1 matching line(s); "
              "item hours 0-23)");
    EXPECT_EQ(out[2],
              "  SNMP: MANAGER (SNMP), no trap destination set; hours 0-23; retry every 5 "
              "min for 72 h");
    EXPECT_EQ(r.out.find("not matched"), std::string::npos);

    // One keyword of two is not enough; keywords are case-sensitive.
    r = zolctl(root,
               {"route", "--syslog", "kernel", "--verbose", "Out of memory: killed process 7"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("item C0000002 not matched: keyword \"Killed process\" not in the line\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("item C0000001 not matched: keyword \"I/O error\" not in the line\n"),
              std::string::npos)
        << r.out;
    r = zolctl(root, {"route", "--syslog", "KERNEL", "all is well"});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(lines(r.out).back().starts_with("no item of KERNEL (")) << r.out;
    EXPECT_NE(r.out.find(") matches the line: not reported (--verbose says why)"),
              std::string::npos);

    r = zolctl(root, {"route", "--syslog", "kernel", "--json", "Out of memory; Killed process 7"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("\"eventID\":\"C0000002\",\"trapName\":\"sysKernelOutOfMemory\""),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("\"keywords\":[\"Out of memory\",\"Killed process\"],\"matched\":true"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("\"matched\":false,\"why\":\"keyword \\\"I/O error\\\" not in the line\""),
              std::string::npos)
        << r.out;
}

// A Japanese keyword is stored in EUC-JP; a line typed on a UTF-8 terminal still matches it, and
// the keyword is shown in the terminal's encoding (UTF-8), in JSON always in UTF-8.
TEST(ZolctlRoute, JapaneseKeywordOnAUtf8Terminal) {
    ProductRoot root;
    const std::string eucKeyword = "\xa5\xc7\xa5\xa3\xa5\xb9\xa5\xaf\xbe\xe3\xb3\xb2";
    const std::string utf8Keyword = "\u30c7\u30a3\u30b9\u30af\u969c\u5bb3";  // disk failure
    import(root, "[" + kAlertMan + "\\SyslogMonitor\\diskmon\\C0000009]\n\"Keyword1\"=\"" +
                     eucKeyword + "\"\n\"TimeTable\"=dword:00ffffff\n\"Count\"=dword:00000001\n[" +
                     kAlertMan +
                     "\\SyslogMonitor\\diskmon\\C0000009\\Dest]\n\"SNMP\"=dword:00000001\n");
    const auto run = [&](std::vector<std::string> args) {
        args.insert(args.begin(), root.bin("zolctl").string());
        return zoltest::run(args, root.env({{"LC_ALL", "ja_JP.UTF-8"}}));
    };
    RunResult r = run({"route", "--syslog", "diskmon", "sda: " + utf8Keyword + " sector 9"});
    EXPECT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_TRUE(r.out.starts_with("item C0000009 matched (keywords \"" + utf8Keyword + "\";"))
        << r.out;
    r = run({"route", "--syslog", "diskmon", "--json", "sda: " + utf8Keyword});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("\"keywords\":[\"" + utf8Keyword + "\"],\"matched\":true"),
              std::string::npos)
        << r.out;
    r = run({"route", "--syslog", "diskmon", "sda: disk failure"});
    EXPECT_EQ(r.status, 1);
}

// A manager stand-in: accepts one connection, reads the report whole, answers `reply`.
class Listener {
  public:
    explicit Listener(std::string reply) : reply_(std::move(reply)) {
        fd_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in addr{};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof addr;
        EXPECT_EQ(::bind(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
        EXPECT_EQ(::listen(fd_, 1), 0);
        ::getsockname(fd_, reinterpret_cast<sockaddr*>(&addr), &length);
        port_ = ntohs(addr.sin_port);
        received_ = std::async(std::launch::async, [this] { return serve(); });
    }
    ~Listener() { ::close(fd_); }
    int port() const { return port_; }
    std::string received() { return received_.get(); }

  private:
    std::string serve() {
        const int client = ::accept(fd_, nullptr, nullptr);
        if (client < 0)
            return {};
        std::string data;
        char buffer[512];
        for (ssize_t n; (n = ::recv(client, buffer, sizeof buffer, 0)) > 0;)
            data.append(buffer, static_cast<std::size_t>(n));
        if (!reply_.empty())
            ::send(client, reply_.data(), reply_.size(), MSG_NOSIGNAL);
        ::close(client);
        return data;
    }
    std::string reply_;
    int fd_ = -1;
    int port_ = 0;
    std::future<std::string> received_;
};

TEST(ZolctlTest, TcpReportInTheDocumentedFraming) {
    ProductRoot root;
    {
        Listener manager("OK received\n");
        import(root, inBand("Ops", "127.0.0.1", manager.port()));
        const RunResult r = zolctl(root, {"test", "ops"});
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, "Ops: sent to 127.0.0.1 port " + std::to_string(manager.port()) +
                             ", acknowledged: OK received\n");
        const std::string report = manager.received();
        const auto newline = report.find('\n');
        ASSERT_NE(newline, std::string::npos) << report;
        const std::string header = report.substr(0, newline);
        const std::string body = report.substr(newline + 1);
        EXPECT_EQ(header, "ZOLREPORT/1 TEST " + std::to_string(body.size()));
        EXPECT_TRUE(body.starts_with("Destination: Ops\nMethod: MANAGER (TCP_IP IN-BAND)\nHost: "))
            << body;
        EXPECT_NE(body.find("\nText: Test report from zolctl\n"), std::string::npos) << body;
    }
    {
        Listener silent("");
        import(root, inBand("Ops", "127.0.0.1", silent.port()));
        const RunResult r = zolctl(root, {"test", "Ops", "--json"});
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.out,
                  "{\"id\":\"Ops\",\"method\":\"MANAGER (TCP_IP IN-BAND)\",\"sent\":true,"
                  "\"outcome\":\"sent to 127.0.0.1 port " +
                      std::to_string(silent.port()) + " (no acknowledgement)\"}\n");
        silent.received();
    }
    int closedPort = 0;
    {
        Listener refusing("ERR queue full\n");
        closedPort = refusing.port();
        import(root, inBand("Ops", "127.0.0.1", refusing.port()));
        const RunResult r = zolctl(root, {"test", "Ops"});
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.out, "Ops: refused by 127.0.0.1 port " + std::to_string(closedPort) +
                             ": ERR queue full\n");
        refusing.received();
    }
    // Nobody listens there any more.
    const RunResult r = zolctl(root, {"test", "Ops"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("Ops: not sent: cannot connect to 127.0.0.1 port "), std::string::npos)
        << r.out;
    // A method without test reports.
    import(root, destination("Fax", "\"Method\"=\"MANAGER (FAX)\""));
    const RunResult fax = zolctl(root, {"test", "Fax"});
    EXPECT_EQ(fax.status, 1);
    EXPECT_EQ(fax.out, "Fax: test reports are not offered for the method \"MANAGER (FAX)\"\n");
}

// The remote report service's ID goes by the service's own method; here via the manager, whose
// stand-in acknowledges one test report and refuses the next.
TEST(ZolctlTest, RemoteReportServiceSendsByItsMethod) {
    ProductRoot root;
    const auto viaManager = [&](int port) {
        import(root,
               "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tavik\\VNTService]\n"
               "\"MethodType\"=dword:00000002\n\n" +
                   destination("VantrelReport\\Address",
                               "\"ManagerIP\"=\"127.0.0.1\"\n\"ManagerPort\"=" + dword(port)));
    };
    {
        nettest::ManagerListener manager("ACK T");
        viaManager(manager.port());
        const RunResult r = zolctl(root, {"test", "VantrelReport"});
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, "VantrelReport: sent by the remote report service\n");
        ASSERT_EQ(manager.frames().size(), 1u);
        EXPECT_TRUE(manager.frames().front().starts_with("ZOLVNT/1 T "))
            << manager.frames().front();
    }
    nettest::ManagerListener refusing("NAK queue full");
    viaManager(refusing.port());
    const RunResult r = zolctl(root, {"test", "VantrelReport", "--json"});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.out.starts_with("{\"id\":\"VantrelReport\"")) << r.out;
    EXPECT_NE(r.out.find("\"sent\":false"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("queue full"), std::string::npos) << r.out;
}

// snmptrapd run unprivileged on a loopback port (the test's child), its log in a file.
class TrapReceiver {
  public:
    TrapReceiver(const fs::path& dir, int port)
        : log_(dir / "snmptrapd.log"), process_(Command(dir, port), log_) {}
    // Reads its log until text appears (true) or 10 seconds pass.
    bool waitFor(const std::string& text) const {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (log().find(text) == std::string::npos && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        return log().find(text) != std::string::npos;
    }
    std::string log() const { return zoltest::readFile(log_); }

  private:
    static std::vector<std::string> Command(const fs::path& dir, int port) {
        zoltest::writeFile(dir / "snmptrapd.conf", "disableAuthorization yes\n");
        const std::string d = dir.string();
        std::vector<std::string> argv = {"/usr/bin/env", "SNMP_PERSISTENT_DIR=" + d,
                                         "/usr/sbin/snmptrapd"};
        argv.insert(argv.end(), {"-f", "-Lo", "-n", "-C", "-c", d + "/snmptrapd.conf", "-M",
                                 "/dev/null", "-m", "", "--doNotRetainNotificationLogs=yes", "-p",
                                 d + "/snmptrapd.pid", "udp:127.0.0.1:" + std::to_string(port)});
        return argv;
    }
    fs::path log_;
    deliverytest::ChildProcess process_;
};

int freeUdpPort() {
    const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
    socklen_t length = sizeof addr;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &length);
    ::close(fd);
    return ntohs(addr.sin_port);
}

TEST(ZolctlTest, SnmpTrapReachesSnmptrapd) {
    if (!fs::exists("/usr/sbin/snmptrapd"))
        GTEST_SKIP() << "snmptrapd is not installed";
    ProductRoot root;
    const int port = freeUdpPort();
    TrapReceiver receiver(root.path(), port);
    ASSERT_TRUE(receiver.waitFor("NET-SNMP version")) << receiver.log();
    import(root, destination("SNMP", "\"Address\"=\"127.0.0.1\"\n\"Port\"=" + dword(port)));
    const RunResult r = zolctl(root, {"test", "SNMP"});
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_EQ(r.out, "SNMP: SNMPv2c trap sent to 127.0.0.1:" + std::to_string(port) + "\n");
    EXPECT_TRUE(receiver.waitFor("to destination ID SNMP")) << receiver.log();
    EXPECT_NE(receiver.log().find("3.6.1.4.1.8072.9999.1.1"), std::string::npos) << receiver.log();

    // With no address of its own and an empty trap list there is nowhere to send.
    import(root, destination("SNMP", "\"Address\"=\"\""));
    const RunResult none = zolctl(root, {"test", "SNMP"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.out, "SNMP: not sent: no trap destination is set\n");
}

TEST(ZolctlUsage, BadUsageAndUnreadableStoresAreStatusTwo) {
    ProductRoot root;
    const std::vector<std::vector<std::string>> bad = {
        {},
        {"bogus"},
        {"check", "extra"},
        {"check", "--frobnicate"},
        {"route", "ZolDisk"},
        {"route", "--syslog", "kernel"},
        {"route", "--verbose", "ZolDisk", "C0000402"},
        {"test"},
        {"test", "Nobody"},
    };
    for (const auto& args : bad) {
        const RunResult r = zolctl(root, args);
        EXPECT_EQ(r.status, 2) << (args.empty() ? "" : args[0]) << r.out;
        EXPECT_TRUE(r.err.starts_with("zolctl: ")) << r.err;
    }
    const RunResult help = zolctl(root, {"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.starts_with("usage: zolctl check")) << help.out;

    ProductRoot empty(false);
    for (const auto& args : std::vector<std::vector<std::string>>{
             {"check"}, {"route", "ZolDisk", "C0000402"}, {"test", "SNMP"}}) {
        const RunResult r = zolctl(empty, args);
        EXPECT_EQ(r.status, 2) << args[0];
        EXPECT_NE(r.err.find("cannot be read (missing or damaged)"), std::string::npos) << r.err;
    }
    fs::create_directories(empty.store().parent_path());
    zoltest::writeFile(empty.store(), std::string(4096, 'x'));
    const RunResult damaged = zolctl(empty, {"check"});
    EXPECT_EQ(damaged.status, 2);
    EXPECT_NE(damaged.err.find("cannot be read"), std::string::npos) << damaged.err;
}

}  // namespace
