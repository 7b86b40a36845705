// The syslog monitoring list, its per-item settings and the add dialog as an administrator meets
// them: the test writing its lines into a system log socket of the test's own, items added with
// every refusal and the library's answers, items and whole sources deleted down to the last, and
// the per-item settings in both variants, each checked in the store afterwards.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "frame/textformat.h"
#include "monitor_screen_util.h"
#include "records.h"

namespace fs = std::filesystem;
namespace keys = zoltest::keys;
using frametest::dismiss;
using frametest::english;
using frametest::frameTitle;
using frametest::sendTimes;
using frametest::waitFocus;
using montest::Bindings;
using montest::Dword;
using montest::KeyExists;
using montest::Retype;
using montest::Text;
using zoltest::ProductRoot;
using Ids = std::set<std::string>;
using namespace std::chrono_literals;

namespace {

const std::string kLongKeyword = std::string(40, 'a') + "Z";

// Two sources; the first item's keywords hold printf conversions.
const std::string kCatalogue = R"([SyslogMonitor\alpha\40000001]
"Keyword1"="EXT4-fs error"
"Keyword2"="100%s done %n"
"Keyword3"=""
"TrapName"="alphaTrap1"
"DealMethod"="NO_US_DEALMETHOD"
"Count"=dword:00000003
"TimeTable"=dword:00ffffff
[SyslogMonitor\alpha\40000002]
"Keyword1"=")" + kLongKeyword + R"("
"TrapName"="alphaTrap2"
[SyslogMonitor\alpha\40000002\Dest]
"VantrelReport"=dword:00000001
[SyslogMonitor\beta\C0000001]
"Keyword1"="panic"
"TrapName"="betaTrap"
)";

const std::string kAlpha1 = "SyslogMonitor\\alpha\\40000001";
const std::string kAlpha2 = "SyslogMonitor\\alpha\\40000002";

// A datagram socket standing in for the system logger's /dev/log, in a folder of its own.
class LogSocket {
  public:
    LogSocket() {
        std::string dir = (fs::temp_directory_path() / "zolsyslog-XXXXXX").string();
        if (mkdtemp(dir.data()) == nullptr)
            throw std::runtime_error("mkdtemp failed");
        dir_ = dir;
        fd_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_un addr{};
        addr.sun_family = AF_UNIX;
        std::snprintf(addr.sun_path, sizeof addr.sun_path, "%s", path().c_str());
        if (fd_ < 0 || bind(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0)
            throw std::runtime_error("cannot bind " + path());
    }
    ~LogSocket() {
        if (fd_ >= 0)
            close(fd_);
        std::error_code ec;
        fs::remove_all(dir_, ec);
    }
    LogSocket(const LogSocket&) = delete;
    LogSocket& operator=(const LogSocket&) = delete;

    std::string path() const { return (dir_ / "log").string(); }
    // The next message, or nothing when none comes within the time-out.
    std::optional<std::string> Receive(std::chrono::milliseconds timeout) {
        pollfd p{fd_, POLLIN, 0};
        if (poll(&p, 1, static_cast<int>(timeout.count())) != 1)
            return std::nullopt;
        char buffer[4096];
        const ssize_t n = recv(fd_, buffer, sizeof buffer, 0);
        return n < 0 ? std::nullopt : std::optional<std::string>(std::string(buffer, n));
    }

  private:
    fs::path dir_;
    int fd_ = -1;
};

// Whether the launcher can give a program a /dev/log of its own here (it needs to make a mount
// namespace: root, or CAP_SYS_ADMIN).
bool CanIsolateDevLog(const LogSocket& log) {
    return zoltest::run({DEVLOG_LAUNCHER, log.path(), "/bin/true"}).status == 0;
}

const char* const kItemScreen = "TITTLE_SUBSYSLOG_SET_ID";

void PressOkAndClose(zoltest::Terminal& t, const ProductRoot& root) {
    ASSERT_TRUE(waitFocus(t, english(root, "BUTTON_OK_ID"))) << t.dump();
    t.send(keys::Enter);
    montest::WaitSettingsClosed(t, root, kItemScreen);
}

}  // namespace

