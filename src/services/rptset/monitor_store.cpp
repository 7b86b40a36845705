// Reading and writing agent events and syslog monitoring items in the store. Both record types
// share their names, destination table, texts and numbers; a layout table per type lists the
// stored values that differ (the syslog item's keywords, count and time table).
#include "monitor_store.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "regvalue.h"

namespace rptset::monitor {

using zolwin::ReadSnapshot;
using zolwin::Transaction;

bool IsTerminated(const char* field, std::size_t size) {
    return field != nullptr && std::memchr(field, '\0', size) != nullptr;
}

bool IsKeyName(const char* field, std::size_t size) {
    if (!IsTerminated(field, size))
        return false;
    const std::size_t length = std::strlen(field);
    return length > 0 && length <= ZOL_MAX_KEY_NAME && std::strchr(field, '\\') == nullptr;
}

bool IsDestinationID(const char* id) {
    if (id == nullptr)
        return false;
    const std::size_t length = strnlen(id, DEST_TEXT_SIZE);
    return length > 0 && length < DEST_TEXT_SIZE;
}

bool IsAddableEventID(const char* id) {
    if (id == nullptr || strnlen(id, 9) != 8)
        return false;
    if (std::strchr("48cC", id[0]) == nullptr)
        return false;
    for (int i = 1; i < 8; ++i) {
        if (std::strchr("0123456789abcdefABCDEF", id[i]) == nullptr)
            return false;
    }
    return true;
}

bool IsAction(uint32_t value) {
    return value <= EVENT_ACTION_REBOOT;
}
bool IsErrKind(uint32_t value) {
    return (value >= 1 && value <= 4) || value == 6;
}
bool IsLevel(uint32_t value) {
    return value <= 8;
}
bool IsCount(uint32_t value) {
    return value <= INT32_MAX;
}
bool IsHourMask(uint32_t value) {
    return value <= 0xFFFFFFu;
}

namespace {

// Name of subkey `index` of key into name (ZOL_MAX_KEY_NAME + 1 bytes).
LONG SubkeyAt(HKEY key, DWORD index, char* name) {
    DWORD length = ZOL_MAX_KEY_NAME + 1;
    return RegEnumKeyEx(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
}

}  // namespace

LONG FindSubkey(HKEY key, const char* name, char* out) {
    for (DWORD index = 0;; ++index) {
        const LONG rc = SubkeyAt(key, index, out);
        if (rc == ERROR_NO_MORE_ITEMS)
            return ERROR_FILE_NOT_FOUND;
        if (rc != ERROR_SUCCESS)
            return rc;
        if (EqualsNoCase(out, name))
            return ERROR_SUCCESS;
    }
}

namespace {

// A stored text: the value name, where it lies in the record, and what a missing value reads as.
struct TextValue {
    const char* name;
    std::size_t offset;
    std::size_t size;
    const char* fallback;
};

// A stored REG_DWORD: the value name, where it lies in the record and its range. A missing or
// unusable value reads as 0. With zeroKeepsStored a 0 in a record being written means "not set"
// and leaves the stored value alone.
struct NumberValue {
    const char* name;
    std::size_t offset;
    bool (*valid)(uint32_t);
    bool zeroKeepsStored;
};

#define ZOL_TEXT(type, field, fallback)                              \
    TextValue {                                                      \
#field, offsetof(type, field), sizeof(type::field), fallback \
    }
#define ZOL_NUMBER(type, field, valid, keep)       \
    NumberValue {                                  \
#field, offsetof(type, field), valid, keep \
    }

template <class Record>
struct Layout;

template <>
struct Layout<AgentEventData> {
    static constexpr const char* kRoot = kAgentEventRoot;
    static constexpr const char* kNoun = "event";
    // Read by every reader; of these only DealMethod is written (when changed).
    static constexpr TextValue kTexts[] = {
        ZOL_TEXT(AgentEventData, TrapName, ""),
        ZOL_TEXT(AgentEventData, DealMethod, NO_US_DEALMETHOD),
    };
    // Read by every reader and written by SetAgntSetting.
    static constexpr NumberValue kNumbers[] = {
        ZOL_NUMBER(AgentEventData, Action, IsAction, false),
        ZOL_NUMBER(AgentEventData, ErrKind, IsErrKind, true),
        ZOL_NUMBER(AgentEventData, Level, IsLevel, false),
    };
};

template <>
struct Layout<SyslogData> {
    static constexpr const char* kRoot = kSyslogRoot;
    static constexpr const char* kNoun = "item";
    // The keywords are written only when an item is added.
    static constexpr TextValue kTexts[] = {
        ZOL_TEXT(SyslogData, TrapName, ""), ZOL_TEXT(SyslogData, DealMethod, NO_US_DEALMETHOD),
        ZOL_TEXT(SyslogData, Keyword1, ""), ZOL_TEXT(SyslogData, Keyword2, ""),
        ZOL_TEXT(SyslogData, Keyword3, ""),
    };
    static constexpr NumberValue kNumbers[] = {
        ZOL_NUMBER(SyslogData, Action, IsAction, false),
        ZOL_NUMBER(SyslogData, ErrKind, IsErrKind, true),
        ZOL_NUMBER(SyslogData, Level, IsLevel, false),
        ZOL_NUMBER(SyslogData, Count, IsCount, false),
        ZOL_NUMBER(SyslogData, TimeTable, IsHourMask, false),
    };
};

#undef ZOL_TEXT
#undef ZOL_NUMBER

template <class Record>
char* TextIn(Record* record, const TextValue& v) {
    return reinterpret_cast<char*>(record) + v.offset;
}
template <class Record>
uint32_t NumberIn(const Record* record, const NumberValue& v) {
    uint32_t value;
    std::memcpy(&value, reinterpret_cast<const char*>(record) + v.offset, sizeof value);
    return value;
}
template <class Record>
void SetNumber(Record* record, const NumberValue& v, uint32_t value) {
    std::memcpy(reinterpret_cast<char*>(record) + v.offset, &value, sizeof value);
}

// Frees a record handed out by the catalogue reader: its destination buffers, then itself.
template <class Record>
void FreeRecord(Record* record) {
    if (record == nullptr)
        return;
    for (char* id : record->lplpszDestID)
        std::free(id);
    std::free(record);
}
template <class Record>
struct RecordFree {
    void operator()(Record* r) const { FreeRecord(r); }
};
template <class Record>
using RecordPtr = std::unique_ptr<Record, RecordFree<Record>>;

// The destination IDs bound to an event key: the REG_DWORD values of its "Dest" subkey whose
// data is 1, in the store's order, at most EVENT_DEST_SLOTS.
LONG ReadDestIDs(HKEY eventKey, const char* where, std::vector<std::string>* ids) {
    ids->clear();
    Key dest;
    LONG rc = dest.OpenRead(eventKey, kDestSubkey);
    if (rc == ERROR_FILE_NOT_FOUND)
        return ERROR_SUCCESS;
    if (rc != ERROR_SUCCESS)
        return rc;
    // Destination IDs are key names, so one longer than a destination buffer is no binding.
    char name[DEST_TEXT_SIZE];
    for (DWORD index = 0;; ++index) {
        DWORD nameLength = sizeof name;
        DWORD type = 0;
        DWORD data = 0;
        DWORD size = sizeof data;
        rc = RegEnumValue(dest.get(), index, name, &nameLength, nullptr, &type,
                          reinterpret_cast<BYTE*>(&data), &size);
        if (rc == ERROR_NO_MORE_ITEMS)
            return ERROR_SUCCESS;
        if (rc != ERROR_SUCCESS && rc != ERROR_MORE_DATA)
            return rc;
        if (rc == ERROR_MORE_DATA || type != REG_DWORD || size != sizeof data || data != 1) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: Dest value %lu is not a binding; skipped.", where,
                      static_cast<unsigned long>(index));
            continue;
        }
        if (ids->size() == EVENT_DEST_SLOTS) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: more than %d destination IDs; %s and later skipped.",
                      where, EVENT_DEST_SLOTS, name);
            return ERROR_SUCCESS;
        }
        ids->emplace_back(name, nameLength);
    }
}

