// The destination screens' own declarations: the destination list, the ID editor, the report
// schedule and the TCP/IP method screens, with the newt-free state functions behind them (method
// names, address lines, the method list, the schedule and TCP/IP checks), which the unit tests
// drive without a terminal.
#pragma once

#include <newt.h>
#include <zolwin.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "records.h"

// ---- Records and texts ----

// Frees a destination record after wiping it: a record may hold an out-of-band password.
struct DestDataDeleter {
    void operator()(DestData* record) const;
};
using DestDataPtr = std::unique_ptr<DestData, DestDataDeleter>;
// A record holding InitialDestData's values; null when memory is short.
DestDataPtr NewDestRecord();

// The text of a message ID: MessageText in the screens, the tests' own texts in the unit tests.
using TextOf = std::function<std::string(const char* id)>;

// A check that refused what was typed: the message ID to show and the values its "%d" or "%s"
// placeholders take, in order. Empty (id null) when the check passed.
struct Refusal {
    const char* id = nullptr;
    std::vector<std::string> args;
    explicit operator bool() const { return id != nullptr; }
};
// The refusal's message, its placeholders filled from args.
std::string RefusalText(const Refusal& refusal, const TextOf& text);

// Copies text into a record field of size bytes, cut to fit on a whole character.
void CopyField(char* field, std::size_t size, std::string_view text);

// ---- Report methods and address lines ----

enum class DestMethod { Snmp, InBand, OutOfBand, Vantrel, Other };
// The method a record's Method names, compared without regard to case.
DestMethod ClassifyMethod(std::string_view method);

// The address line of the destination list (DisplayMsgFunc) for a record, where mailTo is what
// GetDestData found for the remote report service.
std::string ListAddressLine(const DestData& record, std::string_view mailTo, const TextOf& text);
// The address line of the ID editor for the methods of the alert manager itself (SNMP and the
// TCP/IP methods); nothing for the remote report service's method and unknown methods.
std::optional<std::string> ManagerAddressLine(const DestData& record, const TextOf& text);
// The address line of the remote report service's destination for its delivery method
// (VANTREL_*): `where` is the mail address (internet mail) or the manager's IP (via manager).
// Nothing for a method the service does not have.
std::optional<std::string> VantrelAddressLine(int vntMethod, std::string_view where,
                                              const TextOf& text);

// The method list of a new ID: "MANAGER (<id>)" for each of the first count listed IDs that
// begins with "SNMP", "TCP_IP IN-BAND" or "TCP_IP OUT-OF-BAND" (without regard to case), in
// order; the remote report service's IDs are never methods.
std::vector<std::string> BuildMethodList(const char (*ids)[DEST_TEXT_SIZE], int count);

// A list-box row: the text cut to `width` columns on a whole character and padded with blanks.
std::string ListRow(std::string_view text, int width);

// ---- Destination list (destlist.cpp) ----

// Sets the text of a text box of `height` rows. newt draws only the lines a text has, so blank
// lines follow it to cover every row an earlier, longer text used.
void SetBoxText(newtComponent textbox, std::string_view text, int height);

// Where the remote report service sends its reports, as GetDestData found it.
extern char szMailTo[VNT_MAILTO_SIZE];
// The text the service's mail settings handed over when an ID was first added; unset until then.
extern std::optional<std::string> OpenMsg;
// What the list shows: 0 destination IDs, 1 destination groups (never switched on).
extern int SelectFlag;

// TRUE for the built-in IDs, which are listed but never deleted (compared without regard to
// case).
BOOL TestSelected(const char* ID);
// Refreshes the record by its ID through "GetDestSetting": TRUE, or FALSE.
BOOL InitCurrentDestSetting(HMODULE lib, DestData* record);
// Fills szMailTo for the remote report service's destination: 0, or -1.
int GetDestData(HMODULE lib);
// Before an ID is edited: the service's set-up data must be there for its IDs, and its mail
// settings are read (OpenMsg). 0, or -1 after telling the administrator why where that applies.
int GetDataFromFD(DestData* record, HMODULE lib);
// Fills the list box from the display table (ID mode).
void CheckRadioFunc(newtComponent listbox);
// Shows the current entry's method and address in the details text box.
void DisplayMsgFunc(newtComponent listbox, newtComponent details);
// Asks to confirm: 1 OK, 0 Cancel, -1 no memory.
int SureWindow(const char* text);
// Removes the record's ID from every alert log through "logacc.dll": 1, or 0.
int DeleteIDAndGID(const DestData* record);
// Removes the group entry with key index from the list box (group mode).
void DeleteGroupSetting(newtComponent listbox, int index);