// The test writes the item's line as often as its count says, the keywords' printf conversions
// as plain text; Cancel and the whole source write nothing.
TEST(SyslogList, TestWritesTheLineCountTimesIntoTheSystemLog) {
    LogSocket log;
    if (!CanIsolateDevLog(log))
        GTEST_SKIP() << "no mount namespace for a private /dev/log here";
    ProductRoot root;
    montest::ReplaceCatalogues(root, kCatalogue);
    auto t = montest::OpenSyslogList(root, {}, {DEVLOG_LAUNCHER, log.path()});
    ASSERT_TRUE(t->waitForText("alphaTrap1")) << t->dump();
    sendTimes(*t, 4);
    ASSERT_TRUE(waitFocus(*t, english(root, "AGENT_BUTTON_TEST_ID"))) << t->dump();
    t->send(keys::Enter);
    const std::string question = english(root, "AGENT_TEST_MES_ID");
    ASSERT_TRUE(t->waitForText(question)) << t->dump();
    EXPECT_TRUE(t->contains(frameTitle(root, "AGENT_TEST_TITTLE_MES_ID"))) << t->dump();
    t->send(keys::Enter);
    const std::string line = "ZOLamsadm: [TEST - AlertManager] EXT4-fs error 100%s done %n ";
    for (int i = 0; i < 3; ++i) {
        const std::optional<std::string> message = log.Receive(10s);
        ASSERT_TRUE(message.has_value()) << "line " << i << "\n" << frametest::traceDump(root);
        EXPECT_TRUE(message->starts_with("<14>")) << *message;  // user.info
        EXPECT_TRUE(message->ends_with(line)) << *message;
    }
    EXPECT_FALSE(log.Receive(500ms).has_value()) << "more lines than the count";
    ASSERT_TRUE(t->waitForNoText(question)) << t->dump();

    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(question)) << t->dump();
    t->send(keys::Tab);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(question)) << t->dump();
    sendTimes(*t, 3, keys::BackTab);
    t->send(keys::Space);
    ASSERT_TRUE(t->waitForText(english(root, "AGENT_ALL_ID"))) << t->dump();
    sendTimes(*t, 3);
    t->send(keys::Enter);
    dismiss(*t, english(root, "AGENT_TEST_NOALL_MES_ID"));
    EXPECT_FALSE(log.Receive(500ms).has_value()) << "written after Cancel or for a whole source";
    montest::CloseListAndMenu(*t, root, "MAIN_SYSLOG_ID");
}