// Stores one text value read whole (data of size bytes) into its field, cut to fit.
void StoreText(const TextValue& v, char* field, const char* where, const char* data, DWORD size) {
    std::size_t n = strnlen(data, size);
    if (n > v.size - 1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: %s is too long; cut to fit.", where, v.name);
        n = v.size - 1;
    }
    std::memcpy(field, data, n);
    field[n] = '\0';
}

// Reads the settings of one event key into record (names, destination table and the fields the
// layout does not list are left alone) and its destination IDs into ids. Unusable stored values
// are traced and read as their fallback; only a store failure fails. One pass over the key's
// values: whole catalogues are read this way, so each value costs one call.
template <class Record>
LONG ReadEventValues(HKEY eventKey, const char* where, Record* record,
                     std::vector<std::string>* ids) {
    constexpr auto& texts = Layout<Record>::kTexts;
    constexpr auto& numbers = Layout<Record>::kNumbers;
    bool textSeen[std::size(texts)] = {};
    bool numberSeen[std::size(numbers)] = {};
    char name[64];    // longer than any listed name
    char data[1024];  // larger than any text field
    for (DWORD index = 0;; ++index) {
        DWORD nameLength = sizeof name, type = 0, size = sizeof data;
        LONG rc = RegEnumValue(eventKey, index, name, &nameLength, nullptr, &type,
                               reinterpret_cast<BYTE*>(data), &size);
        if (rc == ERROR_NO_MORE_ITEMS)
            break;
        bool oversized = false;
        if (rc == ERROR_MORE_DATA) {
            // Either a name that is none of ours, or data larger than any field: ask again.
            nameLength = sizeof name;
            rc = RegEnumValue(eventKey, index, name, &nameLength, nullptr, &type, nullptr, nullptr);
            if (rc == ERROR_MORE_DATA)
                continue;
            oversized = true;
        }
        if (rc != ERROR_SUCCESS)
            return rc;
        for (std::size_t i = 0; i < std::size(texts); ++i) {
            const TextValue& v = texts[i];
            if (!EqualsNoCase(name, v.name))
                continue;
            textSeen[i] = true;
            char* field = TextIn(record, v);
            if (type != REG_SZ && type != REG_EXPAND_SZ) {
                ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: %s has the wrong type.", where, v.name);
                std::strcpy(field, v.fallback);
            } else if (oversized) {
                if (ReadTextField(eventKey, v.name, field, v.size) == ValueRead::Failed)
                    return ERROR_REGISTRY_IO_FAILED;
                ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: %s is too long; cut to fit.", where, v.name);
            } else {
                StoreText(v, field, where, data, size);
            }
        }
        for (std::size_t i = 0; i < std::size(numbers); ++i) {
            const NumberValue& v = numbers[i];
            if (!EqualsNoCase(name, v.name))
                continue;
            numberSeen[i] = true;
            uint32_t value = 0;
            if (!oversized && type == REG_DWORD && size == sizeof value)
                std::memcpy(&value, data, sizeof value);
            if (oversized || type != REG_DWORD || size != sizeof value || !v.valid(value)) {
                ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: %s is not usable; read as 0.", where, v.name);
                value = 0;
            }
            SetNumber(record, v, value);
        }
    }
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        if (!textSeen[i])
            std::strcpy(TextIn(record, texts[i]), texts[i].fallback);
    }
    for (std::size_t i = 0; i < std::size(numbers); ++i) {
        if (!numberSeen[i])
            SetNumber(record, numbers[i], 0);
    }
    return ReadDestIDs(eventKey, where, ids);
}

