// What the terminal does to a running program: a new size (SIGWINCH) and the end of the session
// (SIGTERM, SIGHUP). Signal handlers only note the event; the running form, which wakes every
// tenth of a second for it (Form::run), then handles it outside the handler:
// a new size redraws every open window centred for it, a terminal smaller than the program needs
// shows one line asking for more room until it grows, and an end makes every form run end as a
// lost terminal does, so that every screen closes and main takes newt down (newtFinished) before
// the process ends by the signal.
#pragma once

#include <string>

namespace zolui {

// The smallest terminal every screen fits.
inline constexpr int kMinColumns = 80;
inline constexpr int kMinRows = 24;

// Remembers the terminal's modes; call before newtInit, so that a last-resort exit can put them
// back.
void rememberTerminal();
// Installs the handlers; call right after newtInit (which installs a SIGWINCH handler of its own
// that this one replaces).
void watchTerminal();
// Restores the signals' default actions; call before newtFinished.
void stopWatchingTerminal();

// The read end of the handlers' wake-up pipe, or -1 while the terminal is not watched (a wait
// outside any form, as for a terminal too small, blocks on it).
int terminalEventFd();
// Handles whatever the handlers noted (the pipe is drained). Returns false when the program must
// end: from then on every form run ends at once.
bool handleTerminalEvents();
// The signal that asked the program to end, or 0.
int terminationSignal();
// Ends the process by that signal, with its default action, when there is one.
void finishBySignal();

// The line shown while the terminal is too small ("%d" for the columns and rows needed).
void setSmallTerminalText(std::string text);

}  // namespace zolui
