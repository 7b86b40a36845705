// zolreg's side of the settings store: RAII over the platform's registry calls, reading a key's
// values and subkeys, applying imported operations, and the one table of store error texts.
#pragma once

#include <zolwin.h>
#include <zolwin_transaction.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "regfile.h"

namespace zolreg {

// A failure zolreg reports as one line on standard error (the text goes after "zolreg: ").
class ToolError : public std::runtime_error {
  public:
    explicit ToolError(const std::string& text, LONG code = ERROR_SUCCESS)
        : std::runtime_error(text), code_(code) {}
    LONG code() const { return code_; }  // the registry's code, when it came from the store

  private:
    LONG code_;
};

// The store file for the current product root, as the platform resolves it.
std::string storePath();

// The text for a registry error code, the same for every verb. `key` is a path below HKLM;
// `value` names the value when the error is about one.
std::string storeErrorText(LONG code, std::string_view key = {},
                           const std::optional<std::string>& value = std::nullopt);

// Throws ToolError with storeErrorText unless code is ERROR_SUCCESS.
void check(LONG code, std::string_view key = {},
           const std::optional<std::string>& value = std::nullopt);

// An open key; closes its handle when it goes. The root key is used as is, never closed.
class Key {
  public:
    // Throws ToolError (key not found, store missing, ...).
    static Key open(const std::string& sub, REGSAM sam);
    // nullopt when the key does not exist; other failures throw.
    static std::optional<Key> openIfExists(const std::string& sub, REGSAM sam);
    // Creates the key and any missing parent.
    static Key create(const std::string& sub);

    Key(Key&& other) noexcept;
    Key& operator=(Key&& other) noexcept;
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key();

    HKEY get() const { return handle_; }
    const std::string& path() const { return path_; }

    std::vector<std::string> subKeyNames() const;
    std::vector<Value> values() const;
    std::optional<Value> value(const std::string& name) const;

  private:
    Key(HKEY handle, std::string path, bool owned)
        : handle_(handle), path_(std::move(path)), owned_(owned) {}
    void release() noexcept;

    HKEY handle_ = nullptr;
    std::string path_;
    bool owned_ = false;
};

// Groups writes so that they land together or not at all; rolls back unless committed.
class Transaction {
  public:
    Transaction();
    void commit();

  private:
    zolwin::Transaction tx_;
};

// Deletes a key with everything below it. Run it inside a Transaction.
void deleteTree(const std::string& sub);

// A key and every key below it, depth first, subkeys in the store's order.
std::vector<KeyBlock> readTree(const Key& top);

// Applies parsed operations in order. Run it inside a Transaction; a failure names the line
// of `source` it comes from.
void applyOperations(const std::vector<Operation>& ops, std::string_view source);

}  // namespace zolreg