// Reads every event of one open source key into list, tracking the most events of one source.
template <class Record>
LONG ReadSource(HKEY sourceKey, const char* source, std::vector<RecordPtr<Record>>* list) {
    char event[ZOL_MAX_KEY_NAME + 1];
    std::vector<std::string> ids;
    for (DWORD index = 0;; ++index) {
        LONG rc = SubkeyAt(sourceKey, index, event);
        if (rc == ERROR_NO_MORE_ITEMS)
            return ERROR_SUCCESS;
        if (rc != ERROR_SUCCESS)
            return rc;
        Key eventKey;
        if ((rc = eventKey.OpenRead(sourceKey, event)) != ERROR_SUCCESS)
            return rc;
        RecordPtr<Record> record(static_cast<Record*>(std::calloc(1, sizeof(Record))));
        if (!record)
            return ERROR_NOT_ENOUGH_MEMORY;
        std::strcpy(record->SourceName, source);
        std::strcpy(record->EventID, event);
        if ((rc = ReadEventValues(eventKey.get(), event, record.get(), &ids)) != ERROR_SUCCESS) {
            return rc;
        }
        for (const std::string& id : ids) {
            char* copy = static_cast<char*>(std::malloc(id.size() + 1));
            if (copy == nullptr)
                return ERROR_NOT_ENOUGH_MEMORY;
            std::memcpy(copy, id.c_str(), id.size() + 1);
            record->lplpszDestID[record->DestNum++] = copy;
        }
        list->push_back(std::move(record));
    }
}

