// The report builder: one report text from the store for every delivery method. The framing of
// the body is described in docs/report.md; every value is read under one read snapshot, so a
// report never mixes data from before and after another process's write.
#include <unistd.h>
#include <zolwin.h>
#include <zolwin_transaction.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "regpaths.h"
#include "report.h"
#include "store.h"

namespace vntreport {
namespace {

struct KindTitle {
    std::string_view kind;
    const char* english;
    const char* japanese;
};
constexpr KindTitle kKinds[] = {
    {"E", "Stop report", "停止報告"},
    {"T1", "Test report (primary destination)", "テスト報告（第1報告先）"},
    {"T2", "Test report (secondary destination)", "テスト報告（第2報告先）"},
    {"T", "Test report", "テスト報告"},
    {"TF", "Critical test report", "重障害テスト報告"},
    {"O", "Opening report", "開局報告"},
};

constexpr const char* kCustomerValues[] = {
    "TOKUINMA",  "TOKUINMN", "BUNMN", "ZIPNO",    "ADRSNMA",  "ADRSNMN",
    "SHOZAINMN", "BUTEL",    "MAIL",  "BUTANNMA", "BUTANNMN",
};
constexpr const char* kMachineValues[] = {
    "SYSNMN", "SYSGOKI", "SOCHICD", "GUARANTEE", "OSNMA", "OSREV", "COMMENT",
};
constexpr const char* kVendorValues[] = {
    "SYSSHOPNMN", "SYSEIGYOBUNMN", "SYSEIGYONMN", "SYSEIGYOTEL", "SYSSEBU", "SYSSENMN", "SYSSETEL",
};

// VntLang: 1041 Japanese, 0 the system's language, anything else English.
constexpr DWORD kLangJapanese = LANGID_JAPANESE;
constexpr DWORD kLangAsSystem = 0;
// DateFormat of the internet-mail base settings: 1 universal time, anything else local time.
constexpr DWORD kDateUniversal = 1;

const KindTitle* FindKind(std::string_view kind) {
    for (const KindTitle& k : kKinds) {
        if (k.kind == kind)
            return &k;
    }
    return nullptr;
}

// The key's name below "SOFTWARE\Tavik\" as the administrator's texts name it.
std::string_view ShortKey(std::string_view key) {
    constexpr std::string_view kTavik = ZOL_KEY_TAVIK "\\";
    return key.starts_with(kTavik) ? key.substr(kTavik.size()) : key;
}

std::string ValueName(const char* key, const char* name) {
    return std::string(name) + " of " + std::string(ShortKey(key));
}

// RFC 822 date in the C locale: "Wed, 25 Nov 2026 16:40:00 +0900", or "... GMT" in universal
// time.
std::string Rfc822(std::time_t now, bool universal) {
    static constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed",
                                                         "Thu", "Fri", "Sat"};
    static constexpr std::array<const char*, 12> kMonths = {
        "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::tm tm{};
    if (universal)
        gmtime_r(&now, &tm);
    else
        localtime_r(&now, &tm);
    char zone[8] = "GMT";
    if (!universal) {
        const long offset = tm.tm_gmtoff / 60;
        const long magnitude = offset < 0 ? -offset : offset;
        std::snprintf(zone, sizeof zone, "%c%02ld%02ld", offset < 0 ? '-' : '+',
                      magnitude / 60 % 100, magnitude % 60);
    }
    char text[128];
    std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d %s", kDays[tm.tm_wday % 7],
                  tm.tm_mday, kMonths[tm.tm_mon % 12], tm.tm_year + 1900, tm.tm_hour, tm.tm_min,
                  tm.tm_sec, zone);
    return text;
}

// Reads the store for one report; the first failure leaves its administrator's text in error().
class StoreReader {
  public:
    // A stored text as UTF-8 (empty when missing), or nullopt.
    std::optional<std::string> Text(const char* key, const char* name) {
        std::string raw;
        switch (vntcore::ReadText(key, name, &raw)) {
            case vntcore::Read::Ok:
                break;
            case vntcore::Read::Missing:
                return std::string();
            case vntcore::Read::WrongType:
                return Fail("The stored value " + ValueName(key, name) + " has the wrong type.");
            case vntcore::Read::Failed:
                return Fail("The settings store cannot be read (" + ValueName(key, name) + ").");
        }
        for (const char c : raw) {
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
                return Fail("The stored value " + ValueName(key, name) +
                            " holds a control character.");
        }
        std::optional<std::string> utf8 = EucJpToUtf8(raw);
        if (!utf8)
            return Fail("The stored value " + ValueName(key, name) + " is not valid EUC-JP text.");
        return utf8;
    }

    std::optional<DWORD> Number(const char* key, const char* name, DWORD fallback) {
        const std::optional<DWORD> value = vntcore::ReadDwordOr(key, name, fallback);
        if (!value)
            error_ = "The stored value " + ValueName(key, name) +
                     " has the wrong type or cannot be read.";
        return value;
    }

    const std::string& error() const { return error_; }

