// The 12-value record that the crash tests rewrite: every value names its generation and its
// place, followed by bytes derived from both, so a mixed or damaged record shows.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace regtest {

inline constexpr int kRecordValues = 12;
inline constexpr size_t kRecordValueSize = 256;

inline std::string recordValueName(int i) {
    return "Field" + std::to_string(i);
}

inline std::string recordValue(uint64_t gen, int i) {
    std::string v(kRecordValueSize, '\0');
    const uint64_t index = static_cast<uint64_t>(i);
    std::memcpy(v.data(), &gen, sizeof gen);
    std::memcpy(v.data() + 8, &index, sizeof index);
    for (size_t j = 16; j < v.size(); ++j)
        v[j] = static_cast<char>((gen * 31 + index * 7 + j) & 0xff);
    return v;
}

// The generation a value holds, or -1 when it is not a well-formed value of field i.
inline int64_t recordGeneration(const std::string& v, int i) {
    if (v.size() != kRecordValueSize)
        return -1;
    uint64_t gen = 0;
    std::memcpy(&gen, v.data(), sizeof gen);
    return v == recordValue(gen, i) ? static_cast<int64_t>(gen) : -1;
}

}  // namespace regtest
