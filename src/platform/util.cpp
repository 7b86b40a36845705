// The agent's small utilities: the manager's readiness, EUC-JP conversion, IPv4 text, the
// stored-password encoding, and the newt/S-Lang calls (newt is linked directly: nothing to do).
#include <arpa/inet.h>
#include <iconv.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "regpaths.h"
#include "zolwin.h"

namespace {

// One conversion descriptor per call: iconv keeps shift state in it, and conversions are rare.
class Iconv {
  public:
    Iconv(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
    ~Iconv() {
        if (ok())
            iconv_close(cd_);
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }
    iconv_t get() const { return cd_; }

  private:
    iconv_t cd_;
};

// The password encoding rotates every non-zero byte within 1..255 by an amount that depends on
// its position. The amount is never 0 (mod 255), so each byte changes, and zero bytes are left
// alone, so an encoded string keeps its length and its terminator.
constexpr std::string_view kRasKey = "Tavik/ZolAlertMan:RAS";

unsigned rasShift(int position) {
    const auto p = static_cast<unsigned>(position);
    return (static_cast<unsigned char>(kRasKey[p % kRasKey.size()]) + p * 7u) % 254u + 1u;
}

}  // namespace

extern "C" {

BOOL IsZOLntserverReady(void) {
    // The manager is usable when its settings are: the store opens, passes a quick check and
    // holds the alert manager's key.
    if (ZolRegCheckStore(0) != ERROR_SUCCESS)
        return FALSE;
    HKEY key = nullptr;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, ZOL_KEY_ALERTMAN, 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return FALSE;
    }
    RegCloseKey(key);
    return TRUE;
}

int CodeConvertFromEUC(LPCSTR lpSource, LPSTR lpTarget, int nTargetSize) {
    if (lpTarget == nullptr || nTargetSize <= 0)
        return -1;
    lpTarget[0] = '\0';
    if (lpSource == nullptr)
        return -1;
    Iconv conv("UTF-8", "EUC-JP");
    if (!conv.ok())
        return -1;
    char* in = const_cast<char*>(lpSource);
    size_t inLeft = std::strlen(lpSource);
    char* out = lpTarget;
    size_t outLeft = static_cast<size_t>(nTargetSize) - 1;  // room for the terminator
    size_t done = iconv(conv.get(), &in, &inLeft, &out, &outLeft);
    if (done != static_cast<size_t>(-1))
        done = iconv(conv.get(), nullptr, nullptr, &out, &outLeft);
    if (done == static_cast<size_t>(-1)) {
        // Invalid or cut-off input, or a target too small: no half-converted text.
        lpTarget[0] = '\0';
        return -1;
    }
    *out = '\0';
    return 0;
}

char* zol_inet_ntoa_r(struct in_addr in, char* buf, int size) {
    if (buf == nullptr || size <= 0)
        return nullptr;
    return inet_ntop(AF_INET, &in, buf, static_cast<socklen_t>(size)) != nullptr ? buf : nullptr;
}

void Ras_Encode(char* buffer, int length) {
    if (buffer == nullptr)
        return;
    for (int i = 0; i < length; ++i) {
        const auto b = static_cast<unsigned char>(buffer[i]);
        if (b == 0)
            continue;
        buffer[i] = static_cast<char>((b - 1u + rasShift(i)) % 255u + 1u);
    }
}

void Ras_Decode(char* buffer, int length) {
    if (buffer == nullptr)
        return;
    for (int i = 0; i < length; ++i) {
        const auto b = static_cast<unsigned char>(buffer[i]);
        if (b == 0)
            continue;
        buffer[i] = static_cast<char>((b - 1u + 255u - rasShift(i)) % 255u + 1u);
    }
}

int initnewtlib(void) {
    return 0;
}
void freenewtlib(void) {}
int initslanglib(void) {
    return 0;
}
void freeslanglib(void) {}

}  // extern "C"
