// zolctl check: every rule the settings screens enforce, applied to the whole store at once, one
// finding per broken rule; --fix removes what is safe to remove (a binding that names a missing
// destination ID) in one store transaction, then checks again.
#include <zolwin_transaction.h>

#include <cstdio>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "destination/destination.h"
#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/rptset_calls.h"
#include "frame/rptset_dial_calls.h"
#include "regpaths.h"
#include "zolctl/zolctl.h"

namespace zolctl {

namespace {

struct Finding {
    Finding(std::string k, std::string v, std::string t, bool canFix = false)
        : key(std::move(k)), value(std::move(v)), text(std::move(t)), fixable(canFix) {}
    std::string key;    // key path and value name
    std::string value;  // the stored value, as text
    std::string text;   // what is wrong
    bool fixable = false;
    // For a fixable binding: the Dest key and the value that names the missing ID.
    std::string destKey, destValue;
};
using Findings = std::vector<Finding>;

const std::string kHKLM = "HKLM\\";

std::string DestKey(const Destination& d, const char* value) {
    return kHKLM + ZOL_KEY_ID_LIST + "\\" + d.id + "\\" + value;
}

std::string Hex(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%06X", value);
    return text;
}

// The built-in destination IDs the library never deletes.
constexpr const char* kBuiltInIDs[] = {"SNMP", "TCP_IP In-Band", "TCP_IP Out-of-Band",
                                       "VantrelReport"};

void CheckIDList(const Store& store, Findings& out) {
    const std::string key = kHKLM + ZOL_KEY_ID_LIST;
    if (store.idListKeys > DEST_MAX_RECORDS) {
        out.push_back({key, std::to_string(store.idListKeys),
                       std::to_string(store.idListKeys) + " destination IDs; at most " +
                           std::to_string(DEST_MAX_RECORDS) +
                           " are read (hidden ones included), the rest are never reported to"});
    }
    for (const char* id : kBuiltInIDs) {
        if (FindDestination(store, id) == nullptr)
            out.push_back({key + "\\" + id, "", "built-in destination ID missing"});
    }
}

void CheckName(const Destination& d, Findings& out) {
    for (const char c : d.id) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            out.push_back(
                {kHKLM + ZOL_KEY_ID_LIST + "\\" + d.id, d.id, "ID holds a control character"});
            return;
        }
    }
    if (d.id.front() == ' ' || d.id.back() == ' ')
        out.push_back(
            {kHKLM + ZOL_KEY_ID_LIST + "\\" + d.id, d.id, "ID begins or ends with a blank"});
}

void CheckManagerAddress(HMODULE rptset, const Destination& d, int bound, Findings& out) {
    const std::string key = DestKey(d, "Address");
    if (d.address.empty()) {
        if (bound > 0)
            out.push_back({key, "",
                           "no manager address, yet " + std::to_string(bound) +
                               " events or syslog items report to this ID"});
    } else if (d.address.size() > kMaxHostLength) {
        out.push_back({key, d.address, "address longer than 256 bytes"});
    } else if (CheckManagerIP(rptset, d.address.c_str()) != 1) {
        out.push_back(
            {key, d.address, "not a dotted IPv4 address (host names are stored resolved)"});
    }
    if (d.port == 0 || d.port > 65535)
        out.push_back({DestKey(d, "Port"), std::to_string(d.port), "port outside 1 to 65535"});
    if (!checks::IsTelephoneText(d.phone, false))
        out.push_back({DestKey(d, "Phone"), d.phone,
                       "telephone number holds characters other than digits, '-', '(' and ')'"});
}

void CheckSchedule(const Destination& d, Findings& out) {
    if ((d.hourMask & ~DEST_DEFAULT_HOURMASK) != 0)
        out.push_back(
            {DestKey(d, "HourMask"), Hex(d.hourMask), "hour mask sets bits above hour 23"});
    else if (d.hourMask == 0)
        out.push_back({DestKey(d, "HourMask"), Hex(d.hourMask),
                       "no reporting hour: nothing is ever sent to this ID"});
    if (d.retryInterval < kMinRetryInterval || d.retryInterval > kMaxRetryInterval)
        out.push_back({DestKey(d, "RetryInterval"), std::to_string(d.retryInterval),
                       "retry interval outside 1 to 30 minutes"});
    if (d.retryTime > kMaxRetryTime)
        out.push_back({DestKey(d, "RetryTime"), std::to_string(d.retryTime),
                       "retry time outside 0 to 240 hours"});
}