// Fills the fields of an "All" record: a whole source has no settings of its own.
template <class Record>
void ClearForWholeSource(Record* record) {
    for (const TextValue& v : Layout<Record>::kTexts)
        std::strcpy(TextIn(record, v), v.fallback);
    for (const NumberValue& v : Layout<Record>::kNumbers)
        SetNumber(record, v, 0);
    record->DestNum = 0;
}

// The stored spelling of a destination ID (ERROR_FILE_NOT_FOUND when there is no such ID).
LONG FindDestination(const char* id, char* stored) {
    Key idList;
    const LONG rc = idList.OpenRead(HKEY_LOCAL_MACHINE, kIDListKey);
    if (rc != ERROR_SUCCESS)
        return rc;
    return FindSubkey(idList.get(), id, stored);
}

constexpr LONG kTooManyDestinations = -50;

// Sets (flag 1) or clears (flag 0) the binding of one destination ID in an event key.
LONG SetBinding(HKEY eventKey, const char* id, int32_t flag) {
    Key dest;
    LONG rc =
        flag == 1 ? dest.Create(eventKey, kDestSubkey) : dest.OpenWrite(eventKey, kDestSubkey);
    if (flag == 0) {
        if (rc == ERROR_FILE_NOT_FOUND)
            return ERROR_SUCCESS;
        if (rc != ERROR_SUCCESS)
            return rc;
        rc = RegDeleteValue(dest.get(), id);
        return rc == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : rc;
    }
    if (rc != ERROR_SUCCESS)
        return rc;
    // Count the other IDs already bound: the new one must leave room in the record's table.
    int others = 0;
    char name[DEST_TEXT_SIZE];
    for (DWORD index = 0;; ++index) {
        DWORD length = sizeof name;
        rc = RegEnumValue(dest.get(), index, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (rc == ERROR_NO_MORE_ITEMS)
            break;
        if (rc == ERROR_MORE_DATA) {
            ++others;  // a name longer than any ID: not this one
            continue;
        }
        if (rc != ERROR_SUCCESS)
            return rc;
        if (!EqualsNoCase(name, id))
            ++others;
    }
    if (others >= EVENT_DEST_SLOTS)
        return kTooManyDestinations;
    const DWORD one = 1;
    return RegSetValueEx(dest.get(), id, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&one),
                         sizeof one);
}

// Checks shared by both writers; traces the refusal.
template <class Record>
bool WritableRecord(const Record* record) {
    if (record == nullptr || !IsKeyName(record->SourceName, sizeof record->SourceName)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "bad record or source name.");
        return false;
    }
    if (record->ReportFlag != 0 && record->ReportFlag != 1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "report flag %d is neither 0 nor 1.",
                  static_cast<int>(record->ReportFlag));
        return false;
    }
    if (!IsDestinationID(record->lplpszDestID[0])) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "lplpszDestID[0] holds no destination ID.");
        return false;
    }
    return true;
}

// Maps a store or binding failure inside a writer to its result, tracing it.
int WriteFailure(LONG rc, const char* what) {
    if (rc == kTooManyDestinations) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "%s already reports to %d destination IDs.", what,
                  EVENT_DEST_SLOTS);
    } else {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "store write for %s failed (%d).", what, static_cast<int>(rc));
    }
    return kFailed;
}

}  // namespace

