// Writing side of the report-settings library's destinations: a transaction guard, a writable
// key owner, value writers that refuse what the store cannot hold, and the whole-record writer
// shared by SetDestSetting and SetAMAMDeseSetting.
#pragma once

#include <zolwin.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "records.h"

namespace rptset {

// One store transaction for a group of writes: rolled back when the scope ends before
// Commit(). Nests inside a caller's transaction (only the outermost commit writes).
class Transaction {
  public:
    Transaction() : begin_(ZolRegBeginTransaction()) {}
    ~Transaction() {
        if (begin_ == ERROR_SUCCESS && !done_)
            ZolRegRollbackTransaction();
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // ERROR_SUCCESS when the transaction began.
    LONG status() const { return begin_; }
    LONG Commit() {
        done_ = true;
        return ZolRegCommitTransaction();
    }

  private:
    LONG begin_;
    bool done_ = false;
};

// Owns a key opened (or created) with full access and closes it on every path out.
class WriteKey {
  public:
    WriteKey() = default;
    ~WriteKey() { Close(); }
    WriteKey(const WriteKey&) = delete;
    WriteKey& operator=(const WriteKey&) = delete;

    LONG Open(HKEY parent, const char* path);
    LONG Create(HKEY parent, const char* path);
    HKEY get() const { return key_; }
    void Close();

  private:
    HKEY key_ = nullptr;
};

// Writes a REG_SZ value from a text field of fieldSize bytes; ERROR_INVALID_PARAMETER (nothing
// written) when the field holds no terminator.
LONG WriteTextField(HKEY key, const char* name, const char* field, std::size_t fieldSize);
LONG WriteDword(HKEY key, const char* name, uint32_t value);

// Names of the subkeys of key, in the store's order.
LONG SubkeyNames(HKEY key, std::vector<std::string>* names);

// Deletes subkey name of parent with everything below it.
LONG DeleteTree(HKEY parent, const char* name);

// True when a destination ID can be a key name: not empty, terminated within the field, at
// most ZOL_MAX_KEY_NAME characters, no backslash.
bool StorableID(const char (&id)[DEST_TEXT_SIZE]);

// Writes every value of record into subkey name of the open ID_LIST key (created when missing).
// The caller holds the transaction. ERROR_INVALID_PARAMETER: a text field without terminator.
LONG WriteDestination(HKEY idList, const char* name, const DestData& record);

}  // namespace rptset
