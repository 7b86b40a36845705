// Helpers of the screen tests (see frame_test_util.h).
#include "frame_test_util.h"

#include <sstream>

#include "frame/msgfile.h"
#include "ui/encoding.h"

namespace frametest {

std::string messageText(const zoltest::ProductRoot& root, const std::string& file, const char* id) {
    std::string text = zoltest::readFile(root.path() / "data" / file);
    text.append(kRcFileSpare, '\0');
    if (CPFindDestStr(text.c_str(), id) != 0 || deststr[0] == '\0') {
        ADD_FAILURE() << id << " is not defined in " << file;
        return id;
    }
    return file[0] == 'J' ? zolui::eucToUtf8(deststr) : std::string(deststr);
}

std::map<std::string, std::optional<std::string>> runEnv(const zoltest::ProductRoot& root,
                                                         bool japanese) {
    const auto base = root.env();
    std::map<std::string, std::optional<std::string>> env(base.begin(), base.end());
    env["LANG"] = japanese ? "ja_JP.UTF-8" : "C.UTF-8";
    env["LC_ALL"] = env["LC_MESSAGES"] = std::nullopt;
    return env;
}

std::unique_ptr<zoltest::Terminal> start(const zoltest::ProductRoot& root,
                                         const std::vector<std::string>& args, bool japanese) {
    std::vector<std::string> argv{root.bin("ZOLamsadm").string()};
    argv.insert(argv.end(), args.begin(), args.end());
    zoltest::TerminalOptions opts;
    opts.env = runEnv(root, japanese);
    return std::make_unique<zoltest::Terminal>(argv, opts);
}

std::unique_ptr<zoltest::Terminal> startMenu(const zoltest::ProductRoot& root,
                                             const std::vector<std::string>& args) {
    auto t = start(root, args);
    EXPECT_TRUE(t->waitForText(english(root, "MAIN_BASESET_ID"))) << t->dump();
    return t;
}

void closeMenu(zoltest::Terminal& t) {
    t.send(zoltest::keys::CtrlO);
    EXPECT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.exitStatus(), 1) << t.dump();
}

std::string frameTitle(const zoltest::ProductRoot& root, const char* id) {
    return "┤ " + english(root, id) + " ├";
}

bool waitFocus(zoltest::Terminal& t, const std::string& text) {
    return t.waitFor([&](const zoltest::Terminal& s) {
        return s.reverseText().find(text) != std::string::npos;
    });
}

void sendTimes(zoltest::Terminal& t, int n, std::string_view key) {
    for (int i = 0; i < n; ++i)
        t.send(key);
}

void retype(zoltest::Terminal& t, const std::string& text, int erase) {
    t.send(zoltest::keys::End);
    t.send(std::string(static_cast<std::size_t>(erase), '\x7f'));
    t.type(text);
}

void dismiss(zoltest::Terminal& t, const std::string& text) {
    ASSERT_TRUE(t.waitForText(text)) << t.dump();
    t.send(zoltest::keys::Enter);
    ASSERT_TRUE(t.waitForNoText(text)) << t.dump();
}

void closeWindow(zoltest::Terminal& t, const zoltest::ProductRoot& root, const char* titleId) {
    const std::string title = frameTitle(root, titleId);
    ASSERT_TRUE(t.waitForText(title)) << t.dump();
    t.send(zoltest::keys::CtrlO);
    ASSERT_TRUE(t.waitForNoText(title)) << t.dump();
}

std::vector<TraceEntry> readTrace(const zoltest::ProductRoot& root) {
    // "<date> <time> [pid] L<level> <file>:<function>:<line> <text>"
    std::vector<TraceEntry> entries;
    std::istringstream in(zoltest::readFile(root.traceFile("ZOLamsadm")));
    for (std::string s; std::getline(in, s);) {
        const auto l = s.find("] L");
        const auto w = l == std::string::npos ? l : s.find(' ', l + 3);
        const auto t = w == std::string::npos ? w : s.find(' ', w + 1);
        if (t == std::string::npos)
            continue;
        const std::string where = s.substr(w + 1, t - w - 1);
        const auto c1 = where.find(':'), c2 = where.rfind(':');
        entries.push_back({std::stoi(s.substr(l + 3)),
                           c1 < c2 ? where.substr(c1 + 1, c2 - c1 - 1) : "", s.substr(t + 1)});
    }
    return entries;
}

int traceCount(const zoltest::ProductRoot& root, int level, const std::string& text,
               const std::string& function) {
    int n = 0;
    for (const TraceEntry& e : readTrace(root))
        n += e.level == level && e.text == text && (function.empty() || e.function == function);
    return n;
}

std::string traceDump(const zoltest::ProductRoot& root) {
    return "trace:\n" + zoltest::readFile(root.traceFile("ZOLamsadm"));
}

void zolreg(const zoltest::ProductRoot& root, const std::vector<std::string>& args) {
    std::vector<std::string> argv{root.bin("zolreg").string()};
    argv.insert(argv.end(), args.begin(), args.end());
    // In the C locale zolreg stores the bytes given, whatever the locale the tests run under.
    const zoltest::RunResult r = zoltest::run(argv, root.env({{"LC_ALL", "C"}}));
    ASSERT_EQ(r.status, 0) << "zolreg failed: " << r.err;
}

}  // namespace frametest
