// Event monitoring: the agent event list and its per-event report settings, the syslog monitoring
// list, its per-item report settings and the dialog that adds items. What each screen decides is
// held in plain structs and plain functions here, so that the rules are checked without a
// terminal; the screens only gather input, call them and show the outcome.
#pragma once

#include <zolwin.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "records.h"

// ---- Records exchanged whole with rptset.dll ----

// A catalogue as "GetAllAgntSetting" and "GetAllSyslogSetting" hand it back: a malloc'd array of
// malloc'd records whose destination buffers are malloc'd too. The owner frees all of it.
template <class Record>
class CatalogueRecords {
  public:
    CatalogueRecords() = default;
    ~CatalogueRecords() { reset(); }
    CatalogueRecords(const CatalogueRecords&) = delete;
    CatalogueRecords& operator=(const CatalogueRecords&) = delete;

    // Takes over what the library handed back (count below 0 is taken as 0).
    void adopt(Record** records, int count);
    // Frees every destination buffer, every record and the array.
    void reset();
    std::span<Record* const> records() const;
    int count() const { return count_; }

  private:
    Record** records_ = nullptr;
    int count_ = 0;
};

// One record a per-item screen reads and writes, with its EVENT_DEST_SLOTS destination buffers of
// DEST_TEXT_SIZE bytes, all zero-filled.
template <class Record>
class OwnedRecord {
  public:
    // Null (after the trace line `what` names) when memory runs out.
    static std::unique_ptr<OwnedRecord> Allocate(const char* what);

    Record& operator*() { return *record_; }
    Record* operator->() { return record_.get(); }
    Record* get() { return record_.get(); }

  private:
    OwnedRecord();
    std::unique_ptr<Record> record_;
    std::vector<char> destIDs_;
};

using AgentRecord = OwnedRecord<AgentEventData>;
using SyslogRecord = OwnedRecord<SyslogData>;

// ---- The catalogue of the two list screens ----

// Bytes of each source-name and event-ID slot, terminator included.
inline constexpr std::size_t kNameSlotSize = 512;
// Bytes of the agent list's trap-name buffer, terminator included.
inline constexpr std::size_t kTrapNameSize = 96;

// The records, the numbers of name slots the library asks for, and the names found in them.
template <class Record>
struct Catalogue {
    CatalogueRecords<Record> data;
    int numSN = 0;
    int numEvntID = 0;
    // Filled source-name slots, in order of first appearance (never sorted); at most numSN.
    std::vector<std::string> sourceNames;
    // Event IDs of the source last searched, in catalogue order, duplicates kept; at most
    // numEvntID.
    std::vector<std::string> eventIDs;

    // Takes over a library's catalogue and makes room for the slots. False (after its level-2
    // trace line) when the slot counts cannot be held; the catalogue is then empty.
    bool Adopt(Record** records, int count, int sourceSlots, int eventSlots);
    // Collects the distinct source names; returns how many. An empty name never enters, since it
    // matches an empty slot.
    int FindAllSourceName();
    // Collects the event IDs of one source; returns how many.
    int FindEventID(std::string_view sourcename);
};

using AgentCatalogue = Catalogue<AgentEventData>;
using SyslogCatalogue = Catalogue<SyslogData>;

// Loads the agent event catalogue through "GetAllAgntSetting": the record count, or -1.
int InitAllAgntSetting(HMODULE lib, AgentCatalogue& catalogue);
// Loads the syslog items through "GetAllSyslogSetting": the record count, or -1.
int InitAllSyslogSetting(HMODULE lib, SyslogCatalogue& catalogue);

// The trap name of the first event of `sourcename` with `eventid` into trapName (cut to fit
// kTrapNameSize): 0, or -1 when there is none and trapName is left as it was.
int FindTrap(const AgentCatalogue& catalogue, std::string_view sourcename, std::string_view eventid,
             std::string& trapName);
// The trap name of the last item of `sourcename` with `eventid`; empty when there is none.
std::string SyslogTrapName(const SyslogCatalogue& catalogue, std::string_view sourcename,
                           std::string_view eventid);

// ---- Destination IDs of one event or item (IDList, frame/screens.h) ----

// The remote report service's own destination ID, which whole-source changes leave alone.
inline constexpr const char* kVantrelReportID = "VANTRELREPORT";
// The entry of an empty ID list, keyed 0.
inline constexpr const char* kNoneEntry = "<none>";

