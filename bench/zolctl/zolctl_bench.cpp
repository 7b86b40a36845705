// How long zolctl's check and route take over the scale store (100 destination IDs, 2,000 agent
// events, 1,000 syslog items): the staged program run whole, from start to exit, as a script runs
// it. Each command runs `runs` times; medians, minima and maxima in milliseconds are printed.
// Usage: zolctl_bench [runs] (default 20); it makes and removes its own product root.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "product_root.h"
#include "scale_store.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Command {
    const char* name;
    std::vector<std::string> args;
    int expectedStatus;
};

void Measure(const zoltest::ProductRoot& root, const Command& command, int runs) {
    std::vector<std::string> argv = command.args;
    argv.insert(argv.begin(), root.bin("zolctl").string());
    std::vector<double> ms;
    for (int i = 0; i < runs; ++i) {
        const auto started = Clock::now();
        const zoltest::RunResult r = zoltest::run(argv, root.env());
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - started).count());
        if (r.status != command.expectedStatus) {
            std::fprintf(stderr, "%s: status %d\n%s%s", command.name, r.status, r.out.c_str(),
                         r.err.c_str());
            std::exit(1);
        }
    }
    std::sort(ms.begin(), ms.end());
    std::printf("%-28s median %7.1f ms  min %7.1f  max %7.1f  (%d runs)\n", command.name,
                ms[ms.size() / 2], ms.front(), ms.back(), runs);
}

}  // namespace

int main(int argc, char** argv) {
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    zoltest::ProductRoot root;
    zolbench::FillScaleStore(root);
    // Dest000 is bound to event 0 of AgentSource000 and to syslog items whose keyword is
    // "I/O error".
    const Command commands[] = {
        {"check", {"check"}, 0},
        {"check --json", {"check", "--json"}, 0},
        {"route (event)", {"route", "AgentSource000", "40000000"}, 0},
        {"route --syslog (matching)",
         {"route", "--syslog", "syslog-source-00", "disk: I/O error at sector 2000"},
         0},
        {"route --syslog --verbose",
         {"route", "--syslog", "syslog-source-49", "--verbose", "fine"},
         1},
    };
    for (const Command& c : commands)
        Measure(root, c, runs);
    return 0;
}
