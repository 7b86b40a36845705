// Registry helpers of the report-settings library: a key owner and typed value readers.
#pragma once

#include <zolwin.h>

#include <cstddef>
#include <string>

namespace rptset {

// Owns an open registry key and closes it on every path out of the scope.
class Key {
  public:
    Key() = default;
    ~Key() { Close(); }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    // Opens path under parent (HKEY_LOCAL_MACHINE or an open key) for reading.
    LONG OpenRead(HKEY parent, const char* path);
    HKEY get() const { return key_; }
    void Close();

  private:
    HKEY key_ = nullptr;
};

// Outcome of reading one value into a record field.
enum class ValueRead {
    Ok,         // read and stored
    Missing,    // no such value: the field keeps its default
    WrongType,  // stored with another type: the field keeps its default
    Cut,        // a text longer than the field: stored cut to fit
    Failed,     // the store could not be read
};

// Reads a REG_DWORD value into *out.
ValueRead ReadDword(HKEY key, const char* name, uint32_t* out);
// Reads the whole text of a REG_SZ value (without its terminator) into *out.
ValueRead ReadText(HKEY key, const char* name, std::string* out);
// Reads a REG_SZ value into a field of size bytes, cut to size - 1 bytes when longer.
ValueRead ReadTextField(HKEY key, const char* name, char* field, std::size_t size);

// ASCII case-insensitive equality, as the store compares key names.
bool EqualsNoCase(const char* a, const char* b);

}  // namespace rptset
