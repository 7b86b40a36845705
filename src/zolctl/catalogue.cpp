// The store as zolctl's commands read it: the destination table through the destination
// screens' table functions, the agent events and syslog items through the monitoring screens'
// catalogue readers, copied into plain structs the commands look at.
#include <cstdio>
#include <cstring>

#include "destination/destination.h"
#include "frame/dscopy_calls.h"
#include "frame/libraries.h"
#include "frame/rptset_calls.h"
#include "frame/rptset_dial_calls.h"
#include "frame/screens.h"
#include "monitor/monitor.h"
#include "regpaths.h"
#include "zolctl/zolctl.h"

namespace zolctl {

namespace {

// The number of subkeys of ID_LIST, counted in the store itself: the library reads at most
// DEST_MAX_RECORDS of them, so an excess shows only here. -1 when the key cannot be read.
int CountIDListKeys() {
    HKEY key = nullptr;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, ZOL_KEY_ID_LIST, 0, KEY_READ, &key) != ERROR_SUCCESS)
        return -1;
    int count = 0;
    for (;;) {
        char name[ZOL_MAX_KEY_NAME + 1];
        DWORD size = sizeof name;
        const LONG rc = RegEnumKeyEx(key, static_cast<DWORD>(count), name, &size, nullptr, nullptr,
                                     nullptr, nullptr);
        if (rc != ERROR_SUCCESS)
            break;
        ++count;
    }
    RegCloseKey(key);
    return count;
}

// The destination table's records are wiped and freed on every path out.
struct DestTableGuard {
    ~DestTableGuard() { FreeDestTable(); }
};

template <class Record>
Monitored CopyMonitored(const Record& record, bool syslog) {
    Monitored entry;
    entry.syslog = syslog;
    entry.source = record.SourceName;
    entry.eventID = record.EventID;
    entry.trapName = record.TrapName;
    entry.dealMethod = record.DealMethod;
    entry.action = record.Action;
    for (int i = 0; i < record.DestNum && i < EVENT_DEST_SLOTS; ++i) {
        if (record.lplpszDestID[i] != nullptr)
            entry.destIDs.emplace_back(record.lplpszDestID[i]);
    }
    return entry;
}

Monitored CopySyslogItem(const SyslogData& record) {
    Monitored entry = CopyMonitored(record, true);
    entry.keywords[0] = record.Keyword1;
    entry.keywords[1] = record.Keyword2;
    entry.keywords[2] = record.Keyword3;
    entry.count = record.Count;
    entry.timeTable = record.TimeTable;
    return entry;
}

// The names of the subkeys of one key; nothing when the key cannot be opened.
std::optional<std::vector<std::string>> SubkeyNames(const std::string& path) {
    HKEY key = nullptr;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return std::nullopt;
    std::vector<std::string> names;
    for (DWORD i = 0;; ++i) {
        char name[ZOL_MAX_KEY_NAME + 1];
        DWORD size = sizeof name;
        if (RegEnumKeyEx(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            break;
        names.emplace_back(name, size);
    }
    RegCloseKey(key);
    return names;
}

}  // namespace

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
        if (lower(a[i]) != lower(b[i]))
            return false;
    }
    return true;
}

bool LoadDestinations(HMODULE rptset, Store& store, std::string* error) {
    DestTableGuard guard;
    const int count = InitAllDestSetting(rptset);
    if (count < 0) {
        *error = "the destination IDs cannot be read (GetAllDestSetting failed)";
        return false;
    }
    store.destinations.clear();
    for (int i = 0; i < count; ++i) {
        const DestData& record = *CPDestData[i];
        Destination d;
        d.id = record.ID;
        d.method = record.Method;
        d.address = record.Address;
        d.phone = record.Phone;
        d.user = record.User;
        d.port = record.Port;
        d.hourMask = record.HourMask;
        d.retryInterval = record.RetryInterval;
        d.retryTime = record.RetryTime;
        d.hidden = IsHiddenDestID(record.ID) != FALSE;
        store.destinations.push_back(std::move(d));
    }
    store.idListKeys = CountIDListKeys();
    return true;
}

bool LoadMonitored(HMODULE rptset, Store& store, std::string* error) {
    AgentCatalogue agents;
    if (InitAllAgntSetting(rptset, agents) < 0) {
        *error = "the agent event catalogue cannot be read (GetAllAgntSetting failed)";
        return false;
    }
    SyslogCatalogue items;
    if (InitAllSyslogSetting(rptset, items) < 0) {
        *error = "the syslog monitoring items cannot be read (GetAllSyslogSetting failed)";
        return false;
    }
    store.events.clear();
    for (const AgentEventData* record : agents.data.records()) {
        if (record != nullptr)
            store.events.push_back(CopyMonitored(*record, false));
    }
    store.syslogItems.clear();
    for (const SyslogData* record : items.data.records()) {
        if (record != nullptr)
            store.syslogItems.push_back(CopySyslogItem(*record));
    }
    return true;
}

