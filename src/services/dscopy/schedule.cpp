// Report schedule text <-> hour mask.
#include "schedule.h"

#include <cctype>

namespace dscopy {

namespace {

constexpr int kHours = 24;

bool HourSet(std::uint32_t mask, int hour) {
    return (mask >> hour) & 1u;
}

// Reads an hour number (0-23) at text[pos], skipping blanks before and after it.
std::optional<int> ReadHour(std::string_view text, std::size_t& pos) {
    while (pos < text.size() && text[pos] == ' ')
        ++pos;
    int value = 0;
    std::size_t digits = 0;
    while (pos < text.size() && std::isdigit(static_cast<unsigned char>(text[pos]))) {
        value = value * 10 + (text[pos] - '0');
        ++pos;
        // Two digits are enough for any hour; more (even "007") is not an hour.
        if (++digits > 2)
            return std::nullopt;
    }
    while (pos < text.size() && text[pos] == ' ')
        ++pos;
    if (digits == 0 || value >= kHours)
        return std::nullopt;
    return value;
}

}  // namespace

std::string MaskToText(std::uint32_t mask) {
    std::string text;
    int hour = 0;
    while (hour < kHours) {
        if (!HourSet(mask, hour)) {
            ++hour;
            continue;
        }
        const int first = hour;
        while (hour + 1 < kHours && HourSet(mask, hour + 1))
            ++hour;
        if (!text.empty())
            text += ',';
        text += std::to_string(first) + '-' + std::to_string(hour);
        ++hour;
    }
    return text;
}

std::optional<std::uint32_t> TextToMask(std::string_view text) {
    std::uint32_t mask = 0;
    // Blanks alone are the empty schedule, like the empty text.
    if (text.find_first_not_of(' ') == std::string_view::npos)
        return mask;
    std::size_t pos = 0;
    while (true) {
        const std::optional<int> first = ReadHour(text, pos);
        if (!first)
            return std::nullopt;
        int last = *first;
        if (pos < text.size() && text[pos] == '-') {
            ++pos;
            const std::optional<int> end = ReadHour(text, pos);
            if (!end)
                return std::nullopt;
            last = *end;
        }
        // first..last inclusive, running over midnight when last < first.
        for (int hour = *first;; hour = (hour + 1) % kHours) {
            mask |= 1u << hour;
            if (hour == last)
                break;
        }
        if (pos == text.size())
            return mask;
        if (text[pos] != ',')
            return std::nullopt;
        ++pos;
    }
}

}  // namespace dscopy
