// Measures how long ZOLamsadm takes from fork to its drawn main menu, and whiptail drawing a
// five-row menu in the same pseudo-terminal set-up, alternating runs in one process, and prints
// the medians and their ratio. Usage: startup_bench [runs] [baseline-root] (default 30 runs).
// With baseline-root, a product root of another build (cmake --install ... --prefix DIR) runs in
// the same rotation, on a copy with a store of its own, so that two builds compare side by side.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "../common/screen_timing.h"
#include "frame/msgfile.h"
#include "product_root.h"
#include "terminal.h"

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

using zolbench::messageText;

// Runs argv until `lastText` (the menu's last row and its button) is on the screen, then sends
// `quit` and reaps the program. Returns the milliseconds from fork to the drawn menu, or -1.
double timeToMenu(const std::vector<std::string>& argv, const zoltest::TerminalOptions& opts,
                  const std::vector<std::string>& lastText, std::string_view quit) {
    const auto started = Clock::now();
    zoltest::Terminal t(argv, opts);
    const bool drawn = t.waitFor(
        [&](const zoltest::Terminal& term) {
            return std::all_of(lastText.begin(), lastText.end(),
                               [&](const std::string& s) { return term.contains(s); });
        },
        20s);
    const double ms = std::chrono::duration<double, std::milli>(Clock::now() - started).count();
    t.send(quit);
    t.waitForExit(10s);
    if (!drawn)
        std::fprintf(stderr, "menu not drawn:\n%s\n", t.dump().c_str());
    return drawn ? ms : -1;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    const std::size_t n = v.size();
    return n == 0 ? 0 : n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

}  // namespace

int main(int argc, char* argv[]) {
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
    zoltest::ProductRoot root;

    const zoltest::TerminalOptions opts = zolbench::englishTerminal(root);

    const std::vector<std::string> program{root.bin("ZOLamsadm").string()};
    const std::vector<std::string> programLast{messageText(root, "MAIN_VANTREL_ID"),
                                               messageText(root, "BUTTON_CLOSE_ID")};
    const std::vector<std::string> whiptail{"/usr/bin/whiptail",
                                            "--title",
                                            "Main menu",
                                            "--menu",
                                            "Choose a settings area",
                                            "15",
                                            "50",
                                            "5",
                                            "1",
                                            "Base settings",
                                            "2",
                                            "Destinations",
                                            "3",
                                            "Agent events",
                                            "4",
                                            "Syslog monitoring",
                                            "5",
                                            "Remote report service"};
    const std::vector<std::string> whiptailLast{"Remote report service", "<Cancel>"};

    // The baseline: a copy of the other root, its store made by its own zolreg.
    std::optional<std::filesystem::path> baseline;
    zoltest::TerminalOptions baselineOpts = opts;
    if (argc > 2) {
        baseline = root.path() / "baseline";
        std::filesystem::copy(argv[2], *baseline, std::filesystem::copy_options::recursive);
        std::filesystem::remove_all(*baseline / "registry");
        std::filesystem::create_directories(*baseline / "log");
        baselineOpts.env["ZolDir"] = baseline->string();
        const auto made =
            zoltest::run({(*baseline / "bin" / "zolreg").string(), "init"},
                         std::map<std::string, std::string>{{"ZolDir", baseline->string()}});
        if (made.status != 0) {
            std::fprintf(stderr, "baseline store not made: %s\n", made.err.c_str());
            return 1;
        }
    }

    std::vector<double> ours, theirs, base;
    for (int i = 0; i < runs; ++i) {
        const double a = timeToMenu(program, opts, programLast, "\x0f");
        const double b = timeToMenu(whiptail, opts, whiptailLast, "\x1b");
        if (a < 0 || b < 0)
            return 1;
        ours.push_back(a);
        theirs.push_back(b);
        if (baseline) {
            const double c = timeToMenu({(*baseline / "bin" / "ZOLamsadm").string()}, baselineOpts,
                                        programLast, "\x0f");
            if (c < 0)
                return 1;
            base.push_back(c);
        }
    }
    const double m1 = median(ours), m2 = median(theirs);
    std::printf("runs: %d each, alternating\n", runs);
    std::printf("ZOLamsadm to main menu: median %.1f ms (min %.1f, max %.1f)\n", m1,
                *std::min_element(ours.begin(), ours.end()),
                *std::max_element(ours.begin(), ours.end()));
    std::printf("whiptail --menu (5 rows): median %.1f ms (min %.1f, max %.1f)\n", m2,
                *std::min_element(theirs.begin(), theirs.end()),
                *std::max_element(theirs.begin(), theirs.end()));
    std::printf("ratio: %.2f (target at most 1.50)\n", m2 > 0 ? m1 / m2 : 0.0);
    if (baseline) {
        const double m3 = median(base);
        std::printf("baseline %s: median %.1f ms (min %.1f, max %.1f), ratio %.2f\n", argv[2], m3,
                    *std::min_element(base.begin(), base.end()),
                    *std::max_element(base.begin(), base.end()), m2 > 0 ? m3 / m2 : 0.0);
    }
    return 0;
}
