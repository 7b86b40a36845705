// rptset.dll: the syslog monitoring items, their report settings, and adding and deleting items.
// Storage and checks are shared with the agent events (monitor_store.h).
#include <zolwin.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

#include "monitor_store.h"
#include "regvalue.h"
#include "rptset_api.h"

namespace monitor = rptset::monitor;

namespace {

// Results of AddSyslogItem.
constexpr int kAdded = 1;
constexpr int kEventExists = -3;
constexpr int kSourceSpelledOtherwise = -4;
// Results of DelSyslogItem.
constexpr int kDeleted = 0;
constexpr int kNoSuchItem = -2;

// Checks of a new item, in the order of the add dialog; the first failure is traced.
bool AddableItem(const SyslogData* r) {
    if (r == nullptr)
        return false;
    struct Check {
        bool ok;
        const char* failure;
    };
    const Check checks[] = {
        {monitor::IsKeyName(r->SourceName, sizeof r->SourceName),
         "source name empty, too long or not one key name"},
        {monitor::IsTerminated(r->Keyword1, sizeof r->Keyword1) &&
             monitor::IsTerminated(r->Keyword2, sizeof r->Keyword2) &&
             monitor::IsTerminated(r->Keyword3, sizeof r->Keyword3),
         "keyword longer than 256"},
        {monitor::IsTerminated(r->TrapName, sizeof r->TrapName), "trap name longer than 80"},
        {monitor::IsTerminated(r->DealMethod, sizeof r->DealMethod),
         "handling method longer than 511"},
        {r->Keyword1[0] != '\0' || r->Keyword2[0] != '\0' || r->Keyword3[0] != '\0', "no keyword"},
        {monitor::IsTerminated(r->EventID, sizeof r->EventID) &&
             monitor::IsAddableEventID(r->EventID),
         "event ID not of the form [48cC] and seven hexadecimal digits"},
    };
    for (const Check& c : checks) {
        if (!c.ok) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "bad item: %s.", c.failure);
            return false;
        }
    }
    return true;
}

// Writes the values of a new item into its (new) key.
LONG WriteNewItem(HKEY item, const SyslogData* r) {
    // An item added without a handling method carries the marker of a method never set.
    const char* method = r->DealMethod[0] != '\0' ? r->DealMethod : NO_US_DEALMETHOD;
    const std::pair<const char*, const char*> texts[] = {
        {"Keyword1", r->Keyword1}, {"Keyword2", r->Keyword2}, {"Keyword3", r->Keyword3},
        {"TrapName", r->TrapName}, {"DealMethod", method},
    };
    for (const auto& [name, text] : texts) {
        const LONG rc = RegSetValueEx(item, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                                      static_cast<DWORD>(std::strlen(text) + 1));
        if (rc != ERROR_SUCCESS)
            return rc;
    }
    // A new item starts with no count, no time table, no action and no destination; its error
    // kind stays unset.
    const DWORD zero = 0;
    for (const char* name : {"Count", "TimeTable", "Action", "Level"}) {
        const LONG rc = RegSetValueEx(item, name, 0, REG_DWORD,
                                      reinterpret_cast<const BYTE*>(&zero), sizeof zero);
        if (rc != ERROR_SUCCESS)
            return rc;
    }
    return ERROR_SUCCESS;
}

int AddFailure(LONG rc) {
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<store write failed (%d).return -1.", static_cast<int>(rc));
    return -1;
}

// The items of a source key left after a deletion: the source key goes with its last item.
LONG DropSourceIfEmpty(HKEY root, const char* source) {
    char first[ZOL_MAX_KEY_NAME + 1];
    LONG rc;
    {
        rptset::Key key;
        if ((rc = key.OpenRead(root, source)) != ERROR_SUCCESS)
            return rc;
        DWORD length = sizeof first;
        rc = RegEnumKeyEx(key.get(), 0, first, &length, nullptr, nullptr, nullptr, nullptr);
    }
    if (rc == ERROR_SUCCESS)
        return ERROR_SUCCESS;  // items remain
    if (rc != ERROR_NO_MORE_ITEMS)
        return rc;
    return RegDeleteKey(root, source);
}

}  // namespace

// As GetAllAgntSetting, for the syslog monitoring items.
extern "C" ZOLWIN_API int GetAllSyslogSetting(SyslogData*** records, int* count, int* numSN,
                                              int* numEvntID) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const int rc = monitor::ReadCatalogue(records, count, numSN, numEvntID);
    if (rc != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<return %d.", rc);
        return rc;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. count=%d numSN=%d numEvntID=%d", *count, *numSN,
              *numEvntID);
    return 0;
}
static_assert(std::is_same_v<decltype(GetAllSyslogSetting), GetAllSyslogSetting_fn>);

// As GetAgntSetting; the keywords, count and time table are read too.
extern "C" ZOLWIN_API int GetSyslogSetting(SyslogData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const int rc = monitor::ReadOne(record);
    ZOL_TRACE(rc == 0 ? TRACE_LEVEL_TRACE : TRACE_LEVEL_ERROR, "<return %d.", rc);
    return rc;
}
static_assert(std::is_same_v<decltype(GetSyslogSetting), GetSyslogSetting_fn>);

