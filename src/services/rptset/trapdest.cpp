// rptset.dll: the SNMP trap destination list, kept whole in one REG_MULTI_SZ value (TrapDest)
// of the SNMP method's key, so that every change of the list is a single write. The trap screen
// applies what it changed to the list as stored at that moment, so that an address another
// process added meanwhile is kept.
#include <zolwin.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "regpaths.h"
#include "regvalue.h"
#include "rptset_api.h"

namespace {

constexpr const char* kSnmpMethodKey = ZOL_KEY_METHOD "\\" BASE_METHOD_SNMP;
constexpr const char* kTrapDestValue = "TrapDest";

using TrapList = std::vector<std::string>;

// Why an address cannot be a list entry; nullptr when it can.
const char* EntryRefusal(const char* entry) {
    if (entry == nullptr)
        return "a null entry";
    const std::size_t length = strnlen(entry, TRAP_DEST_SIZE);
    if (length == 0)
        return "an empty entry";
    if (length == TRAP_DEST_SIZE)
        return "an entry of 256 characters or more";
    return nullptr;
}

// Copies the caller's count and buffers into *out after checking them; nullptr when done,
// else why they were refused.
const char* ListFromCaller(int count, char** list, TrapList* out) {
    if (count < 0 || count > TRAP_DEST_MAX)
        return "a count outside 0 to 256";
    if (count > 0 && list == nullptr)
        return "no list";
    for (int i = 0; i < count; ++i) {
        if (const char* why = EntryRefusal(list[i]))
            return why;
        out->emplace_back(list[i]);
    }
    return nullptr;
}

// Reads the stored list. A missing key or value is the empty list; a value of another type or
// with more or longer entries than the list may hold is refused rather than shown in part.
LONG ReadList(TrapList* out) {
    rptset::Key key;
    LONG rc = key.OpenRead(HKEY_LOCAL_MACHINE, kSnmpMethodKey);
    if (rc == ERROR_FILE_NOT_FOUND)
        return ERROR_SUCCESS;
    if (rc != ERROR_SUCCESS)
        return rc;
    DWORD type = 0;
    DWORD size = 0;
    rc = RegQueryValueEx(key.get(), kTrapDestValue, nullptr, &type, nullptr, &size);
    if (rc == ERROR_FILE_NOT_FOUND)
        return ERROR_SUCCESS;
    if (rc != ERROR_SUCCESS)
        return rc;
    if (type != REG_MULTI_SZ) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: %s is not a REG_MULTI_SZ value.", kSnmpMethodKey,
                  kTrapDestValue);
        return ERROR_REGISTRY_CORRUPT;
    }
    // Room for both terminators, which the store adds when the stored data lacks them.
    std::string data(size + 2, '\0');
    size += 2;
    rc = RegQueryValueEx(key.get(), kTrapDestValue, nullptr, &type,
                         reinterpret_cast<BYTE*>(data.data()), &size);
    if (rc != ERROR_SUCCESS)
        return rc;
    // Items end at their zero; the empty item ends the list.
    for (std::size_t start = 0; start < size && data[start] != '\0';) {
        const std::size_t end = data.find('\0', start);
        if (out->size() == TRAP_DEST_MAX || end - start >= TRAP_DEST_SIZE) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: %s holds more or longer entries than allowed.",
                      kSnmpMethodKey, kTrapDestValue);
            return ERROR_REGISTRY_CORRUPT;
        }
        out->push_back(data.substr(start, end - start));
        start = end + 1;
    }
    return ERROR_SUCCESS;
}

// Replaces the stored list with `list` (creating the SNMP method's key if needed).
LONG WriteList(const TrapList& list) {
    std::string data;
    for (const std::string& entry : list) {
        data += entry;
        data += '\0';
    }
    data += '\0';
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    if (rc != ERROR_SUCCESS)
        return rc;
    rptset::Key key;
    rc = key.Create(HKEY_LOCAL_MACHINE, kSnmpMethodKey);
    if (rc == ERROR_SUCCESS) {
        rc = RegSetValueEx(key.get(), kTrapDestValue, 0, REG_MULTI_SZ,
                           reinterpret_cast<const BYTE*>(data.data()),
                           static_cast<DWORD>(data.size()));
    }
    return rc == ERROR_SUCCESS ? transaction.commit() : rc;
}

// Removes the first stored entry equal to address. The rest of the stored list is kept as
// stored: the caller's array may hold additions not yet confirmed, which a removal must not save.
// An address that is only in the caller's array leaves the store as it is.
LONG RemoveFromStored(const char* address) {
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    if (rc != ERROR_SUCCESS)
        return rc;
    TrapList stored;
    if ((rc = ReadList(&stored)) != ERROR_SUCCESS)
        return rc;
    for (auto it = stored.begin(); it != stored.end(); ++it) {
        if (*it == address) {
            stored.erase(it);
            if ((rc = WriteList(stored)) != ERROR_SUCCESS)
                return rc;
            break;
        }
    }
    return transaction.commit();
}