// The add dialog with a source to type (whole source chosen, nothing deleted yet): each check's
// refusal in turn with the typed values kept, the library's answers for a source spelled in
// another case (-4) and an existing event ID (-3), and finally an item with only its third
// keyword, whose fields reach the store.
TEST(SyslogList, AddingItemsRefusalsAndTheLibrarysAnswers) {
    ProductRoot root;
    montest::ReplaceCatalogues(root, kCatalogue);
    auto t = montest::OpenSyslogList(root);
    t->send(keys::Tab);
    t->send(keys::Space);
    sendTimes(*t, 4);
    ASSERT_TRUE(waitFocus(*t, english(root, "AGENT_BUTTON_ADD_ID"))) << t->dump();
    t->send(keys::Enter);
    const std::string title = frameTitle(root, "TITLE_SYSLOGADD_ID");
    ASSERT_TRUE(t->waitForText(title)) << t->dump();

    struct Case {
        std::string fields[6];  // source, event ID, keywords 1 to 3, trap name
        const char* message;
    };
    const std::string k256(256, 'k'), t80(80, 't');
    const Case cases[] = {
        {{"newsvc", "1000ABCD", "x", "", "", ""}, "SYSLOGADD_InvalidEventError_ID"},
        {{"newsvc", "4000ABC", "x", "", "", ""}, "SYSLOGADD_InvalidEventError_ID"},
        {{"newsvc", "4000ABCG", "x", "", "", ""}, "SYSLOGADD_InvalidEventError_ID"},
        {{"newsvc", "4000ABCD", "x", k256 + "k", "", ""}, "SYSLOGADD_KeywordError_ID"},
        {{"newsvc", "4000ABCD", "x", "", "", t80 + "t"}, "SYSLOGADD_TrapnameError_ID"},
        {{"newsvc", "4000ABCD", "", "", "", ""}, "SYSLOGADD_NotCompleteError_ID"},
        {{"ALPHA", "4000ABCD", "x", "", "", ""}, "SYSLOGADD_SourceExistedError_ID"},
        {{"alpha", "40000001", "x", "", "", ""}, "SYSLOGADD_EventExistedError_ID"},
        {{"alpha", "c0000009", "", k256, "only kw3", t80}, "SYSLOGADD_SucceedMessage_ID"},
    };
    for (const Case& c : cases) {
        for (const std::string& field : c.fields) {
            Retype(*t, field, 300);
            t->send(keys::Tab);
        }
        t->send(keys::Tab);  // past the handling method
        ASSERT_TRUE(waitFocus(*t, english(root, "SYSLOGADD_CONFIRM_ID"))) << t->dump();
        t->send(keys::Enter);
        dismiss(*t, english(root, c.message).substr(0, 60));
        if (c.message != std::string("SYSLOGADD_SucceedMessage_ID")) {
            ASSERT_TRUE(t->contains(title)) << c.message << "\n" << t->dump();
            ASSERT_TRUE(t->contains(c.fields[0].substr(0, 16))) << "typed value lost";
            sendTimes(*t, 2);  // Cancel, then round to the source
        }
    }
    ASSERT_TRUE(t->waitForNoText(title)) << t->dump();
    const std::string added = "SyslogMonitor\\alpha\\c0000009";
    EXPECT_EQ(Text(root, added, "Keyword1"), "");
    EXPECT_EQ(Text(root, added, "Keyword2"), k256);
    EXPECT_EQ(Text(root, added, "Keyword3"), "only kw3");
    EXPECT_EQ(Text(root, added, "TrapName"), t80);
    EXPECT_EQ(Text(root, added, "DealMethod"), NO_US_DEALMETHOD);
    EXPECT_EQ(Dword(root, added, "Count"), 0);
    EXPECT_FALSE(KeyExists(root, "SyslogMonitor\\newsvc"));

    // Cancelled, the dialog adds nothing.
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(title)) << t->dump();
    t->send("mysvc");
    frametest::closeWindow(*t, root, "TITLE_SYSLOGADD_ID");
    EXPECT_FALSE(KeyExists(root, "SyslogMonitor\\mysvc"));
    montest::CloseListAndMenu(*t, root, "MAIN_SYSLOG_ID");
}