// As SetAgntSetting, also writing Count (0 and up) and TimeTable (an hour mask); the keywords and
// the trap name stay as stored.
extern "C" ZOLWIN_API int SetSyslogSetting(SyslogData* record, int changed) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> changed=%d", changed);
    const int rc = monitor::WriteOne(record, changed);
    ZOL_TRACE(rc == 0 ? TRACE_LEVEL_TRACE : TRACE_LEVEL_ERROR, "<return %d.", rc);
    return rc;
}
static_assert(std::is_same_v<decltype(SetSyslogSetting), SetSyslogSetting_fn>);

// As SetAgntDataForSN, for every item of the record's source.
extern "C" ZOLWIN_API int SetSyslogDataForSN(SyslogData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const int rc = monitor::WriteFlagForSource(record);
    ZOL_TRACE(rc == 0 ? TRACE_LEVEL_TRACE : TRACE_LEVEL_ERROR, "<return %d.", rc);
    return rc;
}
static_assert(std::is_same_v<decltype(SetSyslogDataForSN), SetSyslogDataForSN_fn>);

// Adds an item: 1 added; -4 when the source is stored under another spelling (checked first, so
// that one source never has two spellings); -3 when the source already has the event ID
// (without regard to case); -1 for a bad record or a failed write.
extern "C" ZOLWIN_API int AddSyslogItem(SyslogData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (!AddableItem(record)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<return -1.");
        return -1;
    }
    zolwin::Transaction tx;
    if (tx.status() != ERROR_SUCCESS)
        return AddFailure(tx.status());
    rptset::Key root;
    LONG rc = root.Create(HKEY_LOCAL_MACHINE, monitor::kSyslogRoot);
    if (rc != ERROR_SUCCESS)
        return AddFailure(rc);
    char stored[ZOL_MAX_KEY_NAME + 1];
    rc = monitor::FindSubkey(root.get(), record->SourceName, stored);
    if (rc == ERROR_SUCCESS) {
        if (std::strcmp(stored, record->SourceName) != 0) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<source stored as %s.return -4.", stored);
            return kSourceSpelledOtherwise;
        }
        rptset::Key existing;
        const std::string path = std::string(stored) + "\\" + record->EventID;
        rc = existing.OpenRead(root.get(), path.c_str());
        if (rc == ERROR_SUCCESS) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s exists.return -3.", path.c_str());
            return kEventExists;
        }
        if (rc != ERROR_FILE_NOT_FOUND)
            return AddFailure(rc);
    } else if (rc != ERROR_FILE_NOT_FOUND) {
        return AddFailure(rc);
    }
    rptset::Key item;
    const std::string path = std::string(record->SourceName) + "\\" + record->EventID;
    if ((rc = item.Create(root.get(), path.c_str())) != ERROR_SUCCESS ||
        (rc = WriteNewItem(item.get(), record)) != ERROR_SUCCESS ||
        (rc = tx.commit()) != ERROR_SUCCESS) {
        return AddFailure(rc);
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return kAdded;
}
static_assert(std::is_same_v<decltype(AddSyslogItem), AddSyslogItem_fn>);

// Deletes one item with its destination bindings, and its source key when it was the last item;
// the event ID "All" deletes the whole source. 0 deleted; -2 no such item or source; -1 for null
// or unusable names or a failed write. (-3 is never returned: nothing is refused.)
extern "C" ZOLWIN_API int DelSyslogItem(const char* source, const char* eventID) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> source=%s eventID=%s", source ? source : "(null)",
              eventID ? eventID : "(null)");
    if (!monitor::IsKeyName(source, ZOL_MAX_KEY_NAME + 1) ||
        !monitor::IsKeyName(eventID, ZOL_MAX_KEY_NAME + 1)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    const bool wholeSource = std::strcmp(eventID, EVENT_ID_ALL) == 0;
    zolwin::Transaction tx;
    LONG rc = tx.status();
    rptset::Key root;
    if (rc == ERROR_SUCCESS)
        rc = root.OpenWrite(HKEY_LOCAL_MACHINE, monitor::kSyslogRoot);
    if (rc == ERROR_SUCCESS) {
        const std::string target =
            wholeSource ? std::string(source) : std::string(source) + "\\" + eventID;
        rc = rptset::DeleteTree(root.get(), target.c_str());
        if (rc == ERROR_SUCCESS && !wholeSource)
            rc = DropSourceIfEmpty(root.get(), source);
    }
    if (rc == ERROR_SUCCESS)
        rc = tx.commit();
    if (rc == ERROR_FILE_NOT_FOUND) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<no such item.return -2.");
        return kNoSuchItem;
    }
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<store write failed (%d).return -1.", static_cast<int>(rc));
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return kDeleted;
}
static_assert(std::is_same_v<decltype(DelSyslogItem), DelSyslogItem_fn>);
