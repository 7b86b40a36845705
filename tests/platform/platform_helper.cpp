// The other process in the platform tests: holds a named mutex, signals a named event or
// writes trace lines, and says what happened on standard output.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "zolwin.h"

int main(int argc, char** argv) {
    const std::string cmd = argc > 1 ? argv[1] : "";
    if (cmd == "mutex-hold" && argc == 3) {
        // Holds the mutex until the test closes our standard input (or kills us).
        HANDLE h = CreateMutex(nullptr, TRUE, argv[2]);
        std::printf("held %lu\n", static_cast<unsigned long>(h ? GetLastError() : 999));
        std::fflush(stdout);
        for (char c; read(0, &c, 1) > 0;) {
        }
        std::printf("release %d\n", ReleaseMutex(h));
        return CloseHandle(h) ? 0 : 1;
    }
    if (cmd == "event-set" && argc == 3) {
        HANDLE h = OpenEvent(EVENT_ALL_ACCESS, FALSE, argv[2]);
        if (h == nullptr) {
            std::printf("open-failed %lu\n", static_cast<unsigned long>(GetLastError()));
            return 3;
        }
        std::printf("set %d\n", SetEvent(h));
        return CloseHandle(h) ? 0 : 1;
    }
    if (cmd == "trace" && argc == 5) {
        const int count = std::atoi(argv[3]);
        const std::string text(static_cast<size_t>(std::atoi(argv[4])), 'x');
        TraceLogInit(0, argv[2], 0, TRACE_LEVEL_INFO, 0);
        for (int i = 0; i < count; ++i) {
            TraceLog(TRACE_LEVEL_ERROR, __FILE__, "worker", i, "%d:%s:%d", getpid(), text.c_str(),
                     i);
        }
        return 0;
    }
    if (cmd == "trace-noinit" && argc == 2) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "before TraceLogInit");
        return 0;
    }
    std::fprintf(stderr,
                 "usage: platform_helper mutex-hold NAME | event-set NAME | "
                 "trace PROGRAM COUNT LENGTH | trace-noinit\n");
    return 2;
}
