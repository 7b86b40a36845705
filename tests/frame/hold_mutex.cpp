// Test helper: holds a named mutex of the product root in $ZolDir on behalf of "another process"
// (the event-log monitor) until it reads a line or end of file on standard input.
#include <zolwin.h>

#include <cstdio>

int main(int argc, char* argv[]) {
    // Opens the mutex when it exists already, as CreateMutex does for a taken name.
    HANDLE mutex = argc == 2 ? CreateMutex(nullptr, FALSE, argv[1]) : nullptr;
    if (mutex == nullptr || WaitForSingleObject(mutex, 10000) != ZOL_WAIT_ACQUIRED) {
        std::fprintf(stderr, "hold_mutex: cannot hold %s\n", argc == 2 ? argv[1] : "(no name)");
        return 1;
    }
    std::printf("held %s\n", argv[1]);
    std::fflush(stdout);
    for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar()) {
    }
    const BOOL released = ReleaseMutex(mutex);
    std::printf("released %s\n", released ? "ok" : "failed");
    return released ? 0 : 1;
}
