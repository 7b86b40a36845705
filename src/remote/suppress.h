// Report suppression of the remote report service: while it is on, repeated reports are held back
// for an interval in minutes. The dialog keeps no state of its own; both settings are read and
// written through the package pointers that LoadVantrelPkgDLL binds.
#pragma once

#include <newt.h>

#include <cstdint>
#include <optional>
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
