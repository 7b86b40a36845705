// The report schedule's text form and its hour mask, as plain functions (the exports "x" and "b"
// of dscopy.dll wrap them).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace dscopy {

// Every hour of the day.
inline constexpr std::uint32_t kAllHours = 0xFFFFFFu;
// Room for the longest text WriteMaskText writes ("0-0,2-2,...,22-22") and its terminator.
inline constexpr std::size_t kMaxTextSize = 72;

// The text of a mask: each run of set hours (bits 0-23) as "first-last", even a single hour
// ("7-7"), runs in hour order from hour 0, separated by ","; bits above 23 are ignored and no hour
// set gives "". Every hour is "0-23"; the hours around midnight are "0-2,22-23".
std::string MaskToText(std::uint32_t mask);
// The same text written into text (kMaxTextSize bytes), terminated; returns its length.
std::size_t WriteMaskText(std::uint32_t mask, char* text);

// The mask of a text (see dscopy_api.h for the syntax), or nothing when the text is not valid.
std::optional<std::uint32_t> TextToMask(std::string_view text);

}  // namespace dscopy