void CheckDestination(HMODULE rptset, const Destination& d, int bound, Findings& out) {
    if (d.hidden)
        return;  // kept by the library for its own use, never edited on a screen
    CheckName(d, out);
    switch (ClassifyMethod(d.method)) {
        case DestMethod::InBand:
        case DestMethod::OutOfBand:
            CheckManagerAddress(rptset, d, bound, out);
            break;
        case DestMethod::Vantrel:
            if (!EqualsNoCase(d.id, "VantrelReport"))
                out.push_back({DestKey(d, "Method"), d.method,
                               "only the remote report service's ID VantrelReport reports by "
                               "this method"});
            break;
        case DestMethod::Snmp:
            break;
        case DestMethod::Other:
            out.push_back({DestKey(d, "Method"), d.method, "unknown report method"});
            break;
    }
    CheckSchedule(d, out);
}

// How many events and syslog items report to each destination ID (lower-cased ASCII).
std::map<std::string, int> BindingCounts(const Store& store) {
    std::map<std::string, int> counts;
    for (const auto* list : {&store.events, &store.syslogItems}) {
        for (const Monitored& entry : *list) {
            for (const std::string& id : entry.destIDs) {
                std::string lower = id;
                for (char& c : lower)
                    c = (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
                ++counts[lower];
            }
        }
    }
    return counts;
}

void CheckBindings(const Store& store, Findings& out) {
    for (const auto* list : {&store.events, &store.syslogItems}) {
        for (const Monitored& entry : *list) {
            for (const std::string& id : entry.destIDs) {
                if (FindDestination(store, id) != nullptr)
                    continue;
                Finding f{MonitoredKey(entry) + "\\Dest\\" + id, "1",
                          "reports to destination ID \"" + id + "\", which does not exist", true};
                f.destKey = MonitoredKey(entry) + "\\Dest";
                f.destValue = id;
                out.push_back(std::move(f));
            }
        }
    }
}

void CheckSyslogItems(const Store& store, Findings& out) {
    for (const Monitored& item : store.syslogItems) {
        const std::string key = MonitoredKey(item);
        if (item.keywords[0].empty() && item.keywords[1].empty() && item.keywords[2].empty())
            out.push_back({key + "\\Keyword1", "", "no keyword: the item matches no line"});
        if ((item.timeTable & ~DEST_DEFAULT_HOURMASK) != 0)
            out.push_back(
                {key + "\\TimeTable", Hex(item.timeTable), "hour mask sets bits above hour 23"});
        else if (item.timeTable == 0 && !item.destIDs.empty())
            out.push_back({key + "\\TimeTable", Hex(item.timeTable),
                           "no hour of the day: the item is never reported"});
    }
}

void CheckTrapList(HMODULE rptset, Findings& out) {
    std::vector<std::vector<char>> buffers(TRAP_DEST_MAX, std::vector<char>(TRAP_DEST_SIZE, '\0'));
    std::vector<char*> list;
    for (auto& b : buffers)
        list.push_back(b.data());
    int count = 0;
    const std::string key = kHKLM + ZOL_KEY_METHOD + "\\" + BASE_METHOD_SNMP + "\\TrapDest";
    if (GetTrapSetting(rptset, &count, list.data()) == 0) {
        out.push_back({key, "", "the SNMP trap destination list cannot be read"});
        return;
    }
    for (int i = 0; i < count && i < TRAP_DEST_MAX; ++i) {
        if (CheckManagerIP(rptset, list[i]) != 1)
            out.push_back({key, list[i], "trap destination is not a dotted IPv4 address"});
    }
}

// The mail checks' message IDs, as findings.
std::string MailFault(const char* id) {
    static const std::map<std::string, std::string> texts = {
        {"IMAIL_BASE_MLFROM_ERR1",
         "not one valid mail address (one \"@\", neither first nor last)"},
        {"IMAIL_DEST_MLTO_ERR1", "no mail address"},
        {"IMAIL_DEST_MLTO_ERR3", "a mail address longer than 80 characters"},
        {"IMAIL_DEST_MLTO_ERR4", "a mail address that is not valid, or more than 100 addresses"},
    };
    const auto it = texts.find(id);
    return it != texts.end() ? it->second : std::string("mail address refused (") + id + ")";
}

// The internet-mail base record (sender, SMTP server); nothing when it cannot be read.
std::optional<AMBIBaseData> ReadMailBase(HMODULE rptset) {
    if (!InitIMBaseRegPath(rptset) || !InitIMBaseSetting(rptset))
        return std::nullopt;
    return g_AMBIBaseData;
}

void CheckMailLists(HMODULE rptset, Findings& out) {
    char to[VNT_MAILTO_SIZE] = {};
    if (ReadVntTo(rptset, to) && to[0] != '\0') {
        if (const char* fault = MailAddrListFault(to))
            out.push_back({kHKLM + ZOL_KEY_VANTREL_ADDRESS + "\\ETo", to, MailFault(fault)});
    }
    if (auto base = ReadMailBase(rptset); base && base->MailFrom[0] != '\0') {
        if (const char* fault = SingleMailAddrFault(base->MailFrom))
            out.push_back(
                {kHKLM + ZOL_KEY_MAIL_SETTING + "\\MailFrom", base->MailFrom, MailFault(fault)});
    }
}

// The base-setting records of the remote report service's four methods, by method number.
constexpr const char* kVantrelMethodRecords[] = {
    "VantrelReport(Internet Mail)", "VantrelReport(Dial-up)", "VantrelReport(TransToManager)",
    "VantrelReport(HTTPS)"};

bool VantrelSwitchedOn(HMODULE rptset, int method) {
    BaseData record{};
    std::snprintf(record.MethodName, sizeof record.MethodName, "%s", kVantrelMethodRecords[method]);
    return InitBaseSetting(rptset, &record) == 0 && record.Enable == 1;
}

// The settings the switched-on method needs before it can deliver anything.
void CheckVantrelMethodSettings(HMODULE rptset, int method, Findings& out) {
    if (method == VANTREL_INTERNETMAIL) {
        char to[VNT_MAILTO_SIZE] = {};
        if (!ReadVntTo(rptset, to) || to[0] == '\0')
            out.push_back({kHKLM + ZOL_KEY_VANTREL_ADDRESS + "\\ETo", to,
                           "the service reports by mail but has no mail address to send to"});
        const auto base = ReadMailBase(rptset);
        if (!base || base->SMTPServer[0] == '\0')
            out.push_back({kHKLM + ZOL_KEY_MAIL_SETTING + "\\SMTPServer", "",
                           "the service reports by mail but has no SMTP server"});
    } else if (method == VANTREL_DIALUP) {
        VntDialData dial{};
        const bool read = GetDialUpParam(rptset, &dial).ok();
        if (!read || dial.PhoneNo1[0] == '\0')
            out.push_back({kHKLM + ZOL_KEY_DIAL_SETTING + "\\PhoneNo1", read ? dial.PhoneNo1 : "",
                           "the service reports by dial-up but has no telephone number"});
        if (!read || dial.Device[0] == '\0')
            out.push_back({kHKLM + ZOL_KEY_DIAL_SETTING + "\\Device", read ? dial.Device : "",
                           "the service reports by dial-up but has no modem device"});
    } else if (method == VANTREL_TRANSTOMANAGER) {
        char ip[VNT_MAILTO_SIZE] = {};
        if (!ReadManagerIP(rptset, ip).ok())
            out.push_back({kHKLM + ZOL_KEY_VANTREL_ADDRESS + "\\ManagerIP", "",
                           "the service reports via the manager but has no manager address"});
    } else if (method == VANTREL_HTTPS) {
        if (ReadStoreText(ZOL_KEY_HTTPS_SETTING, "HTTPD1URL").empty())
            out.push_back({kHKLM + ZOL_KEY_HTTPS_SETTING + "\\HTTPD1URL", "",
                           "the service reports over HTTPS but has no first URL"});
    }
}

void CheckRemoteService(HMODULE rptset, Findings& out) {
    int method = -1;
    if (GetVntMethod(rptset, &method) != 0 || method < 0 || method > 3) {
        out.push_back({kHKLM + ZOL_KEY_VNTSERVICE + "\\MethodType", "",
                       "the remote report service's delivery method cannot be read"});
        return;
    }
    if (!VantrelSwitchedOn(rptset, method))
        return;
    if (!CheckInstVantrelFD(rptset))
        out.push_back({kHKLM + ZOL_KEY_VNTSERVICE + "\\InstVantrelKeyFD", "0",
                       "the remote report service is switched on but its key floppy has not "
                       "been read"});
    CheckVantrelMethodSettings(rptset, method, out);
}

Findings CheckAll(HMODULE rptset, const Store& store) {
    Findings out;
    CheckIDList(store, out);
    const auto counts = BindingCounts(store);
    for (const Destination& d : store.destinations) {
        std::string lower = d.id;
        for (char& c : lower)
            c = (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
        const auto it = counts.find(lower);
        CheckDestination(rptset, d, it == counts.end() ? 0 : it->second, out);
    }
    CheckBindings(store, out);
    CheckSyslogItems(store, out);
    CheckTrapList(rptset, out);
    CheckMailLists(rptset, out);
    CheckRemoteService(rptset, out);
    return out;
}

// Removes every fixable binding in one transaction: all of them land, or none. Each value is
// removed only if its destination ID is still missing when the transaction holds the store.
// ERROR_SUCCESS, or why nothing was removed.
LONG RemoveDanglingBindings(const Findings& findings) {
    zolwin::Transaction transaction;
    if (transaction.status() != ERROR_SUCCESS)
        return transaction.status();
    for (const Finding& f : findings) {
        if (!f.fixable)
            continue;
        HKEY existing = nullptr;
        const std::string idKey = std::string(ZOL_KEY_ID_LIST) + "\\" + f.destValue;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, idKey.c_str(), 0, KEY_READ, &existing) ==
            ERROR_SUCCESS) {
            RegCloseKey(existing);
            continue;  // created meanwhile: the binding is no longer dangling
        }
        HKEY dest = nullptr;
        const std::string path = f.destKey.substr(kHKLM.size());
        LONG rc = RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, &dest);
        if (rc == ERROR_SUCCESS) {
            rc = RegDeleteValue(dest, f.destValue.c_str());
            RegCloseKey(dest);
        }
        if (rc != ERROR_SUCCESS && rc != ERROR_FILE_NOT_FOUND)
            return rc;  // the transaction rolls back as it goes
    }
    return transaction.commit();
}

