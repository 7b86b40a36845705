// Fuzz target: the key-floppy file parser. Whatever it accepts must survive being written again:
// the same values composed into a new file parse back to the same floppy. Random bytes rarely
// carry a matching checksum, so each input is also tried with its last line replaced by the
// right CHECKSUM line, which lets the fuzzer reach the value checks.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "keyfile.h"

namespace {

void Check(std::string_view bytes) {
    vntcore::KeyFloppy floppy;
    const vntcore::KeyResult result = vntcore::ParseKeyFile(bytes, &floppy);
    if (!result) {
        // A refusal always says why, and leaves the output untouched.
        if (result.reason.empty() || !floppy.values.empty() || floppy.type != 0)
            __builtin_trap();
        return;
    }
    if (!result.reason.empty())
        __builtin_trap();

    std::vector<std::pair<std::string, std::string>> values;
    for (const vntcore::KeyValue& v : floppy.values)
        values.emplace_back(v.item->name, v.text);
    vntcore::KeyFloppy again;
    if (!vntcore::ParseKeyFile(vntcore::ComposeKeyFile(values), &again) ||
        again.type != floppy.type || again.values.size() != floppy.values.size())
        __builtin_trap();
    for (std::size_t i = 0; i < floppy.values.size(); ++i) {
        const vntcore::KeyValue& a = floppy.values[i];
        const vntcore::KeyValue& b = again.values[i];
        if (a.item != b.item || a.text != b.text || a.number != b.number)
            __builtin_trap();
    }
}

// The bytes up to their last line, followed by the CHECKSUM line that covers them.
std::string WithChecksum(std::string_view bytes) {
    std::string_view content = bytes;
    if (content.ends_with('\n'))
        content.remove_suffix(1);
    const std::size_t lastStart = content.rfind('\n') + 1;  // 0 for a single line
    std::string fixed(bytes.substr(0, lastStart));
    char line[32];
    std::snprintf(line, sizeof line, "%.*s=%08x\n",
                  static_cast<int>(vntcore::kKeyChecksumName.size()),
                  vntcore::kKeyChecksumName.data(), vntcore::Crc32(fixed));
    return fixed + line;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    Check(bytes);
    Check(WithChecksum(bytes));
    return 0;
}
