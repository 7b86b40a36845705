// The other process in the platform tests: holds and waits on named objects and writes trace
// lines, printing one line per step on standard output so that the test can follow it.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "zolwin.h"

namespace {

void say(const char* format, unsigned long value) {
    std::printf(format, value);
    std::fflush(stdout);
}

// Blocks until the test closes our standard input.
void waitForStdinClosed() {
    char c;
    while (read(0, &c, 1) > 0) {
    }
}

int usage() {
    std::fprintf(stderr,
                 "usage: platform_helper mutex-hold NAME | mutex-wait NAME MS | "
                 "event-wait NAME MS | event-set NAME | trace PROGRAM COUNT LENGTH | "
                 "trace-noinit\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2)
        return usage();
    const std::string cmd = argv[1];
    if (cmd == "mutex-hold" && argc == 3) {
        HANDLE h = CreateMutex(nullptr, TRUE, argv[2]);
        if (h == nullptr)
            return 3;
        say("held %lu\n", GetLastError());
        waitForStdinClosed();
        say("release %lu\n", static_cast<unsigned long>(ReleaseMutex(h)));
        CloseHandle(h);
        return 0;
    }
    if ((cmd == "mutex-wait" || cmd == "event-wait") && argc == 4) {
        const bool mutex = cmd == "mutex-wait";
        HANDLE h = mutex ? OpenMutex(SYNCHRONIZE, FALSE, argv[2])
                         : OpenEvent(EVENT_ALL_ACCESS, FALSE, argv[2]);
        if (h == nullptr) {
            say("open-failed %lu\n", GetLastError());
            return 3;
        }
        say("waiting %lu\n", 0);
        DWORD r = WaitForSingleObject(h, static_cast<DWORD>(std::strtoul(argv[3], nullptr, 10)));
        say("wait %lu\n", r);
        if (mutex && r == ZOL_WAIT_ACQUIRED)
            ReleaseMutex(h);
        CloseHandle(h);
        return 0;
    }
    if (cmd == "event-set" && argc == 3) {
        HANDLE h = OpenEvent(EVENT_ALL_ACCESS, FALSE, argv[2]);
        if (h == nullptr) {
            say("open-failed %lu\n", GetLastError());
            return 3;
        }
        say("set %lu\n", static_cast<unsigned long>(SetEvent(h)));
        CloseHandle(h);
        return 0;
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
    return usage();
}