void PrintText(const Findings& findings, const char* prefix) {
    for (const Finding& f : findings)
        std::cout << prefix << ForTerminal(f.key) << ": " << f.text
                  << (f.value.empty() ? "" : " (" + ForTerminal(f.value) + ")") << '\n';
}

std::string JsonArray(const Findings& findings) {
    std::string out = "[";
    for (std::size_t i = 0; i < findings.size(); ++i) {
        const Finding& f = findings[i];
        out += (i ? ",\n " : "\n ") + std::string("{\"key\":") + JsonString(f.key) +
               ",\"value\":" + JsonString(f.value) + ",\"finding\":" + JsonString(f.text) +
               ",\"fixable\":" + (f.fixable ? "true" : "false") + "}";
    }
    return out + (findings.empty() ? "]" : "\n]");
}

}  // namespace

int RunCheck(const Options& options) {
    Session session;
    if (!OpenSession(session, true))
        return kExitFailure;
    Findings findings = CheckAll(session.rptset.get(), session.store);
    Findings fixed;
    if (options.fix) {
        for (const Finding& f : findings) {
            if (f.fixable)
                fixed.push_back(f);
        }
        if (!fixed.empty()) {
            if (const LONG rc = RemoveDanglingBindings(fixed); rc != ERROR_SUCCESS) {
                Complain("nothing was repaired: the store refused the change (error " +
                         std::to_string(rc) + ")");
                return kExitFailure;
            }
            std::string error;
            if (!LoadMonitored(session.rptset.get(), session.store, &error)) {
                Complain(error);
                return kExitFailure;
            }
            findings = CheckAll(session.rptset.get(), session.store);
        }
    }
    if (options.json) {
        if (options.fix)
            std::cout << "{\"fixed\":" << JsonArray(fixed)
                      << ",\n\"findings\":" << JsonArray(findings) << "}\n";
        else
            std::cout << JsonArray(findings) << '\n';
    } else {
        PrintText(fixed, "fixed: ");
        PrintText(findings, "");
    }
    return findings.empty() ? kExitOk : kExitFindings;
}

}  // namespace zolctl
