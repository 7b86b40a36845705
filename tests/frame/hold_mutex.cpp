// Test helper: holds a named mutex of the product root in $ZolDir on behalf of "another process"
// (the event-log monitor) until it reads a line or end of file on standard input.
#include <zolwin.h>

#include <cstdio>

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: hold_mutex NAME\n");
        return 2;
    }
    // Opens the mutex when it exists already, as CreateMutex does for a taken name.
    HANDLE mutex = CreateMutex(nullptr, FALSE, argv[1]);
    if (mutex == nullptr) {
        std::fprintf(stderr, "hold_mutex: CreateMutex(%s) failed: %u\n", argv[1],
                     static_cast<unsigned>(GetLastError()));
        return 1;
    }
    if (WaitForSingleObject(mutex, 10000) != ZOL_WAIT_ACQUIRED) {
        std::fprintf(stderr, "hold_mutex: %s could not be acquired\n", argv[1]);
        CloseHandle(mutex);
        return 1;
    }
    std::printf("held %s\n", argv[1]);
    std::fflush(stdout);

    for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar()) {
    }

    const BOOL released = ReleaseMutex(mutex);
    CloseHandle(mutex);
    std::printf("released %s\n", released ? "ok" : "failed");
    return released ? 0 : 1;
}