  private:
    std::nullopt_t Fail(std::string text) {
        error_ = std::move(text);
        return std::nullopt;
    }
    std::string error_;
};

// The options held: OPTCDNLIST when it is a list of codes that starts with OPTCDN, else OPTCDN
// alone.
std::vector<DWORD> HeldOptions(DWORD first, std::string_view list) {
    std::vector<DWORD> codes;
    const char* p = list.data();
    const char* end = p + list.size();
    while (p != end) {
        DWORD code = 0;
        const auto [next, ec] = std::from_chars(p, end, code);
        if (ec != std::errc() || (next != end && *next != ','))
            return {first};
        codes.push_back(code);
        p = next == end ? end : next + 1;
        if (next != end && p == end)
            return {first};  // a trailing comma
    }
    if (codes.empty() || codes.front() != first)
        return {first};
    return codes;
}

class BodyWriter {
  public:
    void Line(std::string_view text) {
        body_ += text;
        body_ += "\r\n";
    }
    void Field(std::string_view name, std::string_view value) {
        body_ += name;
        body_ += '=';
        Line(value);
    }
    std::string& body() { return body_; }

  private:
    std::string body_;
};

// Appends NAME=value for each SETTING text of names. false: a read failed.
template <std::size_t N>
bool Texts(StoreReader& store, BodyWriter& out, const char* const (&names)[N]) {
    for (const char* name : names) {
        const std::optional<std::string> value = store.Text(vntcore::kSettingKey, name);
        if (!value)
            return false;
        out.Field(name, *value);
    }
    return true;
}

bool OptionSection(StoreReader& store, BodyWriter& out) {
    out.Line("[OPTION]");
    const std::optional<DWORD> first = store.Number(vntcore::kSettingKey, "OPTCDN", 0);
    const std::optional<std::string> list = store.Text(vntcore::kSettingKey, "OPTCDNLIST");
    if (!first || !list)
        return false;
    for (const DWORD code : HeldOptions(*first, *list)) {
        char number[16];
        std::snprintf(number, sizeof number, "%03u", static_cast<unsigned>(code));
        const std::optional<std::string> name = store.Text(ZOL_KEY_VNT_LIST_OPTION, number);
        if (!name)
            return false;
        out.Field("OPTION", std::to_string(code) + (name->empty() ? "" : " " + *name));
    }
    return true;
}

std::string HostName() {
    std::array<char, 256> host{};
    if (gethostname(host.data(), host.size() - 1) != 0)
        return "unknown";
    return host.data();
}

struct Heading {
    bool japanese = false;
    bool universal = false;
    std::string userCode;
    std::string version;
};

std::optional<Heading> ReadHeading(StoreReader& store) {
    const std::optional<DWORD> lang = store.Number(vntcore::kSettingKey, "VntLang", kLangAsSystem);
    const std::optional<DWORD> date = store.Number(ZOL_KEY_MAIL_SETTING, "DateFormat", 0);
    if (!lang || !date)
        return std::nullopt;
    std::optional<std::string> user = store.Text(vntcore::kSettingKey, "USERCODE");
    std::optional<std::string> version = store.Text(vntcore::kSetupKey, "VERSION");
    if (!user || !version)
        return std::nullopt;
    Heading h;
    h.japanese = *lang == kLangJapanese ||
                 (*lang == kLangAsSystem && GetSystemDefaultLangID() == LANGID_JAPANESE);
    h.universal = *date == kDateUniversal;
    h.userCode = std::move(*user);
    h.version = std::move(*version);
    return h;
}

// The customer, machine, option and vendor sections. false: a read failed.
bool WriteSections(StoreReader& store, BodyWriter& out) {
    out.Line("[CUSTOMER]");
    const std::optional<DWORD> company = store.Number(vntcore::kSettingKey, "KAISHAKBN", 1);
    if (!company)
        return false;
    out.Field("KAISHAKBN", std::to_string(*company));
    if (!Texts(store, out, kCustomerValues))
        return false;
    out.Line("[MACHINE]");
    if (!Texts(store, out, kMachineValues) || !OptionSection(store, out))
        return false;
    out.Line("[VENDOR]");
    return Texts(store, out, kVendorValues);
}

}  // namespace

bool IsKnownKind(std::string_view kind) {
    return FindKind(kind) != nullptr;
}

std::optional<Report> BuildReport(std::string_view kind, std::string* error) {
    std::string ignored;
    std::string& why = error != nullptr ? *error : ignored;
    const KindTitle* known = FindKind(kind);
    if (known == nullptr) {
        why = "Unknown report kind \"" + std::string(kind) + "\".";
        return std::nullopt;
    }
    const zolwin::ReadSnapshot snapshot;
    StoreReader store;
    const std::optional<Heading> heading = ReadHeading(store);
    if (!heading) {
        why = store.error();
        return std::nullopt;
    }
    Report report;
    report.kind = std::string(kind);
    report.japanese = heading->japanese;
    report.timestamp = Rfc822(std::time(nullptr), heading->universal);
    const std::string title = heading->japanese ? known->japanese : known->english;
    const std::string host = HostName();
    BodyWriter out;
    out.Line("VANTREL-REPORT 1");
    out.Field("KIND", report.kind);
    out.Field("TITLE", title);
    out.Field("DATE", report.timestamp);
    out.Field("HOST", host);
    out.Field("USERCODE", heading->userCode);
    out.Field("VERSION", heading->version);
    out.Field("LANG", heading->japanese ? "JA" : "EN");
    if (!WriteSections(store, out)) {
        why = store.error();
        return std::nullopt;
    }
    out.Line("END");
    report.body = std::move(out.body());
    report.subject = "Vantrel " + title + ": " + heading->userCode + " (" + host + ")";
    return report;
}

}  // namespace vntreport
