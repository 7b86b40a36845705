// Registry helpers shared by every area of the report-settings library: a key owner and typed
// value readers; a store transaction that rolls back unless committed, a read snapshot, a key
// kept for writing, subkey listing and deletion, and typed value writers.
#pragma once

#include <zolwin.h>
#include <zolwin_transaction.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace rptset {

// Owns an open registry key and closes it on every path out of the scope: opened for reading,
// opened with full access (a missing key is an error), or created with its missing parents.
class Key {
  public:
    Key() = default;
    ~Key() { Close(); }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    // Each opens path under parent (HKEY_LOCAL_MACHINE or an open key).
    LONG OpenRead(HKEY parent, const char* path);
    LONG OpenWrite(HKEY parent, const char* path);
    LONG Create(HKEY parent, const char* path);
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

// Name of subkey `index` of key: ERROR_NO_MORE_ITEMS past the last.
LONG SubkeyName(HKEY key, DWORD index, std::string* name);
// Names of the subkeys of key, in the store's order.
LONG SubkeyNames(HKEY key, std::vector<std::string>* names);
// Deletes subkey name of parent with everything below it.
LONG DeleteTree(HKEY parent, const char* name);

// ---- Transactions and writing ----

// Writes of several values run in a zolwin::Transaction, reads of several in a
// zolwin::ReadSnapshot (zolwin_transaction.h).

LONG WriteDword(HKEY key, const char* name, uint32_t value);
// Texts are stored with their terminating zero, as every text of the store is kept.
LONG WriteText(HKEY key, const char* name, const char* text);
// Writes a text field of fieldSize bytes; ERROR_INVALID_PARAMETER (nothing written) when the
// field holds no terminator.
LONG WriteTextField(HKEY key, const char* name, const char* field, std::size_t fieldSize);

}  // namespace rptset
