// Report suppression of the remote report service: while it is on, repeated reports are held back
// for an interval in minutes. The dialog keeps no state of its own; both settings are read and
// written through the package pointers that LoadVantrelPkgDLL binds.
#pragma once

#include <newt.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "frame/screens.h"

// The longest suppression interval, in minutes (one day).
inline constexpr std::uint32_t kMaxSuppressInterval = 1440;

// The dialog itself, vntSuppressSet, is declared in frame/screens.h.

// What vntSuppressBtnCallBack is given: the check box's value ('*' checked, ' ' not) and the
// interval entry it governs.
struct SuppressCheckState {
    const char* checkValue;
    newtComponent intervalEntry;
};

// The check box's callback (data: a SuppressCheckState): enables the interval entry while the
// box is checked, disables it while it is not.
void vntSuppressBtnCallBack(newtComponent checkbox, void* data);

// The interval as typed: minutes from 0 to 1440, or nothing for an empty text, anything but
// digits, or a larger number.
std::optional<std::uint32_t> ParseSuppressInterval(std::string_view text);

// What the dialog holds when OK is pressed.
struct SuppressState {
    bool on = false;
    std::string intervalText;  // the interval entry as typed (disabled while off)
};

// The two set calls of the package ("setVntSuppressMode", "setVntSuppressInterval"); each
// answers -1 on failure.
struct SuppressSetters {
    std::function<int(int mode)> mode;
    std::function<int(int minutes)> interval;
};

// OK: nothing when the interval is refused (the dialog shows MSG_VNT_SUPPRESS_INTERVAL_ERR_ID and
// stays open), else the dialog's result: 0, or -1 when a set call failed. Off writes the mode
// alone, whatever the entry holds; on writes the mode, then the interval, and a failure of
// either is kept as the result while the other is still written.
std::optional<int> SaveSuppression(const SuppressState& state, const SuppressSetters& set);
