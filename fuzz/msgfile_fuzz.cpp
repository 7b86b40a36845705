// Fuzz target: the message-file lookup over any file contents, padded as LoadRcFile pads them
// with kRcFileSpare zero bytes. The input's first line is the ID to look up; the rest is the file.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "frame/msgfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data), size);
    std::string id = "MAIN_ROOTTEXT_ID";
    if (const std::size_t cut = input.find('\n'); cut != std::string_view::npos && cut <= 64) {
        id.assign(input.substr(0, cut));
        id.resize(std::strlen(id.c_str()));  // the ID is a C string
        input.remove_prefix(cut + 1);
    }

    // Exactly the file's size plus the spare bytes, so that ASan sees any read beyond them.
    const std::size_t bufferSize = input.size() + kRcFileSpare;
    const std::unique_ptr<char[]> buffer(new char[bufferSize]);
    if (!input.empty())
        std::memcpy(buffer.get(), input.data(), input.size());
    std::memset(buffer.get() + input.size(), 0, kRcFileSpare);

    const int rc = CPFindDestStr(buffer.get(), id.c_str());
    const std::size_t found = strnlen(deststr, sizeof deststr);
    if (found == sizeof deststr)
        __builtin_trap();  // not terminated
    if (rc == -1) {
        if (buffer[0] != '\0' || found != 0)
            __builtin_trap();
        return 0;
    }
    if (rc != 0)
        __builtin_trap();
    // A value is copied out of the text of the file, never from beyond it.
    if (found != 0 && memmem(buffer.get(), input.size(), deststr, found) == nullptr)
        __builtin_trap();
    return 0;
}