// ---- ID editor (idedit.cpp) ----

// The remote report service's internet-mail destination as InitMLDestSetting last read it.
extern VxMLDestData g_VxMLDestData;

// The values of a destination that has never been set.
void InitialDestData(DestData* record);
// "SetDestSetting" of the whole record: TRUE when the library accepted it, else FALSE after
// telling the administrator (nothing shown when the library lacks the function).
BOOL PutDestSetting(DestData* record, HMODULE lib);
// The create dialog; writes the record on OK. The record's ID is set when one was created.
void NewIDSetting(DestData* record, HMODULE rptsetLib, HMODULE dscopyLib);
// The change dialog for a record already read; each sub-screen writes what it changes.
void ModifyIDSetting(DestData* record, HMODULE rptsetLib, HMODULE dscopyLib);
// Deletes the record's ID: what PutDestSetting returns.
BOOL DeleteIDSetting(DestData* record, HMODULE lib);
// With onlyshow 0 opens the method's own screen (status 0 new ID, 1 changed ID, passed on);
// then puts the address line into *line. 0, or -1 (the method has no address screen).
int AddressSet(DestData* record, HMODULE lib, int onlyshow, int status, std::string* line);
// Reads the service's internet-mail destination into g_VxMLDestData, with the library's message
// for the administrator into *message when given. TRUE or FALSE.
BOOL InitMLDestSetting(HMODULE lib, std::string* message = nullptr);
// Writes the service's destination record, with flag 0 together with g_VxMLDestData. TRUE or
// FALSE.
BOOL PutMLDestSetting(DestData* record, HMODULE lib, int flag);

// ---- Report schedule (schedule.cpp) ----

// Retry limits of the schedule screen.
inline constexpr std::uint32_t kMinRetryInterval = 1;
inline constexpr std::uint32_t kMaxRetryInterval = 30;
inline constexpr std::uint32_t kMaxRetryTime = 240;

// The schedule text's syntax as this program checks it (the copy library reads the rest).
BOOL JudgeSch(const char* text);

// What the schedule screen's entries hold on OK.
struct ScheduleEntries {
    std::string interval, retryTime, hours;
};
// Checks the entries in the screen's order. The two numbers land in the record before the hours
// are checked, so a refused hour text leaves them changed.
Refusal ApplyScheduleEntries(const ScheduleEntries& entries, DestData& record);
// The hour mask for the typed text: its mask, else the mask of the text shown at opening, else
// (nothing usable in either) the mask the record had. convert answers 0 for an unusable text.
std::uint32_t ChooseHourMask(std::string_view typed, std::string_view previous,
                             std::uint32_t current,
                             const std::function<std::uint32_t(const std::string&)>& convert);
// The schedule screen; status 0 while the ID is being created (nothing is written here), 1 while
// it is changed (the record is written on OK). TRUE when OK closed it.
BOOL SchduleSet(DestData* record, HMODULE dscopyLib, HMODULE rptsetLib, int status);

// ---- TCP/IP destinations (tcpip.cpp) ----

// Longest address the screens take, in bytes.
inline constexpr std::size_t kMaxHostLength = 256;

// What the in-band and out-of-band screens' entries hold on OK. The password is wiped when the
// entries go.
struct TcpipEntries {
    TcpipEntries() = default;
    TcpipEntries(const TcpipEntries&) = delete;
    TcpipEntries& operator=(const TcpipEntries&) = delete;
    ~TcpipEntries();

    bool outOfBand = false;
    std::string address, port, phone, user, password;
};
// Checks the entries in the screens' order and, when they pass, stores them in the record (a
// host name as its address). lib is the report-settings library that checks addresses.
Refusal ApplyTcpipEntries(const TcpipEntries& entries, HMODULE lib, DestData& record);
// The method screens; status as for SchduleSet. TRUE when OK closed them.
BOOL InBandSetting(DestData* record, HMODULE lib, int status);
BOOL OutofBandSetting(DestData* record, HMODULE lib, int status);
