// How long the event-monitoring screens take to open at scale, as an administrator sees it: the
// real ZOLamsadm in a pseudo-terminal over a store with 100 destination IDs, 2,000 agent events in
// 100 sources and 1,000 syslog items in 50 sources (some bound to destinations), timed from the
// key that opens a screen to the screen drawn. Each screen is opened and closed (Ctrl-O) `runs`
// times; medians, minima and maxima are printed. The list screens' figures include what the main
// menu does before it opens them (the destination table and the ID list). The per-item screens
// are opened with the list's Set button, and newt animates every full-size button pressed from the
// keyboard (two pauses of 150 ms) before its form returns: their figures are also given from the
// screen function's entry (its first trace line) to the screen drawn.
// Usage: monitor_screens_bench [runs] (default 20); it makes and removes its own product root.
#include <zolwin.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <iomanip>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "../common/scale_store.h"
#include "../common/screen_timing.h"
#include "frame/msgfile.h"
#include "product_root.h"
#include "records.h"
#include "regpaths.h"
#include "terminal.h"

namespace {

using zolbench::messageText;
using zolbench::title;

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
namespace keys = zoltest::keys;

// Sends `key` and returns the milliseconds until every text of `drawn` is on the screen, which
// happened at *drawnAt (wall clock) when that is given.
double timeToScreen(zoltest::Terminal& t, std::string_view key,
                    const std::vector<std::string>& drawn,
                    std::chrono::system_clock::time_point* drawnAt = nullptr) {
    const auto started = Clock::now();
    t.send(key);
    const bool ok = t.waitFor(
        [&](const zoltest::Terminal& s) {
            return std::all_of(drawn.begin(), drawn.end(),
                               [&](const std::string& text) { return s.contains(text); });
        },
        20s);
    const double ms = std::chrono::duration<double, std::milli>(Clock::now() - started).count();
    if (drawnAt != nullptr)
        *drawnAt = std::chrono::system_clock::now();
    if (!ok) {
        std::fprintf(stderr, "screen not drawn:\n%s\n", t.dump().c_str());
        std::exit(1);
    }
    return ms;
}

// When the last trace line of `function` that begins with "> " was written (the trace's local
// wall-clock time, to the millisecond).
std::chrono::system_clock::time_point lastEntry(const zoltest::ProductRoot& root,
                                                const std::string& function) {
    std::istringstream in(zoltest::readFile(root.traceFile("ZOLamsadm")));
    std::string stamp;
    const std::string where = ":" + function + ":";
    for (std::string line; std::getline(in, line);) {
        const std::size_t at = line.find(where);
        if (at != std::string::npos && line.find(" > ", at) != std::string::npos)
            stamp = line.substr(0, 23);  // "YYYY-MM-DD HH:MM:SS.mmm"
    }
    std::tm local{};
    std::istringstream parse(stamp);
    parse >> std::get_time(&local, "%Y-%m-%d %H:%M:%S");
    local.tm_isdst = -1;
    const long ms = stamp.size() == 23 ? std::stol(stamp.substr(20)) : 0;
    return std::chrono::system_clock::from_time_t(std::mktime(&local)) +
           std::chrono::milliseconds(ms);
}

void closeWindow(zoltest::Terminal& t, const std::string& windowTitle) {
    t.send(keys::CtrlO);
    if (!t.waitForNoText(windowTitle, 20s)) {
        std::fprintf(stderr, "not closed:\n%s\n", t.dump().c_str());
        std::exit(1);
    }
}

void waitFocus(zoltest::Terminal& t, const std::string& text) {
    t.waitFor([&](const zoltest::Terminal& s) {
        return s.reverseText().find(text) != std::string::npos;
    });
}

struct Figures {
    const char* screen;
    std::vector<double> ms;
};

void print(const Figures& f) {
    std::vector<double> v = f.ms;
    std::sort(v.begin(), v.end());
    const std::size_t n = v.size();
    const double median = n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
    // The first opening of a run reads a cold store and touches fresh memory: shown apart.
    std::printf("%-36s first %6.1f ms  median %6.1f  min %6.1f  max %6.1f  (%zu runs)\n", f.screen,
                f.ms.front(), median, v.front(), v.back(), n);
}

// Which screens one family measures, and where their figures go.
struct Family {
    int row;                   // of the main menu
    const char* listTitleId;   // the list's window title
    std::string firstSource;   // shown once the list is drawn
    int toSet;                 // Tabs from the list's first component to its Set button
    const char* itemTitleId;   // the per-item screen's window title
    const char* itemFunction;  // the per-item screen's function, as the trace names it
    Figures list, item, itemFromEntry;
};

// Opens the family's list from the main menu, and from it the per-item screen, `runs` times each.
void measureFamily(const zoltest::ProductRoot& root, zoltest::Terminal& t, int runs, Family& f) {
    const int row = f.row, toSet = f.toSet;
    const std::string listTitle = title(root, f.listTitleId);
    const std::string itemTitle = title(root, f.itemTitleId);
    const std::string close = messageText(root, "BUTTON_CLOSE_ID");
    const std::string cancel = messageText(root, "BUTTON_CANCEL_ID");
    t.send(keys::Home);
    for (int i = 0; i < row; ++i)
        t.send(keys::Down);
    for (int run = 0; run < runs; ++run) {
        f.list.ms.push_back(timeToScreen(t, keys::Enter, {listTitle, f.firstSource, close}));
        for (int i = 0; i < toSet; ++i)
            t.send(keys::Tab);
        waitFocus(t, messageText(root, "AGENT_BUTTON_SET_ID"));
        std::chrono::system_clock::time_point drawnAt;
        f.item.ms.push_back(timeToScreen(t, keys::Enter, {itemTitle, cancel}, &drawnAt));
        f.itemFromEntry.ms.push_back(
            std::chrono::duration<double, std::milli>(drawnAt - lastEntry(root, f.itemFunction))
                .count());
        closeWindow(t, itemTitle);
        closeWindow(t, listTitle);
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    zoltest::ProductRoot root;
    zolbench::FillScaleStore(root);

    const std::unique_ptr<zoltest::Terminal> started = zolbench::startAtMainMenu(root);
    if (!started)
        return 1;
    zoltest::Terminal& t = *started;

    Family agent{2,
                 "TITTLE_AGENT_ID",
                 "AgentSource000",
                 4,
                 "TITTLE_SUBAGENT_SET_ID",
                 "RunEventSetting",
                 {"agent event list (2,000 events)", {}},
                 {"per-event settings, from Set", {}},
                 {"per-event settings, from its entry", {}}};
    Family syslog{3,
                  "MAIN_SYSLOG_ID",
                  "syslog-source-00",
                  7,
                  "TITTLE_SUBSYSLOG_SET_ID",
                  "RunSyslogSetting",
                  {"syslog monitoring list (1,000 items)", {}},
                  {"per-item settings, from Set", {}},
                  {"per-item settings, from its entry", {}}};
    measureFamily(root, t, runs, agent);
    measureFamily(root, t, runs, syslog);
    for (const Family* f : {&agent, &syslog}) {
        print(f->list);
        print(f->item);
        print(f->itemFromEntry);
    }
    t.send(keys::CtrlO);
    t.waitForExit(10s);
    return 0;
}
