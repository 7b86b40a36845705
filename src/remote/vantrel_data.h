// The remote report service's machine, vendor and option data screens: what they read from their
// entries and lists, and the plain functions their OK and buttons hand it to (no newt here, so
// that the tests drive them without a terminal).
#pragma once

#include <zolwin.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "frame/libcall.h"
#include "frame/vantrel_data_calls.h"
#include "records.h"

// A one-line choice list: the names the store offers and, when the stored name is not one of
// them, that name as a further last row; current is the row of the stored name (0 when it is
// empty and not offered).
struct ChoiceRows {
    std::vector<std::string> rows;
    int current = 0;
};
ChoiceRows MakeChoiceRows(const std::vector<std::string>& offered, const std::string& stored);

// ---- Machine data ----

// What the machine screen's fields hold, in the program's encoding.
struct MachEntries {
    std::string hostName, productName, manufacturer, licenseNo, osName, osVersion;
    std::string comment;
};
MachEntries MachEntriesFrom(const VntMachData& record);
// The rules of the record's fields (the comment is not one of them): host name and product 1 to
// 40 bytes, manufacturer and licence number 1 to 16, version at most 32, OS name 1 to 30.
bool MachEntriesValid(const MachEntries& entries);
// The same rules over a record: 1 valid, 0 not. Shows nothing.
int CheckMachData(const VntMachData* record);

// How the machine screen's OK ended.
enum class MachSave {
    Refused,         // a field breaks a rule: the form runs again, with no message
    RecordFailed,    // SetVntMachSetting failed: "FUNC_CALL_ERR", leave
    CommentTooLong,  // the record was saved, the comment is over 256 bytes: stay
    CommentUnbound,  // the record was saved, "AMAMRegWrite" is missing: leave after the box
    CommentFailed,   // the record was saved, the comment write failed: leave after the box
    Saved,
};
// The writes of the OK, taken as functions so that a test can stand in for the library.
struct MachWriters {
    std::function<bool(VntMachData*)> record;
    std::function<LibResult(const std::string&)> comment;
};
MachSave SaveMachine(const MachEntries& entries, const MachWriters& write);

// ---- Vendor data ----

struct VendEntries {
    std::string distributor, salesDept, salesPerson, salesTel, engineerDept, engineer, engineerTel;
};
VendEntries VendEntriesFrom(const VntVendData& record);
// The message ID of the first rule the entries break, in the screen's order, or null.
const char* VendFault(const VendEntries& entries);
// The entries as a record; only for entries VendFault passed (each then fits its field).
VntVendData VendRecordFrom(const VendEntries& entries);
// VendFault over a record, showing the failing rule's box: 1 valid, 0 a box was shown.
int CheckVntVendData(const VntVendData* record);

// ---- Option data ----

// The rows of the options held: each code's kind name, or for a code the kind list lacks the
// code itself in brackets.
std::vector<std::string> HeldOptionRows(const std::vector<std::uint32_t>& held,
                                        const std::vector<OptionKind>& kinds);
// The message of an add or delete that did not succeed, by the library's result (null: done).
const char* AddOptionRefusal(const LibResult& result);
const char* DeleteOptionRefusal(const LibResult& result);
