// REGEDIT4 text: parsing an import file into a list of operations, and writing an export.
// No I/O here: text in, operations (or the first error with its line number) out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zolreg {

// One value as the store holds it. Data are raw bytes (strings keep their terminating zero);
// the default value has an empty name.
struct Value {
    std::string name;
    uint32_t type = 0;
    std::string data;
    bool operator==(const Value&) const = default;
};

enum class OpKind { CreateKey, DeleteKey, SetValue, DeleteValue };

struct Operation {
    OpKind kind = OpKind::CreateKey;
    std::string key;  // path below HKEY_LOCAL_MACHINE ("" is the root key itself)
    Value value;      // SetValue: the whole value; DeleteValue: the name only
    int line = 0;     // line of the file the operation comes from
    bool operator==(const Operation&) const = default;
};

struct ParseError {
    int line = 0;
    std::string message;
};

struct ParseResult {
    std::vector<Operation> ops;
    std::optional<ParseError> error;  // set: the file is refused as a whole, ops is empty
};

ParseResult parseRegFile(std::string_view text);

// A key and its values, in the order they are written.
struct KeyBlock {
    std::string key;  // path below HKEY_LOCAL_MACHINE
    std::vector<Value> values;
};

// The value's line(s) in an export: "name"=data (hex data wrapped with trailing backslashes).
// Throws std::invalid_argument for a name that holds a line break, which REGEDIT4 cannot carry.
std::string formatValueLine(const Value& value);

// A whole REGEDIT4 file: header, blank line, then each key block followed by a blank line.
// Throws std::invalid_argument as formatValueLine does, or for a key name with a line break.
std::string writeRegFile(const std::vector<KeyBlock>& blocks);

}  // namespace zolreg