std::optional<Monitored> LoadEvent(HMODULE rptset, const std::string& source,
                                   const std::string& eventID) {
    if (EqualsNoCase(eventID, EVENT_ID_ALL))
        return std::nullopt;  // a whole source is no event
    auto record = AgentRecord::Allocate("zolctl event");
    if (record == nullptr || source.size() >= sizeof(*record)->SourceName ||
        eventID.size() >= sizeof(*record)->EventID)
        return std::nullopt;
    std::snprintf((*record)->SourceName, sizeof(*record)->SourceName, "%s", source.c_str());
    std::snprintf((*record)->EventID, sizeof(*record)->EventID, "%s", eventID.c_str());
    if (!GetAgntRecord(rptset, record->get()).ok())
        return std::nullopt;
    Monitored entry = CopyMonitored(**record, false);
    // The library keeps the caller's spelling: show the catalogue's own.
    const auto sources = SubkeyNames(ZOL_KEY_AGENTEVENT);
    for (const std::string& name : sources.value_or(std::vector<std::string>{})) {
        if (EqualsNoCase(name, source))
            entry.source = name;
    }
    const auto events = SubkeyNames(std::string(ZOL_KEY_AGENTEVENT) + "\\" + entry.source);
    for (const std::string& name : events.value_or(std::vector<std::string>{})) {
        if (EqualsNoCase(name, eventID))
            entry.eventID = name;
    }
    return entry;
}

bool LoadSourceItems(HMODULE rptset, const std::string& source, std::vector<Monitored>& items,
                     std::string* error) {
    items.clear();
    const auto sources = SubkeyNames(ZOL_KEY_SYSLOG);
    if (!sources) {
        *error = "the syslog monitoring items cannot be read";
        return false;
    }
    for (const std::string& name : *sources) {
        if (!EqualsNoCase(name, source))
            continue;
        const std::string path = std::string(ZOL_KEY_SYSLOG) + "\\" + name;
        for (const std::string& eventID : SubkeyNames(path).value_or(std::vector<std::string>{})) {
            auto record = SyslogRecord::Allocate("zolctl item");
            if (record == nullptr || eventID.size() >= sizeof(*record)->EventID) {
                *error = "the syslog item " + name + " " + eventID + " cannot be read";
                return false;
            }
            std::snprintf((*record)->SourceName, sizeof(*record)->SourceName, "%s", name.c_str());
            std::snprintf((*record)->EventID, sizeof(*record)->EventID, "%s", eventID.c_str());
            if (!GetSyslogRecord(rptset, record->get()).ok()) {
                *error = "the syslog item " + name + " " + eventID +
                         " cannot be read (GetSyslogSetting failed)";
                return false;
            }
            items.push_back(CopySyslogItem(**record));
        }
    }
    return true;
}

const Destination* FindDestination(const Store& store, std::string_view id) {
    for (const Destination& d : store.destinations) {
        if (EqualsNoCase(d.id, id))
            return &d;
    }
    return nullptr;
}

std::string HoursText(HMODULE dscopy, std::uint32_t mask) {
    if ((mask & DEST_DEFAULT_HOURMASK) == 0)
        return "(none)";
    char text[SCHEDULE_TEXT_MAX] = {};
    if (!MaskToScheduleText(dscopy, mask, text).ok())
        return "(unreadable)";
    return text;
}

std::string MonitoredKey(const Monitored& entry) {
    return std::string("HKLM\\") + (entry.syslog ? ZOL_KEY_SYSLOG : ZOL_KEY_AGENTEVENT) + "\\" +
           entry.source + "\\" + entry.eventID;
}

std::string ReadStoreText(const char* key, const char* value) {
    char data[REG_TEXT_SIZE] = {};
    DWORD type = 0;
    DWORD size = sizeof data - 1;
    if (!RegReadEx(HKEY_LOCAL_MACHINE, key, value, &type, &size, reinterpret_cast<BYTE*>(data)) ||
        type != REG_SZ)
        return {};
    return data;
}

std::string VantrelWhere(HMODULE rptset) {
    int method = -1;
    if (GetVntMethod(rptset, &method) != 0)
        return "the remote report service (its method cannot be read)";
    const auto orUnset = [](const std::string& text) {
        return text.empty() ? std::string("(not set)") : text;
    };
    switch (method) {
        case VANTREL_INTERNETMAIL: {
            char to[VNT_MAILTO_SIZE] = {};
            ReadVntTo(rptset, to);
            return "internet mail to " + orUnset(to);
        }
        case VANTREL_DIALUP: {
            VntDialData dial{};
            const bool read = GetDialUpParam(rptset, &dial).ok();
            return "dial-up to " + orUnset(read ? dial.PhoneNo1 : "");
        }
        case VANTREL_TRANSTOMANAGER: {
            char ip[VNT_MAILTO_SIZE] = {};
            std::uint32_t port = 0;
            if (!ReadManagerIP(rptset, ip).ok())
                return "via the manager (not set)";
            ReadManagerPort(rptset, &port);
            return "via the manager " + std::string(ip) + " port " + std::to_string(port);
        }
        case VANTREL_HTTPS:
            return "HTTPS to " + orUnset(ReadStoreText(ZOL_KEY_HTTPS_SETTING, "HTTPD1URL"));
        default:
            return "the remote report service (unknown method " + std::to_string(method) + ")";
    }
}

std::string ActionText(int action) {
    switch (action) {
        case EVENT_ACTION_NONE:
            return "none";
        case EVENT_ACTION_SHUTDOWN:
            return "shutdown";
        case EVENT_ACTION_REBOOT:
            return "reboot";
        default:
            return "unknown (" + std::to_string(action) + ")";
    }
}

std::string DealMethodText(const std::string& stored) {
    return stored == NO_US_DEALMETHOD ? std::string() : stored;
}

}  // namespace zolctl