// Addresses no manager can have: "this host" and the limited broadcast.
bool UnusableAddress(const char* entry) {
    return std::strcmp(entry, "0.0.0.0") == 0 || std::strcmp(entry, "255.255.255.255") == 0;
}

// Applies removals, then additions, to the list as stored now, in one transaction. An address to
// remove that is no longer stored and one to add that is stored already change nothing; a list
// that would grow past TRAP_DEST_MAX is refused whole (ERROR_MORE_DATA).
LONG ApplyToStored(const TrapList& added, const TrapList& removed) {
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    if (rc != ERROR_SUCCESS)
        return rc;
    TrapList stored;
    if ((rc = ReadList(&stored)) != ERROR_SUCCESS)
        return rc;
    const TrapList before = stored;
    for (const std::string& address : removed) {
        const auto it = std::find(stored.begin(), stored.end(), address);
        if (it != stored.end())
            stored.erase(it);
    }
    for (const std::string& address : added) {
        if (std::find(stored.begin(), stored.end(), address) == stored.end())
            stored.push_back(address);
    }
    if (stored.size() > TRAP_DEST_MAX)
        return ERROR_MORE_DATA;
    if (stored != before && (rc = WriteList(stored)) != ERROR_SUCCESS)
        return rc;
    return transaction.commit();
}

void CopyEntry(char* buffer, const std::string& entry) {
    std::memcpy(buffer, entry.c_str(), entry.size() + 1);
}

}  // namespace

extern "C" ZOLWIN_API int GetTrapDest(int* count, char** list) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (count == nullptr || list == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    TrapList stored;
    const LONG rc = ReadList(&stored);
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<read of %s failed (%d).return 0.", kTrapDestValue,
                  static_cast<int>(rc));
        return 0;
    }
    for (std::size_t i = 0; i < stored.size(); ++i) {
        if (list[i] == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]list[%zu] is NULL.return 0.", i);
            return 0;
        }
    }
    for (std::size_t i = 0; i < stored.size(); ++i)
        CopyEntry(list[i], stored[i]);
    *count = static_cast<int>(stored.size());
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1. count=%d", *count);
    return 1;
}
static_assert(std::is_same_v<decltype(GetTrapDest), GetTrapDest_fn>);

extern "C" ZOLWIN_API int SetTrapDest(int count, char** list) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> count=%d", count);
    TrapList entries;
    if (const char* why = ListFromCaller(count, list, &entries)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: %s.return 0.", why);
        return 0;
    }
    const LONG rc = WriteList(entries);
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s failed (%d).return 0.", kTrapDestValue,
                  static_cast<int>(rc));
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(SetTrapDest), SetTrapDest_fn>);

extern "C" ZOLWIN_API int DelDest(int* count, const char* address, char** list) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (count == nullptr || address == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    TrapList entries;
    if (const char* why = ListFromCaller(*count, list, &entries)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: %s.return 0.", why);
        return 0;
    }
    // The first entry equal to the address, compared exactly as the screen compares entries.
    std::size_t found = 0;
    while (found < entries.size() && entries[found] != address)
        ++found;
    if (found == entries.size()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%.255s is not in the list.return 0.", address);
        return 0;
    }
    const LONG rc = RemoveFromStored(address);
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<removal from %s failed (%d).return 0.", kTrapDestValue,
                  static_cast<int>(rc));
        return 0;
    }
    // Stored: now the caller's array follows, the entries after the removed one moving up.
    entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(found));
    for (std::size_t i = found; i < entries.size(); ++i)
        CopyEntry(list[i], entries[i]);
    list[entries.size()][0] = '\0';
    *count = static_cast<int>(entries.size());
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1. count=%d", *count);
    return 1;
}
static_assert(std::is_same_v<decltype(DelDest), DelDest_fn>);

extern "C" ZOLWIN_API int ApplyTrapDest(int addCount, char** added, int removeCount,
                                        char** removed) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> added=%d removed=%d", addCount, removeCount);
    TrapList additions;
    TrapList removals;
    const char* why = ListFromCaller(addCount, added, &additions);
    if (why == nullptr)
        why = ListFromCaller(removeCount, removed, &removals);
    for (const std::string& address : additions) {
        if (why == nullptr && UnusableAddress(address.c_str()))
            why = "0.0.0.0 or 255.255.255.255 as a destination";
    }
    if (why != nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: %s.return 0.", why);
        return 0;
    }
    const LONG rc = ApplyToStored(additions, removals);
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<change of %s failed (%d).return 0.", kTrapDestValue,
                  static_cast<int>(rc));
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(ApplyTrapDest), ApplyTrapDest_fn>);
