// The main menu of ZOLamsadm and the settings screens it enters.
#pragma once

#include <zolwin.h>

#include <cstdint>

// Runs the main menu until the user closes it (Close button or a hot key), entering the settings
// screens chosen from it, then releases what the menu loaded.
void EditParameter();

// CheckInstVantrel of the report-settings library: 1 when the remote report service package is
// installed. 0 (after an error box) when the function cannot be bound.
int32_t CheckVntInstalled();

// Suspend handler that gives the terminal back until a key is pressed. Kept for a shell escape
// but deliberately not registered with newt: the menu is not meant to be suspended.
void suspend_callback();