template <class Record>
int ReadCatalogue(Record*** records, int* count, int* numSN, int* numEvntID) {
    if (records == nullptr || count == nullptr || numSN == nullptr || numEvntID == nullptr)
        return -1;
    std::vector<RecordPtr<Record>> list;
    int sources = 0;
    std::size_t mostEvents = 0;
    LONG rc;
    {
        // The catalogue cannot change between enumeration and reads.
        ReadSnapshot snapshot;
        Key root;
        rc = root.OpenRead(HKEY_LOCAL_MACHINE, Layout<Record>::kRoot);
        if (rc == ERROR_FILE_NOT_FOUND)
            rc = ERROR_NO_MORE_ITEMS;  // no catalogue yet: an empty one
        else if (rc == ERROR_SUCCESS)
            ZolRegReadAhead(root.get());  // a hint only: the reads below work without it
        char source[ZOL_MAX_KEY_NAME + 1];
        for (DWORD index = 0; rc == ERROR_SUCCESS; ++index) {
            if ((rc = SubkeyAt(root.get(), index, source)) != ERROR_SUCCESS)
                break;
            Key sourceKey;
            if ((rc = sourceKey.OpenRead(root.get(), source)) != ERROR_SUCCESS)
                break;
            const std::size_t before = list.size();
            rc = ReadSource(sourceKey.get(), source, &list);
            const std::size_t events = list.size() - before;
            sources += events > 0 ? 1 : 0;
            mostEvents = std::max(mostEvents, events);
        }
        if (rc == ERROR_NO_MORE_ITEMS)
            rc = ERROR_SUCCESS;
    }
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "read of %s failed (%d).", Layout<Record>::kRoot,
                  static_cast<int>(rc));
        return -1;
    }
    Record** array = nullptr;
    if (!list.empty()) {
        array = static_cast<Record**>(std::malloc(list.size() * sizeof(Record*)));
        if (array == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_FAILURE, "malloc of %zu record pointers failed.", list.size());
            return -1;
        }
        for (std::size_t i = 0; i < list.size(); ++i)
            array[i] = list[i].release();
    }
    *records = array;
    *count = static_cast<int>(list.size());
    // One slot more than names: the screens compare against every slot and copy into the next
    // free one.
    *numSN = sources + 1;
    *numEvntID = static_cast<int>(mostEvents) + 1;
    return 0;
}

template <class Record>
int ReadOne(Record* record) {
    if (record == nullptr || !IsKeyName(record->SourceName, sizeof record->SourceName) ||
        !IsTerminated(record->EventID, sizeof record->EventID)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "bad record or names.");
        return -1;
    }
    const bool wholeSource = std::strcmp(record->EventID, EVENT_ID_ALL) == 0;
    if (!wholeSource && !IsKeyName(record->EventID, sizeof record->EventID)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "no such %s: %s\\%s.", Layout<Record>::kNoun,
                  record->SourceName, record->EventID);
        return 2;
    }
    const std::string path = std::string(Layout<Record>::kRoot) + "\\" + record->SourceName +
                             (wholeSource ? std::string() : std::string("\\") + record->EventID);
    // Filled aside: a failed read leaves the caller's record as it was.
    auto fresh = std::make_unique<Record>(*record);
    std::vector<std::string> ids;
    LONG rc;
    {
        ReadSnapshot snapshot;
        Key key;
        rc = key.OpenRead(HKEY_LOCAL_MACHINE, path.c_str());
        if (rc == ERROR_SUCCESS) {
            if (wholeSource)
                ClearForWholeSource(fresh.get());
            else
                rc = ReadEventValues(key.get(), record->EventID, fresh.get(), &ids);
        }
    }
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "read of %s failed (%d).", path.c_str(), static_cast<int>(rc));
        return rc == ERROR_FILE_NOT_FOUND ? 2 : -1;
    }
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (record->lplpszDestID[i] == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "lplpszDestID[%zu] is NULL.", i);
            return -1;
        }
    }
    for (std::size_t i = 0; i < ids.size(); ++i)
        std::memcpy(record->lplpszDestID[i], ids[i].c_str(), ids[i].size() + 1);
    fresh->DestNum = static_cast<int32_t>(ids.size());
    *record = *fresh;
    return 0;
}

