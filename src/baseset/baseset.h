// Base report settings: the base-setting menu's state, the wrappers through which the base
// settings and the remote report method are read and written in the report-settings library,
// and the screens of the menu that other screens enter.
#pragma once

#include <zolwin.h>

#include <string>

#include "frame/rptset_calls.h"
#include "records.h"

// ---- SNMP trap destinations ----
// The address dialog: a checked address into address (TRAP_DEST_SIZE bytes), left empty when
// the user cancels. Always 1.
int EnterIPpanel(HMODULE hLibRPTSET, char* address);

// ---- Screens of the base-setting menu: 0 after the screen closed, -1 when it could not open ----
int SubSNMPPanel(HMODULE hLibRPTSET);
int SubSimplePanel(const char* method, HMODULE hLibRPTSET);
int SubShutdownPanel(HMODULE hLibRPTSET);
// The remote report service's base setting (delivery method).
int VantrelBaseSetting(HINSTANCE hLibRPTSET);

// ---- Shutdown delay ----
// Longest shutdown delay, in seconds.
inline constexpr unsigned int kMaxShutdownDelay = 1800;
// 1 when data is at most kMaxShutdownDelay; else shows the range error and returns 0.
int TestInputValue(unsigned int data);
// Writes the record with PutBaseSetting, showing the error box when that fails. Always 1: the
// panel closes even after a failed write.
int PutDelayValue(BaseData* record, HMODULE hLibRPTSET);

// What the shutdown-delay panel holds when OK is pressed.
struct ShutdownPanelState {
    bool enabled = false;
    std::string delayText;  // the delay entry as typed
};
// The check and effect of OK: the message ID of the refusal ("ERR_SHUTDOWN_NULL_ID" for an empty
// delay, "ERR_SHUTDOWN_ID" for one out of range), or null after the switch and, when on, the
// delay were put into record.
const char* ApplyShutdownPanel(const ShutdownPanelState& state, BaseData& record);
