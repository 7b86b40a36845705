// Shared helpers of the event-monitoring screen tests: known catalogues put into a test root,
// the screens reached from the main menu, and what the store holds afterwards.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "frame_test_util.h"
#include "regpaths.h"

namespace montest {

inline const std::string kAlertMan = ZOL_KEY_ALERTMAN;

// Replaces the agent event catalogue and the syslog items of the root by the REGEDIT4 lines
// given (keys relative to SOFTWARE\Tavik\ZolAlertMan, values as in a .reg file).
void ReplaceCatalogues(const zoltest::ProductRoot& root, const std::string& regLines);

// Starts the program (with args) and opens the agent event list or the syslog list from the
// main menu. `launcher`, when given, runs the program: argv becomes launcher, launcherArg,
// program, args.
std::unique_ptr<zoltest::Terminal> OpenAgentList(const zoltest::ProductRoot& root,
                                                 const std::vector<std::string>& args = {});
std::unique_ptr<zoltest::Terminal> OpenSyslogList(const zoltest::ProductRoot& root,
                                                  const std::vector<std::string>& args = {},
                                                  const std::vector<std::string>& launcher = {});

// From a list's Set button (focused), opens the settings screen titled titleId.
void OpenSettings(zoltest::Terminal& t, const zoltest::ProductRoot& root, const char* titleId);
// Waits for the settings screen titled titleId to close: back in the list, its Set button has
// the focus again (a box in front of the screen may hide its title before that).
void WaitSettingsClosed(zoltest::Terminal& t, const zoltest::ProductRoot& root,
                        const char* titleId);
// Closes the list titled listTitleId with Ctrl-O, then the main menu.
void CloseListAndMenu(zoltest::Terminal& t, const zoltest::ProductRoot& root,
                      const char* listTitleId);
// Replaces the focused entry's text, erasing up to `erase` characters first.
inline void Retype(zoltest::Terminal& t, const std::string& text, int erase = 60) {
    frametest::retype(t, text, erase);
}

// What the store holds for one event or item key (relative to SOFTWARE\Tavik\ZolAlertMan):
// the IDs bound to it, a DWORD (-1 when missing), a text ("(missing)") and whether it exists.
std::set<std::string> Bindings(const zoltest::ProductRoot& root, const std::string& key);
long Dword(const zoltest::ProductRoot& root, const std::string& key, const char* value);
std::string Text(const zoltest::ProductRoot& root, const std::string& key, const char* value);
bool KeyExists(const zoltest::ProductRoot& root, const std::string& key);

}  // namespace montest
