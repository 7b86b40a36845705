// Test helper for the crash tests: rewrites 12-value records in transactions, forever, and
// reports each commit on standard output, until it is killed.
// Usage: registry_store_writer <records> <first generation>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "record_format.h"
#include "zolwin.h"

namespace {

// A short write only loses a report, which makes the check weaker, never wrong.
void report(const std::string& line) {
    ssize_t ignored = write(1, line.data(), line.size());
    (void)ignored;
}

void need(LONG r, const char* what) {
    if (r != ERROR_SUCCESS) {
        std::fprintf(stderr, "store_writer: %s failed with %ld\n", what, static_cast<long>(r));
        std::exit(2);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const int records = argc == 3 ? std::atoi(argv[1]) : 0;
    if (records <= 0) {
        std::fprintf(stderr, "usage: %s <records> <first generation>\n", argv[0]);
        return 2;
    }
    uint64_t gen = std::strtoull(argv[2], nullptr, 10);
    HKEY base = nullptr, key = nullptr;
    need(RegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\CrashTest", &base), "RegCreateKey");
    report("ready\n");
    for (;;) {
        const int rec = static_cast<int>(++gen % static_cast<uint64_t>(records));
        const std::string name = "Rec" + std::to_string(rec);
        need(ZolRegBeginTransaction(), "ZolRegBeginTransaction");
        // Now and then the record is dropped and made anew inside the same transaction.
        if (gen % 5 == 0)
            need(RegDeleteKey(base, name.c_str()), "RegDeleteKey");
        need(RegCreateKey(base, name.c_str(), &key), "RegCreateKey");
        for (int i = 0; i < regtest::kRecordValues; ++i) {
            const std::string v = regtest::recordValue(gen, i);
            need(RegSetValueEx(key, regtest::recordValueName(i).c_str(), 0, REG_BINARY,
                               reinterpret_cast<const BYTE*>(v.data()),
                               static_cast<DWORD>(v.size())),
                 "RegSetValueEx");
        }
        RegCloseKey(key);
        need(ZolRegCommitTransaction(), "ZolRegCommitTransaction");
        report(std::to_string(rec) + " " + std::to_string(gen) + "\n");
    }
}
