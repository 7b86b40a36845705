// What the dial-up and HTTPS screens' OK and the proxy dialog's OK turn the typed values into,
// and the box a test report's outcome shows: plain functions the screens call and the unit tests
// drive.
#include <cstdio>
#include <string_view>

#include "frame/checks.h"
#include "remote/vantrel_method.h"

namespace {

constexpr std::string_view kPhoneCharacters = "0123456789-()";
constexpr std::string_view kDevicePrefix = "/dev/";
constexpr std::string_view kHttpsScheme = "https://";
// Longest URL or host name the store keeps, in bytes.
constexpr std::size_t kRegTextMax = REG_TEXT_SIZE - 1;
constexpr std::uint32_t kMaxPort = 65535;

// True when text holds no blank or control character (nor a byte of DEL).
bool IsOneWord(std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte <= ' ' || byte == 0x7F)
            return false;
    }
    return true;
}

// The refusal of a telephone number, or null; an empty number is refused only when required.
const char* PhoneFault(std::string_view number, bool required) {
    if ((required && number.empty()) || number.size() > VNT_DIAL_PHONE_MAX)
        return "IDS_ERROR_MSG_TELNUM";
    if (number.find_first_not_of(kPhoneCharacters) != std::string_view::npos)
        return "IDS_ERROR_MSG_BADTELNUM";
    return nullptr;
}

bool IsDevicePath(std::string_view device) {
    return device.size() > kDevicePrefix.size() && device.size() < VNT_TEXT_SIZE &&
           device.starts_with(kDevicePrefix) && IsOneWord(device);
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
    if (text.size() < prefix.size())
        return false;
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        const char c = text[i];
        const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        if (lower != prefix[i])
            return false;
    }
    return true;
}

bool IsHttpsUrl(std::string_view url) {
    return url.size() > kHttpsScheme.size() && url.size() <= kRegTextMax &&
           StartsWithNoCase(url, kHttpsScheme) && IsOneWord(url);
}

template <std::size_t N>
void CopyField(char (&field)[N], std::string_view text) {
    std::snprintf(field, N, "%.*s", static_cast<int>(text.size()), text.data());
}

}  // namespace

const char* ApplyDialUpEntries(const DialUpEntries& entries, VntDialData& record) {
    if (const char* fault = PhoneFault(entries.primary, true))
        return fault;
    if (const char* fault = PhoneFault(entries.secondary, false))
        return fault;
    if (entries.user.size() > VNT_DIAL_USER_MAX || !IsOneWord(entries.user))
        return "DIAL_UP_USER_ERR";
    if (!IsDevicePath(entries.device))
        return "DIAL_UP_PORT_ERR";
    const std::uint32_t redial = checks::ParseDecimal(entries.redial).value_or(0);
    if (redial < VNT_DIAL_REDIAL_MIN || redial > VNT_DIAL_REDIAL_MAX)
        return "DIAL_UP_INTVAL_ERR";
    CopyField(record.PhoneNo1, entries.primary);
    CopyField(record.PhoneNo2, entries.secondary);
    CopyField(record.UserID, entries.user);
    CopyField(record.Device, entries.device);
    // No button chosen (newt always has one) keeps the stored mode.
    if (entries.mode == 0 || entries.mode == 1)
        record.DialMode = entries.mode == 1 ? VNT_DIAL_MODE_PULSE : VNT_DIAL_MODE_TONE;
    record.RedialInterval = redial;
    return nullptr;
}

const char* ApplyHttpsEntries(const HttpsEntries& entries, VntHttpsData& record) {
    if (entries.url1.empty())
        return "URL1_NOT_EXIST";
    if (!IsHttpsUrl(entries.url1))
        return "HTTPS_URL_ERR";
    if (entries.continueReport && entries.url2.empty())
        return "URL2_NOT_EXIST";
    if (!entries.url2.empty() && !IsHttpsUrl(entries.url2))
        return "HTTPS_URL_ERR";
    CopyField(record.Url1, entries.url1);
    CopyField(record.Url2, entries.url2);
    record.ContinueReport = entries.continueReport ? 1 : 0;
    return nullptr;
}

const char* ApplyProxyEntries(const ProxyEntries& entries, VntHttpsData& record) {
    if ((entries.use && entries.host.empty()) || !IsOneWord(entries.host))
        return "PROXY_HOST_ERR";
    if (entries.host.size() > kRegTextMax)
        return "IDS_ERR_HOST_TOO_LONG";
    const std::uint32_t port = checks::ParseDecimal(entries.port).value_or(0);
    if (port < 1 || port > kMaxPort)
        return "ERROR_PROXYPORT";
    record.ProxyUse = entries.use ? 1 : 0;
    CopyField(record.ProxyAddr, entries.host);
    record.ProxyPort = port;
    return nullptr;
}

TestReportBox TestReportOutcomeBox(const DeliveryOutcome& outcome, const char* library,
                                   const char* entry) {
    switch (outcome.status) {
        case DeliveryOutcome::Status::NotLoaded:
            return {"ERROR", "IDS_ERR_LOAD_DLL", library, {}};
        case DeliveryOutcome::Status::NoEntry:
            return {"ERROR", "IDS_ERR_EXE_FUNC", entry, {}};
        case DeliveryOutcome::Status::Called:
            break;
    }
    if (outcome.result == kDeliverySent)
        return {"Message", "TEST_REPORT_OK", {}, {}};
    return {"Error", "ERROR_TEST_REPORT", {}, outcome.errorText};
}
