// Filling in the printf-style texts of the message file without trusting them.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

// Formats a message-file text: "%%" gives "%", each "%s" takes the next argument (an empty text
// once the arguments run out), and every other '%' sequence is kept as written. For the texts the
// program ships this is exactly what sprintf gives; a damaged file can never make it read an
// argument that was not passed.
std::string FormatText(std::string_view format, std::initializer_list<std::string_view> args = {});

// FormatText into a fixed buffer of `size` bytes, cut to size - 1 bytes and always terminated,
// as snprintf does. Returns buffer.
char* FormatTextInto(char* buffer, std::size_t size, std::string_view format,
                     std::initializer_list<std::string_view> args = {});
