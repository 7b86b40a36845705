// The catalogues of the two list screens (agent events, syslog items) as the report-settings
// library hands them back, the searches the lists make in them, and the records the per-item
// screens read and write.
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include "frame/rptset_calls.h"
#include "monitor/monitor.h"

template <class Record>
void CatalogueRecords<Record>::adopt(Record** records, int count) {
    reset();
    records_ = records;
    count_ = records != nullptr && count > 0 ? count : 0;
}

template <class Record>
void CatalogueRecords<Record>::reset() {
    if (records_ != nullptr) {
        for (int i = 0; i < count_; ++i) {
            Record* record = records_[i];
            if (record == nullptr)
                continue;
            for (char* id : record->lplpszDestID)
                std::free(id);
            std::free(record);
        }
        std::free(records_);
    }
    records_ = nullptr;
    count_ = 0;
}

template <class Record>
std::span<Record* const> CatalogueRecords<Record>::records() const {
    if (records_ == nullptr)
        return {};
    return {records_, static_cast<std::size_t>(count_)};
}

template <class Record>
OwnedRecord<Record>::OwnedRecord()
    : record_(std::make_unique<Record>()),
      destIDs_(static_cast<std::size_t>(EVENT_DEST_SLOTS) * DEST_TEXT_SIZE, '\0') {
    for (int i = 0; i < EVENT_DEST_SLOTS; ++i)
        record_->lplpszDestID[i] = destIDs_.data() + static_cast<std::size_t>(i) * DEST_TEXT_SIZE;
}

template <class Record>
std::unique_ptr<OwnedRecord<Record>> OwnedRecord<Record>::Allocate(const char* what) {
    try {
        return std::unique_ptr<OwnedRecord>(new OwnedRecord());
    } catch (const std::bad_alloc&) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<%s malloc failed.return FALSE.", what);
        return nullptr;
    }
}

namespace {

// A catalogue text as its 512-byte slot holds it.
std::string_view SlotText(const char* text) {
    return {text, strnlen(text, kNameSlotSize - 1)};
}

}  // namespace

namespace {

// The trace line of a slot array that could not be made, in each screen's words.
template <class Record>
struct SlotFailure;
template <>
struct SlotFailure<AgentEventData> {
    static constexpr const char* kSources = "<malloc Agn_SourceName failed.return -1.";
    static constexpr const char* kEvents = "<malloc Agn_EventID failed.return -1.";
};
template <>
struct SlotFailure<SyslogData> {
    static constexpr const char* kSources = "<SYS_SourceName malloc failed.return -1.";
    static constexpr const char* kEvents = "<SYS_EventID malloc failed.return -1.";
};

// Room for `slots` names (none for a negative count); false after the trace line when the
// number cannot be held.
bool ReserveSlots(std::vector<std::string>& names, int slots, const char* failure) {
    try {
        names.reserve(static_cast<std::size_t>(slots > 0 ? slots : 0));
        return true;
    } catch (const std::exception&) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "%s", failure);
        return false;
    }
}

}  // namespace

template <class Record>
bool Catalogue<Record>::Adopt(Record** records, int count, int sourceSlots, int eventSlots) {
    data.adopt(records, count);
    sourceNames.clear();
    eventIDs.clear();
    numSN = numEvntID = 0;
    if (!ReserveSlots(sourceNames, sourceSlots, SlotFailure<Record>::kSources) ||
        !ReserveSlots(eventIDs, eventSlots, SlotFailure<Record>::kEvents)) {
        data.reset();
        return false;
    }
    numSN = sourceSlots > 0 ? sourceSlots : 0;
    numEvntID = eventSlots > 0 ? eventSlots : 0;
    return true;
}

template <class Record>
int Catalogue<Record>::FindAllSourceName() {
    sourceNames.clear();
    for (const Record* record : data.records()) {
        if (record == nullptr)
            continue;
        const std::string_view name = SlotText(record->SourceName);
        // An empty name equals every empty slot, so it is never copied.
        if (name.empty())
            continue;
        bool found = false;
        for (const std::string& slot : sourceNames)
            found = found || slot == name;
        if (found)
            continue;
        if (sourceNames.size() >= static_cast<std::size_t>(numSN)) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "no source-name slot left for %.*s.",
                      static_cast<int>(name.size()), name.data());
            continue;
        }
        sourceNames.emplace_back(name);
    }
    return static_cast<int>(sourceNames.size());
}

template <class Record>
int Catalogue<Record>::FindEventID(std::string_view sourcename) {
    eventIDs.clear();
    for (const Record* record : data.records()) {
        if (record == nullptr || SlotText(record->SourceName) != sourcename)
            continue;
        if (eventIDs.size() >= static_cast<std::size_t>(numEvntID)) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "no event-ID slot left in %.*s.",
                      static_cast<int>(sourcename.size()), sourcename.data());
            break;
        }
        eventIDs.emplace_back(SlotText(record->EventID));
    }
    return static_cast<int>(eventIDs.size());
}

template class CatalogueRecords<AgentEventData>;
template class CatalogueRecords<SyslogData>;
template class OwnedRecord<AgentEventData>;
template class OwnedRecord<SyslogData>;
template struct Catalogue<AgentEventData>;
template struct Catalogue<SyslogData>;

int InitAllAgntSetting(HMODULE lib, AgentCatalogue& catalogue) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    AgentEventData** records = nullptr;
    int count = 0, sourceSlots = 0, eventSlots = 0;
    const LibResult r = GetAllAgntRecords(lib, &records, &count, &sourceSlots, &eventSlots);
    if (r.unbound()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Get GetAllAgntSetting Address Failed,return -1.");
        return -1;
    }
    if (!r) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Get AgentSetting from registry failed,return -1.");
        return -1;
    }
    if (!catalogue.Adopt(records, count, sourceSlots, eventSlots))
        return -1;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", catalogue.data.count());
    return catalogue.data.count();
}

int InitAllSyslogSetting(HMODULE lib, SyslogCatalogue& catalogue) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    SyslogData** records = nullptr;
    int count = 0, sourceSlots = 0, eventSlots = 0;
    const LibResult r = GetAllSyslogRecords(lib, &records, &count, &sourceSlots, &eventSlots);
    if (r.unbound()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Get GetAllSyslogSetting Address Failed.return -1.");
        return -1;
    }
    if (!r) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetAllSyslogSetting() failed.return -1.");
        return -1;
    }
    if (!catalogue.Adopt(records, count, sourceSlots, eventSlots))
        return -1;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", catalogue.data.count());
    return catalogue.data.count();
}

int FindTrap(const AgentCatalogue& catalogue, std::string_view sourcename, std::string_view eventid,
             std::string& trapName) {
    for (const AgentEventData* record : catalogue.data.records()) {
        if (record == nullptr || SlotText(record->SourceName) != sourcename ||
            SlotText(record->EventID) != eventid)
            continue;
        trapName.assign(record->TrapName, strnlen(record->TrapName, sizeof record->TrapName));
        if (trapName.size() > kTrapNameSize - 1)
            trapName.resize(kTrapNameSize - 1);
        return 0;
    }
    return -1;
}

std::string SyslogTrapName(const SyslogCatalogue& catalogue, std::string_view sourcename,
                           std::string_view eventid) {
    std::string trapName;
    for (const SyslogData* record : catalogue.data.records()) {
        if (record != nullptr && SlotText(record->SourceName) == sourcename &&
            SlotText(record->EventID) == eventid)
            trapName.assign(record->TrapName, strnlen(record->TrapName, sizeof record->TrapName));
    }
    return trapName;
}