template <class Record>
int WriteOne(Record* record, int changed) {
    if (!WritableRecord(record))
        return kFailed;
    if (!IsKeyName(record->EventID, sizeof record->EventID) ||
        std::strcmp(record->EventID, EVENT_ID_ALL) == 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "bad event ID (a whole source is written per source).");
        return kFailed;
    }
    for (const NumberValue& v : Layout<Record>::kNumbers) {
        const uint32_t value = NumberIn(record, v);
        if (!v.valid(value) && !(v.zeroKeepsStored && value == 0)) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s %lu is out of range.", v.name,
                      static_cast<unsigned long>(value));
            return kFailed;
        }
    }
    const bool writeMethod = changed == 1;
    if (writeMethod && !IsTerminated(record->DealMethod, sizeof record->DealMethod)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "DealMethod has no terminator.");
        return kFailed;
    }
    const std::string path =
        std::string(Layout<Record>::kRoot) + "\\" + record->SourceName + "\\" + record->EventID;

    Transaction tx;
    if (tx.status() != ERROR_SUCCESS)
        return WriteFailure(tx.status(), path.c_str());
    Key key;
    LONG rc = key.OpenWrite(HKEY_LOCAL_MACHINE, path.c_str());
    if (rc == ERROR_FILE_NOT_FOUND) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "no such %s: %s.", Layout<Record>::kNoun, path.c_str());
        return kFailed;
    }
    if (rc != ERROR_SUCCESS)
        return WriteFailure(rc, path.c_str());
    char destination[ZOL_MAX_KEY_NAME + 1];
    rc = FindDestination(record->lplpszDestID[0], destination);
    if (rc == ERROR_FILE_NOT_FOUND) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "no destination ID %s.", record->lplpszDestID[0]);
        return kNoSuchDestination;
    }
    if (rc != ERROR_SUCCESS)
        return WriteFailure(rc, kIDListKey);

    for (const NumberValue& v : Layout<Record>::kNumbers) {
        const DWORD value = NumberIn(record, v);
        if (v.zeroKeepsStored && value == 0)
            continue;
        rc = WriteDword(key.get(), v.name, value);
        if (rc != ERROR_SUCCESS)
            return WriteFailure(rc, path.c_str());
    }
    if (writeMethod) {
        rc = WriteText(key.get(), "DealMethod", record->DealMethod);
        if (rc != ERROR_SUCCESS)
            return WriteFailure(rc, path.c_str());
    }
    if ((rc = SetBinding(key.get(), destination, record->ReportFlag)) != ERROR_SUCCESS)
        return WriteFailure(rc, path.c_str());
    if ((rc = tx.commit()) != ERROR_SUCCESS)
        return WriteFailure(rc, path.c_str());
    return kWritten;
}

template <class Record>
int WriteFlagForSource(Record* record) {
    if (!WritableRecord(record))
        return kFailed;
    const std::string path = std::string(Layout<Record>::kRoot) + "\\" + record->SourceName;

    Transaction tx;
    if (tx.status() != ERROR_SUCCESS)
        return WriteFailure(tx.status(), path.c_str());
    Key source;
    LONG rc = source.OpenWrite(HKEY_LOCAL_MACHINE, path.c_str());
    if (rc == ERROR_FILE_NOT_FOUND) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "no such source: %s.", path.c_str());
        return kFailed;
    }
    if (rc != ERROR_SUCCESS)
        return WriteFailure(rc, path.c_str());
    char destination[ZOL_MAX_KEY_NAME + 1];
    rc = FindDestination(record->lplpszDestID[0], destination);
    if (rc == ERROR_FILE_NOT_FOUND) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "no destination ID %s.", record->lplpszDestID[0]);
        return kNoSuchDestination;
    }
    if (rc != ERROR_SUCCESS)
        return WriteFailure(rc, kIDListKey);

    char event[ZOL_MAX_KEY_NAME + 1];
    for (DWORD index = 0;; ++index) {
        rc = SubkeyAt(source.get(), index, event);
        if (rc == ERROR_NO_MORE_ITEMS)
            break;
        if (rc != ERROR_SUCCESS)
            return WriteFailure(rc, path.c_str());
        Key eventKey;
        if ((rc = eventKey.OpenWrite(source.get(), event)) != ERROR_SUCCESS ||
            (rc = SetBinding(eventKey.get(), destination, record->ReportFlag)) != ERROR_SUCCESS) {
            return WriteFailure(rc, (path + "\\" + event).c_str());
        }
    }
    if ((rc = tx.commit()) != ERROR_SUCCESS)
        return WriteFailure(rc, path.c_str());
    return kWritten;
}

template int ReadCatalogue(AgentEventData***, int*, int*, int*);
template int ReadCatalogue(SyslogData***, int*, int*, int*);
template int ReadOne(AgentEventData*);
template int ReadOne(SyslogData*);
template int WriteOne(AgentEventData*, int);
template int WriteOne(SyslogData*, int);
template int WriteFlagForSource(AgentEventData*);
template int WriteFlagForSource(SyslogData*);

}  // namespace rptset::monitor
