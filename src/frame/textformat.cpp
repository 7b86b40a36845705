// Safe filling of message-file formats (see textformat.h).
#include "frame/textformat.h"

#include <algorithm>
#include <cstring>

std::string FormatText(std::string_view format, std::initializer_list<std::string_view> args) {
    std::string out;
    out.reserve(format.size());
    auto next = args.begin();
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char c = format[i];
        if (c != '%' || i + 1 == format.size()) {
            out += c;
            continue;
        }
        const char conversion = format[i + 1];
        if (conversion == '%') {
            out += '%';
            ++i;
        } else if (conversion == 's') {
            if (next != args.end())
                out += *next++;
            ++i;
        } else {
            out += c;
        }
    }
    return out;
}

char* FormatTextInto(char* buffer, std::size_t size, std::string_view format,
                     std::initializer_list<std::string_view> args) {
    if (buffer == nullptr || size == 0)
        return buffer;
    const std::string text = FormatText(format, args);
    const std::size_t n = std::min(text.size(), size - 1);
    std::memcpy(buffer, text.data(), n);
    buffer[n] = '\0';
    return buffer;
}
