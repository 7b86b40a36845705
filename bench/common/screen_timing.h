// What the screen benchmarks share: the message texts they wait for, and timing a screen from
// the keys that open it to the moment all of its texts are drawn.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frame/msgfile.h"
#include "product_root.h"
#include "terminal.h"

namespace zolbench {

// A message of the product root's English message file.
inline std::string messageText(const zoltest::ProductRoot& root, const char* id) {
    std::string text = zoltest::readFile(root.path() / "data" / "E_report.rc");
    text.append(kRcFileSpare, '\0');
    CPFindDestStr(text.c_str(), id);
    return deststr;
}

// A window title as newt draws it.
inline std::string title(const zoltest::ProductRoot& root, const char* id) {
    return "┤ " + messageText(root, id) + " ├";
}

// Options that run a program of the root in English on a UTF-8 terminal.
inline zoltest::TerminalOptions englishTerminal(const zoltest::ProductRoot& root) {
    zoltest::TerminalOptions opts;
    for (const auto& [name, value] : root.env())
        opts.env[name] = value;
    opts.env["LANG"] = "C.UTF-8";
    opts.env["LC_ALL"] = std::nullopt;
    return opts;
}

// ZOLamsadm started on the root and showing its main menu; null, with the screen printed, when
// the menu does not come.
inline std::unique_ptr<zoltest::Terminal> startAtMainMenu(const zoltest::ProductRoot& root) {
    auto t = std::make_unique<zoltest::Terminal>(
        std::vector<std::string>{root.bin("ZOLamsadm").string()}, englishTerminal(root));
    if (!t->waitForText(messageText(root, "MAIN_BASESET_ID"), std::chrono::seconds(20))) {
        std::fprintf(stderr, "no main menu:\n%s\n", t->dump().c_str());
        return nullptr;
    }
    return t;
}

// Sends keys, then waits until every text is on the screen: milliseconds, or -1.
inline double timeUntil(zoltest::Terminal& t, std::string_view keys,
                        const std::vector<std::string>& all) {
    using namespace std::chrono_literals;
    const auto started = std::chrono::steady_clock::now();
    t.send(keys);
    const bool drawn = t.waitFor(
        [&](const zoltest::Terminal& s) {
            return std::all_of(all.begin(), all.end(),
                               [&](const std::string& text) { return s.contains(text); });
        },
        10s);
    if (!drawn) {
        std::fprintf(stderr, "not drawn:\n%s\n", t.dump().c_str());
        return -1;
    }
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started)
        .count();
}

// Opens a screen `rounds` times with Enter and closes it with Ctrl-O, waiting for `gone` to leave
// the screen. False when a screen was not drawn.
inline bool measure(zoltest::Terminal& t, int rounds, const std::vector<std::string>& drawn,
                    const std::string& gone, std::vector<double>* times) {
    for (int i = 0; i < rounds; ++i) {
        const double ms = timeUntil(t, "\r", drawn);
        if (ms < 0)
            return false;
        times->push_back(ms);
        t.send("\x0f");
        if (!t.waitForNoText(gone))
            return false;
    }
    return true;
}

// Prints median, minimum and maximum against the 30 ms target; `fixed` is a known pause inside
// the figures (newt's animation of a pressed full button) shown taken out.
inline void report(const char* what, std::vector<double> v, double fixed = 0) {
    if (v.empty())
        return;
    std::sort(v.begin(), v.end());
    const std::size_t n = v.size();
    const double median = n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
    std::printf("%s: median %.1f ms (min %.1f, max %.1f, %zu rounds)", what, median, v.front(),
                v.back(), n);
    if (fixed > 0)
        std::printf("; without the %.0f ms button animation %.1f ms", fixed, median - fixed);
    std::printf("; target 30 ms\n");
}

}  // namespace zolbench
