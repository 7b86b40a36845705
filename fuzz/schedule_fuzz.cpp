// Fuzz target: dscopy's schedule text and hour mask. Any text the reader accepts gives a mask
// whose written text reads back to the same mask, and the text written for any mask (the first
// four bytes of the input) reads back to that mask.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "schedule.h"

namespace {

void CheckWrittenText(std::uint32_t mask) {
    char text[dscopy::kMaxTextSize];
    const std::size_t length = dscopy::WriteMaskText(mask, text);
    if (length >= dscopy::kMaxTextSize || std::strlen(text) != length ||
        dscopy::MaskToText(mask) != std::string_view(text, length))
        __builtin_trap();
    // "b" reads the text "x" wrote.
    const std::optional<std::uint32_t> back = dscopy::TextToMask(text);
    if (!back || *back != (mask & dscopy::kAllHours))
        __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const std::optional<std::uint32_t> mask = dscopy::TextToMask(text)) {
        if ((*mask & ~dscopy::kAllHours) != 0)
            __builtin_trap();
        CheckWrittenText(*mask);
    }
    std::uint32_t mask = 0;
    if (size > 0)
        std::memcpy(&mask, data, size < sizeof mask ? size : sizeof mask);
    CheckWrittenText(mask);
    return 0;
}
