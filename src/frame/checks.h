// Checks of what an administrator types, shared by every screen family and free of newt: manager
// addresses and ports, mail addresses, decimal numbers and the shutdown delay (the length of an
// EUC-JP character is ui/encoding.h's EucCharLength). Each is silent and answers a code or the ID
// of the message the screen shows (check_boxes.h shows the mail checks' boxes).
#pragma once

#include <zolwin.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

// Bytes of the dotted IPv4 text HostToIP and CheckPortAndIP write, terminator included.
inline constexpr int kIPTextSize = 18;

// AMBIMyIPCheck of the report-settings library, bound at each call: 1 when text is a valid IP
// address; 0 when it is not, when the handle is missing or when the library lacks the check.
int CheckManagerIP(HMODULE lib, const char* text);

// Checks a manager port and address. With flag 1 the port must be 6001 to 65535; with flag 0 it
// is not looked at. An address the library accepts is copied to lpszIPAddress as it is; any
// other text that is not made of digits and dots alone is taken for a host name and resolved.
// lpszIPAddress must hold the text (and at least kIPTextSize bytes).
// 0 valid; -1 port out of range; -2 not an address, unresolvable, or no library handle.
int CheckPortAndIP(HMODULE lib, int32_t port, const char* lpszIPorHost, char* lpszIPAddress,
                   int flag);

// Resolves a host name to the dotted text of its first IPv4 address (lpszIP: kIPTextSize bytes).
// TRUE when the name resolved. Should the conversion to text fail, lpszIP is left as it was and
// the result is still TRUE: callers have always relied on that.
BOOL HostToIP(const char* lpszHostName, char* lpszIP);

// The only rule a single mail address must meet: one "@", neither first nor last.
// 0 valid, -1 invalid or missing. Silent.
int MyMailAddrCheck(const char* text);

// The rules of the two mail checks (CheckSingleMailAddr, CheckMailAddr of check_boxes.h): the
// message ID the box would show, or null when the text passes. A single address may have blanks
// around it and at most 80 characters; a list is comma-separated (empty items and blanks around
// each allowed) and holds at most 100 addresses.
const char* SingleMailAddrFault(const char* pMailAddr);
const char* MailAddrListFault(const char* pMailAddr);

// Replaces every line feed of text by a blank, in place. 0, or -1 when text is missing.
int MyStringConvert(char* text);

namespace checks {

// A decimal number made only of the digits 0-9 that fits 32 bits; nothing otherwise (an empty
// text, a sign, blanks, anything else, or too many digits).
std::optional<std::uint32_t> ParseDecimal(std::string_view text);

// True when every character of text is a digit, "-", "(" or ")", or with blanksAllowed also a
// blank: the characters of a telephone number (an empty text passes).
bool IsTelephoneText(std::string_view text, bool blanksAllowed);

// The text without the blanks around it.
std::string_view TrimBlanks(std::string_view text);

// The shutdown delay an entry's text stands for: digits with an optional leading "-" read as a
// decimal number and taken unsigned (so "-1" is far out of range); any other text gives a value
// no delay can have.
unsigned int DelayFromText(std::string_view text);

}  // namespace checks
