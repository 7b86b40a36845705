// Program-wide start-up state of ZOLamsadm and the bring-up of the newt screen.
#pragma once

#include <cstdint>

// Administrator mode: 1 when the program was started with the single argument "-A".
extern int32_t Adm_Flag;
// 1 when the remote report service package is installed; set when the main menu starts.
extern int32_t Vantrel_Installed;

// True only for exactly one argument that is exactly "-A"; every other command line is ignored.
bool IsAdministratorCommandLine(int argc, const char* const* argv);

// Initialises newt with the product palette, clears the screen and draws the help line and the
// root text. The caller has already set the locale and the toolkit's text mode.
void NewtStartUp();
