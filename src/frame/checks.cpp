// Checks of what an administrator types, shared by every screen family and free of newt:
// manager addresses and ports, mail addresses, decimal numbers and the shutdown delay.
#include "frame/checks.h"

#include <netdb.h>

#include <array>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "frame/rptset_calls.h"

namespace {

// Lowest and highest port the via-manager method may use (flag 1).
constexpr int32_t kManagerPortMin = 6001;
constexpr int32_t kManagerPortMax = 65535;
// Work buffer of the resolver.
constexpr std::size_t kResolverBufferSize = 8192;
// The mail scans look at this many characters at most.
constexpr std::size_t kMailScanLimit = 512;
// Longest single mail address.
constexpr std::size_t kMailAddrMax = 80;
// Most addresses one list may hold.
constexpr std::size_t kMailListSlots = 100;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Text made of digits and dots alone (the empty text included): the shape of an IP address.
bool LooksNumeric(const char* text) {
    for (const char* p = text; *p != '\0'; ++p) {
        if (*p != '.' && !IsDigit(*p))
            return false;
    }
    return true;
}

}  // namespace

int CheckManagerIP(HMODULE lib, const char* text) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (lib == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<hLibRPTSET ==NULL.return 0.");
        return 0;
    }
    const LibResult r = CallLibrary(lib, rptset::kAMBIMyIPCheck, text != nullptr ? text : "");
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", r.value);
    return r.value;
}

int CheckPortAndIP(HMODULE lib, int32_t port, const char* lpszIPorHost, char* lpszIPAddress,
                   int flag) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] port=%d flag=%d", port, flag);
    if (lib == nullptr || lpszIPorHost == nullptr || lpszIPAddress == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<hLibRPTSET or an argument is NULL.return -2.");
        return -2;
    }
    if (flag == 1 && (port < kManagerPortMin || port > kManagerPortMax)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "port number range invalid.");
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return -1.");
        return -1;
    }
    if (CheckManagerIP(lib, lpszIPorHost) == 1) {
        std::strcpy(lpszIPAddress, lpszIPorHost);
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
        return 0;
    }
    // Digits and dots that the library refused are a bad address, never a host name: no look-up.
    if (LooksNumeric(lpszIPorHost)) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<not an IP address.return -2.");
        return -2;
    }
    if (!HostToIP(lpszIPorHost, lpszIPAddress)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "HostToIP failed.");
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return -2.");
        return -2;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

