// Checks of manager addresses, ports and mail addresses that every screen taking one runs before
// it writes anything. The address checks are silent and return codes the caller turns into its
// own message; the mail checks show their own message box.
#pragma once

#include <zolwin.h>

#include <cstdint>

// Bytes of the dotted IPv4 text HostToIP and CheckPortAndIP write, terminator included.
inline constexpr int kIPTextSize = 18;

// AMBIMyIPCheck of the report-settings library, bound at each call: 1 when text is a valid IP
// address; 0 when it is not, when the handle is missing or when the library lacks the check.
int CheckManagerIP(HMODULE hLibRPTSET, const char* text);

// Checks a manager port and address. With flag 1 the port must be 6001 to 65535; with flag 0 it
// is not looked at. An address the library accepts is copied to lpszIPAddress as it is; any
// other text that is not made of digits and dots alone is taken for a host name and resolved.
// lpszIPAddress must hold the text (and at least kIPTextSize bytes).
// 0 valid; -1 port out of range; -2 not an address, unresolvable, or no library handle.
int CheckPortAndIP(HMODULE hLibRPTSET, int32_t port, const char* lpszIPorHost, char* lpszIPAddress,
                   int flag);

// Resolves a host name to the dotted text of its first IPv4 address (lpszIP: kIPTextSize bytes).
// TRUE when the name resolved. Should the conversion to text fail, lpszIP is left as it was and
// the result is still TRUE: callers have always relied on that.
BOOL HostToIP(const char* lpszHostName, char* lpszIP);

// The only rule a single mail address must meet: one "@", neither first nor last.
// 0 valid, -1 invalid or missing. Silent.
int MyMailAddrCheck(const char* text);

// One mail address (blanks around it allowed, at most 80 characters). TRUE, or FALSE after a
// message box titled "IMAIL_DEST_TITLE_ID".
BOOL CheckSingleMailAddr(const char* pMailAddr);
// A comma-separated list of mail addresses (empty items and blanks around each allowed, at most
// 100 addresses). TRUE, or FALSE after a message box titled "IMAIL_DEST_TITLE_ID".
BOOL CheckMailAddr(const char* pMailAddr);

// The rules of the two mail checks without their box: the message ID the box would show, or
// null when the text passes.
const char* SingleMailAddrFault(const char* pMailAddr);
const char* MailAddrListFault(const char* pMailAddr);

// Replaces every line feed of text by a blank, in place. 0, or -1 when text is missing.
int MyStringConvert(char* text);