// One item deleted after "cancel" kept it; a whole source deleted through the library's "All"
// with a confirmation that names the source; the last item deleted, which ends the screen with
// its warning.
TEST(SyslogList, DeletingItemsSourcesAndTheLast) {
    ProductRoot root;
    montest::ReplaceCatalogues(root, kCatalogue);
    auto t = montest::OpenSyslogList(root);
    const std::string wintitle = frameTitle(root, "SYSLOGDEL_WINTITLE_ID");
    const std::string deleted = english(root, "SYSLOGDEL_DELSUCCESSMESSAGE_ID");
    sendTimes(*t, 6);
    ASSERT_TRUE(waitFocus(*t, english(root, "AGENT_BUTTON_DEL_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText("source alpha, event ID")) << t->dump();
    EXPECT_TRUE(t->contains(wintitle)) << t->dump();
    t->send(keys::Tab);  // "cancel"
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(wintitle)) << t->dump();
    EXPECT_TRUE(KeyExists(root, kAlpha1));
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText("source alpha, event ID")) << t->dump();
    t->send(keys::Enter);
    dismiss(*t, deleted);
    EXPECT_FALSE(KeyExists(root, kAlpha1));
    EXPECT_TRUE(KeyExists(root, kAlpha2));
    ASSERT_TRUE(t->waitForText("alphaTrap2")) << "lists read again:\n" << t->dump();

    sendTimes(*t, 5, keys::BackTab);
    t->send(keys::Space);
    sendTimes(*t, 5);
    t->send(keys::Enter);
    const std::string confirmSource =
        FormatText(english(root, "SYSLOGDEL_CONFIRMSOURCE_ID"), {"alpha"});
    ASSERT_TRUE(t->waitForText(confirmSource)) << t->dump();
    t->send(keys::Enter);
    dismiss(*t, deleted);
    EXPECT_FALSE(KeyExists(root, "SyslogMonitor\\alpha"));
    ASSERT_TRUE(t->waitForText("beta")) << t->dump();

    sendTimes(*t, 4, keys::BackTab);  // the one-item radio
    t->send(keys::Space);
    ASSERT_TRUE(t->waitForText("betaTrap")) << t->dump();
    sendTimes(*t, 4);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText("source beta, event ID")) << t->dump();
    t->send(keys::Enter);
    dismiss(*t, deleted);
    dismiss(*t, english(root, "WARN_NOIDNAME_ID").substr(0, 40));
    ASSERT_TRUE(t->waitForNoText(frameTitle(root, "MAIN_SYSLOG_ID"))) << t->dump();
    EXPECT_FALSE(KeyExists(root, "SyslogMonitor\\beta"));
    EXPECT_TRUE(KeyExists(root, "SyslogMonitor"));
    frametest::closeMenu(*t);
}

// One item: time table, count, action, handling method and an ID written; a time table that
// names no hour keeps the former one and an empty count stores 0; keywords are cut to 40 columns
// and shown whole by their buttons.
TEST(SyslogItemSettings, OneItemsFieldsAndKeywords) {
    ProductRoot root;
    montest::ReplaceCatalogues(root, kCatalogue);
    auto t = montest::OpenSyslogList(root);
    sendTimes(*t, 7);
    montest::OpenSettings(*t, root, kItemScreen);
    ASSERT_TRUE(t->waitForText("0-23")) << t->dump();
    EXPECT_TRUE(t->contains("100%s done %n")) << t->dump();
    Retype(*t, "9-17");
    t->send(keys::Tab);
    Retype(*t, "5");
    t->send(keys::Tab);
    t->send(keys::Enter);  // the first keyword, whole
    const std::string keywordTitle = frameTitle(root, "SUBAGENT_TITLE_KEYWORD1_ID");
    ASSERT_TRUE(t->waitForText(keywordTitle)) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(keywordTitle)) << t->dump();
    sendTimes(*t, 3);
    t->send(keys::Down);
    t->send(keys::Tab);
    t->send("Swap the disk");
    sendTimes(*t, 2);
    t->send(keys::Enter);  // SNMP
    sendTimes(*t, 3);
    PressOkAndClose(*t, root);
    EXPECT_EQ(Dword(root, kAlpha1, "TimeTable"), 0x3FE00);
    EXPECT_EQ(Dword(root, kAlpha1, "Count"), 5);
    EXPECT_EQ(Dword(root, kAlpha1, "Action"), 1);
    EXPECT_EQ(Text(root, kAlpha1, "DealMethod"), "Swap the disk");
    EXPECT_EQ(Bindings(root, kAlpha1), Ids{"SNMP"});

    montest::OpenSettings(*t, root, kItemScreen);
    ASSERT_TRUE(t->waitForText("9-17")) << t->dump();
    Retype(*t, "");
    t->send(keys::Tab);
    Retype(*t, "");
    sendTimes(*t, 10);
    PressOkAndClose(*t, root);
    EXPECT_EQ(Dword(root, kAlpha1, "TimeTable"), 0x3FE00);
    EXPECT_EQ(Dword(root, kAlpha1, "Count"), 0);
    EXPECT_EQ(Text(root, kAlpha1, "DealMethod"), "Swap the disk");

    sendTimes(*t, 4, keys::BackTab);
    t->send(keys::Down);
    ASSERT_TRUE(t->waitForText("alphaTrap2")) << t->dump();
    sendTimes(*t, 4);
    montest::OpenSettings(*t, root, kItemScreen);
    EXPECT_TRUE(t->contains(std::string(40, 'a'))) << t->dump();
    EXPECT_FALSE(t->contains("aZ")) << t->dump();
    sendTimes(*t, 2);
    t->send(keys::Enter);
    dismiss(*t, kLongKeyword);
    frametest::closeWindow(*t, root, kItemScreen);
    montest::CloseListAndMenu(*t, root, "MAIN_SYSLOG_ID");
}

