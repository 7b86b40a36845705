// Base report settings: the screens of the base-setting menu that other screens enter, and what
// their OK does, in plain functions over plain state that the unit tests drive without a screen.
#pragma once

#include <zolwin.h>

#include <string>
#include <string_view>
#include <vector>

#include "frame/rptset_calls.h"
#include "records.h"

// ---- Screens of the base-setting menu: 0 after the screen closed, -1 when it could not open ----
int SubSNMPPanel(HMODULE lib);
int SubSimplePanel(const char* method, HMODULE lib);
int SubShutdownPanel(HMODULE lib);
// The remote report service's base setting (delivery method).
int VantrelBaseSetting(HMODULE lib);

// ---- SNMP trap destinations ----
// The address dialog: a checked address into address (TRAP_DEST_SIZE bytes), left empty when
// the user cancels. Always 1.
int EnterIPpanel(HMODULE lib, char* address);

// What the trap panel holds: the switch, the list as shown, and the addresses this visit added,
// which reach the store only with OK (removals are stored at once).
struct TrapPanelState {
    bool enabled = false;
    std::vector<std::string> shown;
    std::vector<std::string> added;
};
// "this host" and the limited broadcast: valid IPv4 texts that no manager can have.
bool IsUnusableTrapAddress(std::string_view address);
// Add: the message ID of the refusal ("SNMP_TRAP_LIST_FULL_ID" for a full list,
// "IDS_ERROR_MSG_EXIST" for an address already shown, compared exactly), or null after the
// address was appended to the list and to the additions.
const char* AddTrapAddress(TrapPanelState& state, const std::string& address);
// After the library removed an address: the first one equal to it leaves the list and, when this
// visit added it, the additions.
void ForgetTrapAddress(TrapPanelState& state, const std::string& address);

// ---- Shutdown delay ----
// Longest shutdown delay, in seconds.
inline constexpr unsigned int kMaxShutdownDelay = 1800;
// 1 when data is at most kMaxShutdownDelay; else shows the range error and returns 0.
int TestInputValue(unsigned int data);
// Writes the record with PutBaseSetting, showing the error box when that fails. Always 1: the
// panel closes even after a failed write.
int PutDelayValue(BaseData* record, HMODULE lib);

// What the shutdown-delay panel holds when OK is pressed.
struct ShutdownPanelState {
    bool enabled = false;
    std::string delayText;  // the delay entry as typed
};
// The check and effect of OK: the message ID of the refusal ("ERR_SHUTDOWN_NULL_ID" for an empty
// delay, "ERR_SHUTDOWN_ID" for one out of range), or null after the switch and, when on, the
// delay were put into record.
const char* ApplyShutdownPanel(const ShutdownPanelState& state, BaseData& record);
