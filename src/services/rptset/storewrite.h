// Writing side of the report-settings library's registry access: a store transaction that
// rolls back unless committed, a key opened or created for writing, and typed value writers.
#pragma once

#include <zolwin.h>

#include <cstdint>
#include <string>

namespace rptset {

// One store transaction for a write of several values. Leaving the scope without Commit rolls
// it back, so an early return never leaves half a record behind. Nests inside a caller's own
// transaction as the platform's transactions do.
class Transaction {
  public:
    Transaction() : rc_(ZolRegBeginTransaction()) {}
    ~Transaction() {
        if (rc_ == ERROR_SUCCESS && !done_)
            ZolRegRollbackTransaction();
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // ERROR_SUCCESS when the transaction could be begun.
    LONG status() const { return rc_; }
    LONG Commit() {
        done_ = true;
        return ZolRegCommitTransaction();
    }

  private:
    LONG rc_;
    bool done_ = false;
};

// A consistent view for a read of several values or keys: no other process's commit lands
// between them. It always ends with a commit, which writes nothing here and, unlike a
// rollback, leaves a caller's own outer transaction usable.
class ReadSnapshot {
  public:
    ReadSnapshot() : begun_(ZolRegBeginTransaction() == ERROR_SUCCESS) {}
    ~ReadSnapshot() {
        if (begun_)
            ZolRegCommitTransaction();
    }
    ReadSnapshot(const ReadSnapshot&) = delete;
    ReadSnapshot& operator=(const ReadSnapshot&) = delete;

  private:
    bool begun_;
};

// Owns a key opened for writing (created with its missing parents, or only opened).
class WritableKey {
  public:
    WritableKey() = default;
    ~WritableKey() {
        if (key_ != nullptr)
            RegCloseKey(key_);
    }
    WritableKey(const WritableKey&) = delete;
    WritableKey& operator=(const WritableKey&) = delete;

    LONG Create(HKEY parent, const char* path) {
        return RegCreateKeyEx(parent, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                              nullptr, &key_, nullptr);
    }
    LONG OpenExisting(HKEY parent, const char* path) {
        return RegOpenKeyEx(parent, path, 0, KEY_ALL_ACCESS, &key_);
    }
    HKEY get() const { return key_; }

  private:
    HKEY key_ = nullptr;
};

inline LONG WriteDword(HKEY key, const char* name, uint32_t value) {
    return RegSetValueEx(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                         sizeof value);
}

// Stores text with its terminating zero, as every text of the store is kept.
inline LONG WriteText(HKEY key, const char* name, const std::string& text) {
    return RegSetValueEx(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                         static_cast<DWORD>(text.size() + 1));
}

}  // namespace rptset
