// Helpers of the event-monitoring screen tests (see monitor_screen_util.h).
#include "monitor_screen_util.h"

#include <zolwin.h>

#include "store_reader.h"

namespace montest {

namespace keys = zoltest::keys;
using frametest::english;
using frametest::frameTitle;

void ReplaceCatalogues(const zoltest::ProductRoot& root, const std::string& regLines) {
    const std::string base = "HKEY_LOCAL_MACHINE\\" + kAlertMan;
    std::string text =
        "REGEDIT4\n\n[-" + base + "\\AgentEvent]\n\n[-" + base + "\\SyslogMonitor]\n";
    // Each "[relative\key]" header gets the full path.
    for (std::size_t at = 0; at < regLines.size();) {
        std::size_t end = regLines.find('\n', at);
        if (end == std::string::npos)
            end = regLines.size();
        const std::string line = regLines.substr(at, end - at);
        text += line.starts_with("[") ? "\n[" + base + "\\" + line.substr(1) : line;
        text += "\n";
        at = end + 1;
    }
    const auto file = root.path() / "catalogue.reg";
    zoltest::writeFile(file, text);
    frametest::zolreg(root, {"import", file.string()});
}

namespace {

std::unique_ptr<zoltest::Terminal> OpenRow(const zoltest::ProductRoot& root, int row,
                                           const char* titleId,
                                           const std::vector<std::string>& args,
                                           const std::vector<std::string>& launcher) {
    std::vector<std::string> argv = launcher;
    argv.push_back(root.bin("ZOLamsadm").string());
    argv.insert(argv.end(), args.begin(), args.end());
    zoltest::TerminalOptions opts;
    opts.env = frametest::runEnv(root);
    auto t = std::make_unique<zoltest::Terminal>(argv, opts);
    EXPECT_TRUE(t->waitForText(english(root, "MAIN_BASESET_ID"))) << t->dump();
    frametest::sendTimes(*t, row, keys::Down);
    t->send(keys::Enter);
    EXPECT_TRUE(t->waitForText(frameTitle(root, titleId)))
        << t->dump() << frametest::traceDump(root);
    return t;
}

}  // namespace

std::unique_ptr<zoltest::Terminal> OpenAgentList(const zoltest::ProductRoot& root,
                                                 const std::vector<std::string>& args) {
    return OpenRow(root, 2, "TITTLE_AGENT_ID", args, {});
}

std::unique_ptr<zoltest::Terminal> OpenSyslogList(const zoltest::ProductRoot& root,
                                                  const std::vector<std::string>& args,
                                                  const std::vector<std::string>& launcher) {
    return OpenRow(root, 3, "MAIN_SYSLOG_ID", args, launcher);
}

void OpenSettings(zoltest::Terminal& t, const zoltest::ProductRoot& root, const char* titleId) {
    ASSERT_TRUE(frametest::waitFocus(t, english(root, "AGENT_BUTTON_SET_ID"))) << t.dump();
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForText(frameTitle(root, titleId))) << t.dump();
}

void WaitSettingsClosed(zoltest::Terminal& t, const zoltest::ProductRoot& root,
                        const char* titleId) {
    ASSERT_TRUE(t.waitForNoText(frameTitle(root, titleId))) << t.dump();
    ASSERT_TRUE(frametest::waitFocus(t, english(root, "AGENT_BUTTON_SET_ID"))) << t.dump();
}

void CloseListAndMenu(zoltest::Terminal& t, const zoltest::ProductRoot& root,
                      const char* listTitleId) {
    frametest::closeWindow(t, root, listTitleId);
    frametest::closeMenu(t);
}

std::set<std::string> Bindings(const zoltest::ProductRoot& root, const std::string& key) {
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    std::set<std::string> ids;
    HKEY dest = nullptr;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, (kAlertMan + "\\" + key + "\\Dest").c_str(), 0, KEY_READ,
                     &dest) == ERROR_SUCCESS) {
        for (DWORD i = 0;; ++i) {
            char name[4096];
            DWORD length = sizeof name, type = 0, data = 0, size = sizeof data;
            if (RegEnumValue(dest, i, name, &length, nullptr, &type, reinterpret_cast<BYTE*>(&data),
                             &size) != ERROR_SUCCESS)
                break;
            if (type == REG_DWORD && data == 1)
                ids.insert(name);
        }
        RegCloseKey(dest);
    }
    ZolRegCloseStore();
    return ids;
}

long Dword(const zoltest::ProductRoot& root, const std::string& key, const char* value) {
    const auto data = zoltest::StoreReader(root).dword(kAlertMan + "\\" + key, value);
    return data ? static_cast<long>(*data) : -1;
}

std::string Text(const zoltest::ProductRoot& root, const std::string& key, const char* value) {
    return zoltest::StoreReader(root).text(kAlertMan + "\\" + key, value).value_or("(missing)");
}

bool KeyExists(const zoltest::ProductRoot& root, const std::string& key) {
    return zoltest::StoreReader(root).subkeys(kAlertMan + "\\" + key).has_value();
}

}  // namespace montest
