// Test helper for the crash tests: rewrites 12-value records in transactions, forever, and
// reports each commit on a file descriptor, until it is killed.
// Usage: registry_store_writer <records> <first generation> <report fd>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "record_format.h"
#include "zolwin.h"

namespace {

[[noreturn]] void fail(const char* what, LONG r) {
    std::fprintf(stderr, "store_writer: %s failed with %ld\n", what, static_cast<long>(r));
    std::exit(2);
}

void report(int fd, const std::string& line) {
    // A short write only loses a report, which makes the check weaker, never wrong.
    ssize_t ignored = write(fd, line.data(), line.size());
    (void)ignored;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s <records> <first generation> <report fd>\n", argv[0]);
        return 2;
    }
    const int records = std::atoi(argv[1]);
    uint64_t gen = std::strtoull(argv[2], nullptr, 10);
    const int fd = std::atoi(argv[3]);
    if (records <= 0)
        return 2;

    HKEY base = nullptr;
    LONG r = RegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\CrashTest", &base);
    if (r != ERROR_SUCCESS)
        fail("RegCreateKey", r);
    report(fd, "ready\n");

    for (;;) {
        ++gen;
        const int rec = static_cast<int>(gen % static_cast<uint64_t>(records));
        const std::string name = "Rec" + std::to_string(rec);
        if ((r = ZolRegBeginTransaction()) != ERROR_SUCCESS)
            fail("ZolRegBeginTransaction", r);
        // Now and then the record is dropped and made anew inside the same transaction.
        if (gen % 5 == 0 && (r = RegDeleteKey(base, name.c_str())) != ERROR_SUCCESS) {
            fail("RegDeleteKey", r);
        }
        HKEY key = nullptr;
        if ((r = RegCreateKey(base, name.c_str(), &key)) != ERROR_SUCCESS)
            fail("RegCreateKey", r);
        for (int i = 0; i < regtest::kRecordValues; ++i) {
            const std::string v = regtest::recordValue(gen, i);
            r = RegSetValueEx(key, regtest::recordValueName(i).c_str(), 0, REG_BINARY,
                              reinterpret_cast<const BYTE*>(v.data()),
                              static_cast<DWORD>(v.size()));
            if (r != ERROR_SUCCESS)
                fail("RegSetValueEx", r);
        }
        RegCloseKey(key);
        if ((r = ZolRegCommitTransaction()) != ERROR_SUCCESS)
            fail("ZolRegCommitTransaction", r);
        report(fd, std::to_string(rec) + " " + std::to_string(gen) + "\n");
    }
}
