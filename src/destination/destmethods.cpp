// What the destination screens know about report methods without a screen: the records they own,
// the method names, the address line each method shows, the method list of a new ID, list rows
// and the texts of refusals.
#include <strings.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

#include "destination/destination.h"
#include "frame/checks.h"
#include "frame/textformat.h"
#include "ui/encoding.h"

namespace {

// The names stored in a record's Method, compared without regard to case.
struct MethodName {
    const char* name;
    DestMethod method;
};
constexpr std::array<MethodName, 4> kMethodNames = {{
    {"MANAGER (SNMP)", DestMethod::Snmp},
    {"MANAGER (TCP_IP IN-BAND)", DestMethod::InBand},
    {"MANAGER (TCP_IP OUT-OF-BAND)", DestMethod::OutOfBand},
    {"VANTRELREPORT", DestMethod::Vantrel},
}};

// Prefixes of listed IDs that name a method of a new ID, compared without regard to case: an ID
// named "SNMP-backup" becomes a method too.
constexpr std::array<std::string_view, 3> kMethodPrefixes = {"SNMP", "TCP_IP IN-BAND",
                                                             "TCP_IP OUT-OF-BAND"};
constexpr std::string_view kVantrelPrefix = "VANTRELREPORT";
// Text of the address line of a method that has no address.
constexpr const char* kNoAddress = "none";

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           strncasecmp(text.data(), prefix.data(), prefix.size()) == 0;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && StartsWithNoCase(a, b);
}

std::string Formatted(const TextOf& text, const char* id, std::string_view arg) {
    return FormatText(text(id), {arg});
}

}  // namespace

void DestDataDeleter::operator()(DestData* record) const {
    if (record == nullptr)
        return;
    explicit_bzero(record, sizeof *record);
    std::free(record);
}

DestDataPtr NewDestRecord() {
    DestDataPtr record(static_cast<DestData*>(std::malloc(sizeof(DestData))));
    if (record != nullptr)
        DestDataSetDefaults(record.get());
    return record;
}

std::string RefusalText(const Refusal& refusal, const TextOf& text) {
    if (!refusal)
        return {};
    std::string format = text(refusal.id);
    // The file's numeric placeholders take the bounds as text, so a damaged file can never read
    // an argument that was not passed.
    for (std::size_t at = format.find("%d"); at != std::string::npos; at = format.find("%d", at))
        format[at + 1] = 's';
    switch (refusal.args.size()) {
        case 0:
            return FormatText(format);
        case 1:
            return FormatText(format, {refusal.args[0]});
        default:
            return FormatText(format, {refusal.args[0], refusal.args[1]});
    }
}

void CopyField(char* field, std::size_t size, std::string_view text) {
    const std::string_view kept = zolui::CutEuc(text, size - 1);
    std::memcpy(field, kept.data(), kept.size());
    field[kept.size()] = '\0';
}

DestMethod ClassifyMethod(std::string_view method) {
    for (const MethodName& known : kMethodNames) {
        if (EqualsNoCase(method, known.name))
            return known.method;
    }
    return DestMethod::Other;
}

std::optional<std::string> ManagerAddressLine(const DestData& record, const TextOf& text) {
    switch (ClassifyMethod(record.Method)) {
        case DestMethod::Snmp:
            return text("IDSET_ADD_SNMP_ID");
        case DestMethod::InBand:
            return Formatted(text, "DEST_IDLIST_ADD2_ID", record.Address);
        case DestMethod::OutOfBand:
            return Formatted(text, "DEST_IDLIST_ADD3_ID", record.Address);
        default:
            return std::nullopt;
    }
}

std::optional<std::string> VantrelAddressLine(int vntMethod, std::string_view where,
                                              const TextOf& text) {
    switch (vntMethod) {
        case VANTREL_INTERNETMAIL:
            return Formatted(text, "DEST_IDLIST_ADD5_ID", where);
        case VANTREL_DIALUP:
            return text("DEST_DIAL_ID");
        case VANTREL_TRANSTOMANAGER:
            return Formatted(text, "DEST_IDLIST_ADD2_ID", where);
        case VANTREL_HTTPS:
            return text("IDSET_ADD_HTTPS_ID");
        default:
            return std::nullopt;
    }
}

std::string ListAddressLine(const DestData& record, std::string_view mailTo, const TextOf& text) {
    switch (ClassifyMethod(record.Method)) {
        case DestMethod::Snmp:
            // The list names where SNMP traps go; the editor says the same in its own words.
            return text("DEST_IDLIST_ADD1_ID");
        case DestMethod::InBand:
        case DestMethod::OutOfBand:
            return *ManagerAddressLine(record, text);
        case DestMethod::Vantrel:
            break;
        case DestMethod::Other:
            return kNoAddress;
    }
    // The service's destination is told by what GetDestData found: a mail address, the fixed
    // texts of dial-up and HTTPS, or else the manager's address. Nothing found is no address.
    if (mailTo.empty())
        return kNoAddress;
    if (mailTo.find('@') != std::string_view::npos)
        return Formatted(text, "DEST_IDLIST_ADD5_ID", mailTo);
    if (mailTo == text("DEST_DIAL_ID") || mailTo == text("IDSET_ADD_HTTPS_ID"))
        return std::string(mailTo);
    return Formatted(text, "DEST_IDLIST_ADD2_ID", mailTo);
}

std::vector<std::string> BuildMethodList(const char (*ids)[DEST_TEXT_SIZE], int count) {
    std::vector<std::string> methods;
    for (int i = 0; i < count && i < DEST_MAX_RECORDS; ++i) {
        const std::string_view id(ids[i], strnlen(ids[i], DEST_TEXT_SIZE));
        if (StartsWithNoCase(id, kVantrelPrefix))
            continue;
        for (std::string_view prefix : kMethodPrefixes) {
            if (StartsWithNoCase(id, prefix)) {
                methods.push_back("MANAGER (" + std::string(id) + ")");
                break;
            }
        }
    }
    return methods;
}

std::string ListRow(std::string_view text, int width) {
    std::string row(zolui::CutEuc(text, static_cast<std::size_t>(width)));
    row.resize(static_cast<std::size_t>(width), ' ');
    return row;
}