// The nodes of the list a per-item screen shows and writes, in list order: up to the first node
// with an empty name and, for a whole source, without the remote report service's own ID.
std::vector<IDListNode*> ListedIDNodes(IDListNode* head, bool wholeSource);

// Clears every node's report flag, then sets it on each node that one of the first `count` IDs
// names (compared without regard to case, as destination IDs are).
void MarkReportIDs(IDListNode* head, char* const* ids, int count);

// The two lists of a per-item screen: the IDs reported to and the other IDs, each in the order
// the moves left them.
class DestinationChoice {
  public:
    // The nodes as ListedIDNodes gave them, flags as MarkReportIDs set them.
    explicit DestinationChoice(std::vector<IDListNode*> nodes);

    const std::vector<IDListNode*>& nodes() const { return nodes_; }
    const std::vector<IDListNode*>& reportTo() const { return reportTo_; }
    const std::vector<IDListNode*>& others() const { return others_; }
    int ReportIDnum() const { return static_cast<int>(reportTo_.size()); }
    int NoReportIDnum() const { return static_cast<int>(others_.size()); }

    // Moves the other ID whose node index is `index` to the end of the report-to list and flags
    // it; Remove is the mirror image. False when no such node is in the list it leaves.
    bool Add(int index);
    bool Remove(int index);

  private:
    std::vector<IDListNode*> nodes_;
    std::vector<IDListNode*> reportTo_;
    std::vector<IDListNode*> others_;
};

// ---- Lists of choices ----

struct ListChoice {
    const char* labelId;
    int32_t value;  // what the record stores for this row
};

// After-report actions, in the list's order.
inline constexpr ListChoice kActionChoices[] = {
    {"SUBAGENT_ACTION_NONE_ID", EVENT_ACTION_NONE},
    {"SUBAGENT_ACTION_SHUTDOWN_ID", EVENT_ACTION_SHUTDOWN},
    {"SUBAGENT_ACTION_REBOOT_ID", EVENT_ACTION_REBOOT},
};
// Error kinds of the administrator variants, in the list's order (5 and above 6 have no row).
inline constexpr ListChoice kErrorKindChoices[] = {
    {"ADMAGENT_ERRKIND_AP_ID", 3},  {"ADMAGENT_ERRKIND_HW_ID", 1},  {"ADMAGENT_ERRKIND_SW_ID", 2},
    {"ADMAGENT_ERRKIND_OFF_ID", 6}, {"ADMAGENT_ERRKIND_ENV_ID", 4},
};
// Levels of the administrator variants: 0 to kLevelCount - 1, each its own row.
inline constexpr int kLevelCount = 9;

// The row a list of choices starts on for a stored value: that value's row, else the first.
int ChoiceRow(std::span<const ListChoice> choices, int32_t value);
// The row of the level list for a stored level: the level itself, else the first.
int LevelRow(int32_t level);

// ---- Handling method ----

// Most characters of a handling method (its field holds one more byte).
inline constexpr std::size_t kDealMethodMax = 511;

// What the handling-method entry starts with: the stored text, or nothing when it carries the
// marker NO_US_DEALMETHOD.
std::string DealMethodShown(const char* stored);
// OK's rule for the handling method: the entry (cut to kDealMethodMax bytes) replaces the
// stored text when it differs, except that an empty entry leaves a stored marker alone.
// Returns the change flag the writer takes: 1 when the stored text was replaced, else 0.
int ApplyDealMethod(char (&stored)[sizeof AgentEventData::DealMethod], std::string_view entry);

// ---- Syslog item settings ----

// Columns a keyword's label takes.
inline constexpr std::size_t kKeywordColumns = 40;

// Of a text longer than 39 bytes, how many of its first 40 bytes are below 128; -1 for a null
// text or one of 39 bytes or fewer.
int AffirmSingleCharASCNum(const char* text);
// A keyword as its label shows it: padded with blanks to 40 columns, or cut to 40 bytes (39 when
// the 40th byte would split a two-byte character). Nothing when the cut cannot be decided.
std::optional<std::string> KeywordLabelText(const char* keyword);

// The count entry's text as a decimal number: 0 for anything that is not one, at most INT32_MAX.
int32_t CountFromText(std::string_view text);

