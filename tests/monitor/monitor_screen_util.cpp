// Helpers of the event-monitoring screen tests (see monitor_screen_util.h).
#include "monitor_screen_util.h"

#include <zolwin.h>

namespace montest {

namespace keys = zoltest::keys;

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
    EXPECT_TRUE(t->waitForText(frametest::english(root, "MAIN_BASESET_ID"))) << t->dump();
    for (int i = 0; i < row; ++i)
        t->send(keys::Down);
    t->send(keys::Enter);
    EXPECT_TRUE(t->waitForText(Title(root, titleId))) << t->dump() << frametest::traceDump(root);
    return t;
}

// Runs fn with the root's store open in this process, and closes it again.
template <class Fn>
auto WithStore(const zoltest::ProductRoot& root, Fn fn) {
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    auto result = fn();
    ZolRegCloseStore();
    return result;
}

HKEY OpenKey(const std::string& key) {
    HKEY h = nullptr;
    return RegOpenKeyEx(HKEY_LOCAL_MACHINE, (kAlertMan + "\\" + key).c_str(), 0, KEY_READ, &h) ==
                   ERROR_SUCCESS
               ? h
               : nullptr;
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

std::string Title(const zoltest::ProductRoot& root, const char* id) {
    return "┤ " + frametest::english(root, id) + " ├";
}

bool WaitFocus(zoltest::Terminal& t, const std::string& text) {
    return t.waitFor([&](const zoltest::Terminal& s) {
        return s.reverseText().find(text) != std::string::npos;
    });
}

void Dismiss(zoltest::Terminal& t, const std::string& text) {
    ASSERT_TRUE(t.waitForText(text)) << t.dump();
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForNoText(text)) << t.dump();
}

void CloseWithCtrlO(zoltest::Terminal& t, const std::string& title) {
    ASSERT_TRUE(t.waitForText(title)) << t.dump();
    t.send(keys::CtrlO);
    ASSERT_TRUE(t.waitForNoText(title)) << t.dump();
}

void Retype(zoltest::Terminal& t, const std::string& text, int erase) {
    t.send(keys::End);
    t.send(std::string(static_cast<std::size_t>(erase), '\x7f'));
    if (!text.empty())
        t.send(text);
}

std::set<std::string> Bindings(const zoltest::ProductRoot& root, const std::string& key) {
    return WithStore(root, [&] {
        std::set<std::string> ids;
        HKEY dest = OpenKey(key + "\\Dest");
        for (DWORD i = 0; dest != nullptr; ++i) {
            char name[4096];
            DWORD length = sizeof name, type = 0, data = 0, size = sizeof data;
            if (RegEnumValue(dest, i, name, &length, nullptr, &type, reinterpret_cast<BYTE*>(&data),
                             &size) != ERROR_SUCCESS)
                break;
            if (type == REG_DWORD && data == 1)
                ids.insert(name);
        }
        if (dest != nullptr)
            RegCloseKey(dest);
        return ids;
    });
}

long Dword(const zoltest::ProductRoot& root, const std::string& key, const char* value) {
    return WithStore(root, [&] {
        long result = -1;
        if (HKEY h = OpenKey(key)) {
            DWORD data = 0, type = 0, size = sizeof data;
            if (RegQueryValueEx(h, value, nullptr, &type, reinterpret_cast<BYTE*>(&data), &size) ==
                    ERROR_SUCCESS &&
                type == REG_DWORD)
                result = static_cast<long>(data);
            RegCloseKey(h);
        }
        return result;
    });
}

std::string Text(const zoltest::ProductRoot& root, const std::string& key, const char* value) {
    return WithStore(root, [&] {
        std::string result = "(missing)";
        if (HKEY h = OpenKey(key)) {
            char data[1024] = {};
            DWORD type = 0, size = sizeof data - 1;
            if (RegQueryValueEx(h, value, nullptr, &type, reinterpret_cast<BYTE*>(data), &size) ==
                    ERROR_SUCCESS &&
                type == REG_SZ)
                result = data;
            RegCloseKey(h);
        }
        return result;
    });
}

bool KeyExists(const zoltest::ProductRoot& root, const std::string& key) {
    return WithStore(root, [&] {
        HKEY h = OpenKey(key);
        if (h != nullptr)
            RegCloseKey(h);
        return h != nullptr;
    });
}

}  // namespace montest
