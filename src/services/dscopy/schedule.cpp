// Report schedule text <-> hour mask. Plain pointer loops without allocation: the conversions
// run for every mask in the tests and for every schedule the screens show.
#include "schedule.h"

namespace dscopy {

namespace {

constexpr int kHours = 24;

// Writes an hour (0-23) in decimal at p, returns the position after it.
char* PutHour(char* p, int hour) {
    if (hour >= 10)
        *p++ = static_cast<char>('0' + hour / 10);
    *p++ = static_cast<char>('0' + hour % 10);
    return p;
}

// Reads an hour number (0-23) at p, skipping blanks before and after it; -1 when there is none.
int ReadHour(const char*& p, const char* end) {
    while (p < end && *p == ' ')
        ++p;
    int value = 0;
    int digits = 0;
    while (p < end && *p >= '0' && *p <= '9') {
        value = value * 10 + (*p - '0');
        ++p;
        // Two digits are enough for any hour; more (even "007") is not an hour.
        if (++digits > 2)
            return -1;
    }
    while (p < end && *p == ' ')
        ++p;
    return digits == 0 || value >= kHours ? -1 : value;
}

// The hours first..last, both included, running over midnight when last < first.
std::uint32_t RangeBits(int first, int last) {
    const std::uint32_t fromFirst = kAllHours & ~((1u << first) - 1u);
    const std::uint32_t toLast = (1u << (last + 1)) - 1u;
    return first <= last ? fromFirst & toLast : fromFirst | toLast;
}

}  // namespace

std::size_t WriteMaskText(std::uint32_t mask, char* text) {
    char* p = text;
    mask &= kAllHours;
    // Jump from run to run: the first set hour, then the first clear one after it.
    while (mask != 0) {
        const int first = __builtin_ctz(mask);
        const int end = __builtin_ctz(~mask & ~((1u << first) - 1u));  // bit 24 is always clear
        if (p != text)
            *p++ = ',';
        p = PutHour(p, first);
        *p++ = '-';
        p = PutHour(p, end - 1);
        mask &= ~((1u << end) - 1u);
    }
    *p = '\0';
    return static_cast<std::size_t>(p - text);
}

std::string MaskToText(std::uint32_t mask) {
    char text[kMaxTextSize];
    return std::string(text, WriteMaskText(mask, text));
}

std::optional<std::uint32_t> TextToMask(std::string_view text) {
    const char* p = text.data();
    const char* const end = p + text.size();
    // Blanks alone are the empty schedule, like the empty text.
    const char* q = p;
    while (q < end && *q == ' ')
        ++q;
    if (q == end)
        return 0u;
    std::uint32_t mask = 0;
    for (;;) {
        const int first = ReadHour(p, end);
        if (first < 0)
            return std::nullopt;
        int last = first;
        if (p < end && *p == '-') {
            ++p;
            if ((last = ReadHour(p, end)) < 0)
                return std::nullopt;
        }
        mask |= RangeBits(first, last);
        if (p == end)
            return mask;
        if (*p != ',')
            return std::nullopt;
        ++p;
    }
}

}  // namespace dscopy