// The schedule conversions of dscopy.dll ("x" and "b"), as the time-table entry uses them.
struct TimeTableText {
    HMODULE dscopyLib = nullptr;
    // The text last accepted: first the stored time table's text.
    std::string accepted;

    // The stored value as text (empty when "x" is missing).
    static std::string Show(HMODULE dscopyLib, uint32_t value);
    // OK's rule: the typed text's value, or, when that is 0 (invalid or empty text), the value of
    // the text accepted before, which the typed text then does not replace.
    uint32_t Accept(const std::string& typed);
};

// The line a syslog item's test writes: "[TEST - AlertManager] k1 k2 k3".
std::string SyslogTestLine(const SyslogData& record);
// Writes the test line (EUC-JP converted for the system log) `record.Count` times with priority
// LOG_INFO, each as the argument of a fixed "%s" format so that a '%' in a keyword stays text.
// Returns the number of lines written.
int WriteSyslogTestLines(const SyslogData& record);

// ---- Adding syslog items ----

// Bounds of the add dialog's fields, in bytes of the program's encoding.
inline constexpr std::size_t kSourceMax = 255;
inline constexpr std::size_t kKeywordMax = 256;
inline constexpr std::size_t kTrapNameMax = 80;

// What the add dialog holds when its confirm button is pressed.
struct SyslogAddInput {
    std::string source;  // already cut to kSourceMax bytes when typed
    std::string eventID;
    std::string keywords[3];
    std::string trapName;
    std::string dealMethod;
};

// The event ID form of a new item: 8 characters, the first "4", "8", "c" or "C", then seven
// hexadecimal digits.
bool IsSyslogEventID(std::string_view id);
// The checks of confirm, in order: the message ID of the first that fails, or null. `keyword`
// receives the number (1 to 3) of a keyword that is too long.
const char* SyslogAddFault(const SyslogAddInput& input, int* keyword = nullptr);
// The zero-filled record "AddSyslogItem" takes, from input that passed the checks.
void FillSyslogAddRecord(const SyslogAddInput& input, SyslogData& record);

// ---- Screens and their record access ----

// Per-event report settings (administrator variant: error kind and level instead of the
// handling method). eventid "All" changes the whole source.
void MonitorEventSetting(const char* source, const char* eventid, HMODULE lib);
void Adm_MonitorEventSetting(const char* source, const char* eventid, HMODULE lib);

// The record of one event, read through "GetAgntSetting" (null when that failed; the screen
// shows the box), or prepared for a whole-source change without reading anything.
BOOL GetAgntDataformReg(const char* source, const char* eventid, HMODULE lib,
                        std::unique_ptr<AgentRecord>& record);
BOOL InitForAgntSetAll(const char* source, const char* eventid, HMODULE lib,
                       std::unique_ptr<AgentRecord>& record);
// "SetAgntSetting" / "SetAgntDataForSN" of the record, showing the box of a failure: 1 or 0.
BOOL PutAgntDatatoReg(HMODULE lib, AgentEventData& record, int changed);
BOOL PutAgntDataForAll(HMODULE lib, AgentEventData& record);

// Per-item syslog report settings (administrator variant: error kind and level as well).
void MonitorSyslogSetting(const char* source, const char* eventid, HMODULE rptsetLib,
                          HMODULE dscopyLib);
void Adm_MonitorSyslogSetting(const char* source, const char* eventid, HMODULE rptsetLib,
                              HMODULE dscopyLib);

BOOL GetSyslogDataformReg(const char* source, const char* eventid, HMODULE lib,
                          std::unique_ptr<SyslogRecord>& record);
BOOL InitForSyslogSetAll(const char* source, const char* eventid, HMODULE lib,
                         std::unique_ptr<SyslogRecord>& record);
BOOL PutSyslogDatatoReg(HMODULE lib, SyslogData& record, int changed);
BOOL PutSyslogDataForAll(HMODULE lib, SyslogData& record);
// Reads one item into the list screen's working record: 1, or 0 for a null handle, source or
// event ID ("<Input parameter err,return FALSE") or a failed read.
BOOL GetSyslogMainDataformReg(const char* source, const char* eventid, HMODULE lib,
                              SyslogData& record);

// The add dialog. A non-empty sourcename is the fixed source of the new item. 1 when an item was
// added, 2 when the user cancelled, -1 when the record or the library call failed.
int SyslogAddItem(HMODULE lib, const std::string& sourcename);