// A whole source shows only the IDs, without the remote report service's own, and leaves that
// service's bindings alone. The administrator variant adds the error kind and level to an item.
TEST(SyslogItemSettings, WholeSourceAndAdministrator) {
    ProductRoot root;
    montest::ReplaceCatalogues(root, kCatalogue);
    auto t = montest::OpenSyslogList(root);
    t->send(keys::Tab);
    t->send(keys::Space);
    sendTimes(*t, 6);
    montest::OpenSettings(*t, root, kItemScreen);
    EXPECT_TRUE(t->contains(english(root, "AGENT_ALL_ID"))) << t->dump();
    EXPECT_FALSE(t->contains(english(root, "SYSLOG_TIMETABLE_ID"))) << t->dump();
    EXPECT_FALSE(t->contains(english(root, "SUBAGENT_KEYWORD1_ID"))) << t->dump();
    t->send(keys::Tab);
    for (int i = 0; i < 4; ++i)
        t->send(keys::Enter);
    // Three IDs listed: the fourth Add finds nothing to move.
    dismiss(*t, english(root, "WARN_INVALID_ID"));
    EXPECT_FALSE(t->contains("VantrelReport")) << t->dump();
    sendTimes(*t, 3);
    ASSERT_TRUE(waitFocus(*t, english(root, "BUTTON_OK_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(english(root, "SETALL_ALARM_ID").substr(0, 40))) << t->dump();
    t->send(keys::Enter);
    montest::WaitSettingsClosed(*t, root, kItemScreen);
    const Ids all{"SNMP", "TCP_IP In-Band", "TCP_IP Out-of-Band"};
    EXPECT_EQ(Bindings(root, kAlpha1), all);
    EXPECT_EQ(Bindings(root, kAlpha2),
              (Ids{"SNMP", "TCP_IP In-Band", "TCP_IP Out-of-Band", "VantrelReport"}))
        << "the remote report service's own binding is left alone";
    EXPECT_EQ(Bindings(root, "SyslogMonitor\\beta\\C0000001"), Ids{});
    montest::CloseListAndMenu(*t, root, "MAIN_SYSLOG_ID");

    t = montest::OpenSyslogList(root, {"-A"});
    sendTimes(*t, 7);
    montest::OpenSettings(*t, root, kItemScreen);
    EXPECT_TRUE(t->contains(english(root, "ADMAGENT_LEVEL_LABEL_ID"))) << t->dump();
    EXPECT_TRUE(t->contains(english(root, "AGENT_DEALMETHOD_ID"))) << t->dump();
    sendTimes(*t, 7);
    t->send(keys::Down);
    ASSERT_TRUE(t->waitForText(english(root, "ADMAGENT_ERRKIND_HW_ID"))) << t->dump();
    t->send(keys::Tab);
    t->send(keys::Down);
    t->send(keys::Down);
    sendTimes(*t, 5);
    PressOkAndClose(*t, root);
    EXPECT_EQ(Dword(root, kAlpha1, "ErrKind"), 1);
    EXPECT_EQ(Dword(root, kAlpha1, "Level"), 2);
    EXPECT_EQ(Dword(root, kAlpha1, "TimeTable"), 0xFFFFFF);
    EXPECT_EQ(Bindings(root, kAlpha1), all) << "the report flags written back as they were";
    montest::CloseListAndMenu(*t, root, "MAIN_SYSLOG_ID");
}