BOOL HostToIP(const char* lpszHostName, char* lpszIP) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lpszHostName=%s", lpszHostName ? lpszHostName : "(null)");
    if (lpszHostName == nullptr || lpszIP == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<argument is NULL.Return FALSE.");
        return FALSE;
    }
    hostent entry{};
    std::vector<char> work(kResolverBufferSize, '\0');
    hostent* found = nullptr;
    int lookupError = 0;
    if (gethostbyname_r(lpszHostName, &entry, work.data(), work.size(), &found, &lookupError) !=
        0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<gethostbyname_r failed.Return FALSE.");
        return FALSE;
    }
    if (found == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<phostent is NULL.Return FALSE.");
        return FALSE;
    }
    if (found->h_addr_list == nullptr || found->h_addr_list[0] == nullptr ||
        found->h_addrtype != AF_INET || found->h_length != sizeof(in_addr)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<h_addr_list or h_addr is NULL.Return FALSE.");
        return FALSE;
    }
    // Only the first address of the list is used.
    in_addr address{};
    std::memcpy(&address, found->h_addr_list[0], sizeof address);
    std::array<char, kIPTextSize> text{};
    if (zol_inet_ntoa_r(address, text.data(), static_cast<int>(text.size())) == nullptr) {
        // The caller's buffer keeps what it held and the look-up still counts as done.
        ZOL_TRACE(TRACE_LEVEL_ERROR, "zol_inet_ntoa_r failed.");
    } else {
        std::strcpy(lpszIP, text.data());
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

int MyMailAddrCheck(const char* text) {
    if (text == nullptr)
        return -1;
    const char* at = std::strchr(text, '@');
    if (at == nullptr || at == text || at[1] == '\0' || std::strchr(at + 1, '@') != nullptr)
        return -1;
    return 0;
}

const char* SingleMailAddrFault(const char* pMailAddr) {
    if (pMailAddr == nullptr || pMailAddr[0] == '\0')
        return "IMAIL_BASE_MLFROM_ERR1";
    std::string address;
    bool spaceAfterAddress = false;
    for (std::size_t i = 0; i < kMailScanLimit && pMailAddr[i] != '\0'; ++i) {
        const char c = pMailAddr[i];
        if (c == ' ') {
            // Leading blanks are skipped; a blank after the address marks its end.
            if (!address.empty())
                spaceAfterAddress = true;
        } else if (c == ',') {
            return "IMAIL_BASE_MLFROM_ERR1";
        } else {
            if (address.size() >= kMailAddrMax)
                return "IMAIL_DEST_MLTO_ERR3";
            if (spaceAfterAddress)
                return "IMAIL_BASE_MLFROM_ERR1";
            address += c;
        }
    }
    if (address.empty() || MyMailAddrCheck(address.c_str()) == -1)
        return "IMAIL_BASE_MLFROM_ERR1";
    return nullptr;
}

const char* MailAddrListFault(const char* pMailAddr) {
    if (pMailAddr == nullptr || pMailAddr[0] == '\0')
        return "IMAIL_DEST_MLTO_ERR1";
    std::vector<std::string> addresses;
    std::string current;
    bool space = false;
    bool atStart = true;  // no character of the current address collected yet
    // Closes the current address; false when the list is already full.
    auto close = [&]() {
        if (addresses.size() >= kMailListSlots)
            return false;
        addresses.push_back(std::move(current));
        current.clear();
        return true;
    };
    std::size_t i = 0;
    for (; i < kMailScanLimit; ++i) {
        const char c = pMailAddr[i];
        if (c == '\0') {
            if (!current.empty() && !close())
                return "IMAIL_DEST_MLTO_ERR4";
            break;
        }
        if (c == ' ') {
            space = true;
        } else if (c == ',') {
            // Empty items and doubled commas are allowed.
            if (!current.empty()) {
                if (!close())
                    return "IMAIL_DEST_MLTO_ERR4";
                space = false;
                atStart = true;
            }
        } else {
            if (current.size() >= kMailAddrMax)
                return "IMAIL_DEST_MLTO_ERR3";
            if (space && !atStart)
                return "IMAIL_DEST_MLTO_ERR4";
            current += c;
            atStart = false;
            space = false;
        }
    }
    // An address still open at the scan limit is neither closed nor checked, as the mail
    // service has always treated overlong lists.
    if (addresses.empty())
        return "IMAIL_DEST_MLTO_ERR1";
    for (const std::string& address : addresses) {
        if (MyMailAddrCheck(address.c_str()) == -1)
            return "IMAIL_DEST_MLTO_ERR4";
    }
    return nullptr;
}

int MyStringConvert(char* text) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (text == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "p==NULL.");
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return -1.");
        return -1;
    }
    for (char* p = text; *p != '\0'; ++p) {
        if (*p == '\n')
            *p = ' ';
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

namespace checks {

bool IsTelephoneText(std::string_view text, bool blanksAllowed) {
    for (const char c : text) {
        const bool digit = c >= '0' && c <= '9';
        if (!digit && c != '-' && c != '(' && c != ')' && !(blanksAllowed && c == ' '))
            return false;
    }
    return true;
}

std::optional<std::uint32_t> ParseDecimal(std::string_view text) {
    std::uint32_t value = 0;
    const char* end = text.data() + text.size();
    const auto [ptr, ec] = std::from_chars(text.data(), end, value);
    // from_chars of an unsigned type takes no sign and no blank; the whole text must be used.
    if (text.empty() || ec != std::errc() || ptr != end)
        return std::nullopt;
    return value;
}

std::string_view TrimBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

unsigned int DelayFromText(std::string_view text) {
    const std::string_view digits = !text.empty() && text[0] == '-' ? text.substr(1) : text;
    if (digits.empty() || digits.size() > 18)
        return UINT_MAX;
    for (char c : digits) {
        if (c < '0' || c > '9')
            return UINT_MAX;
    }
    // Read as a signed number and taken unsigned, so a minus sign makes it far too large.
    const long long value = std::strtoll(std::string(text).c_str(), nullptr, 10);
    return static_cast<unsigned int>(value);
}

}  // namespace checks
