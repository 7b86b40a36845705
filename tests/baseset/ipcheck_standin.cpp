// Test library: a report-settings library holding only its IP-address check, so that the address
// checks can be tested apart from the real library. It accepts what inet_pton takes as IPv4.
#include <arpa/inet.h>

extern "C" __attribute__((visibility("default"))) int AMBIMyIPCheck(const char* text) {
    in_addr address{};
    return text != nullptr && inet_pton(AF_INET, text, &address) == 1 ? 1 : 0;
}
