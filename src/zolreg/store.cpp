// zolreg's access to the settings store, only through the platform's registry interface.
#include "store.h"

#include <array>
#include <filesystem>

#include "regtext.h"

namespace zolreg {

namespace {

// Codes of this table that the platform does not have: refinements of 1016 and 2.
constexpr LONG kStoreUnreadable = -1;
constexpr LONG kValueNotFound = -2;

struct ErrorText {
    LONG code;
    std::string_view text;  // {store}, {key} and {value} are filled in
};

constexpr std::array<ErrorText, 13> kErrorTexts{{
    {ERROR_REGISTRY_IO_FAILED, "the settings store {store} is missing; run zolreg init"},
    {kStoreUnreadable, "the settings store {store} cannot be read or written"},
    {ERROR_REGISTRY_CORRUPT,
     "the settings store {store} is damaged (not a settings store or corrupt)"},
    {ERROR_FILE_NOT_FOUND, "key {key} not found"},
    {kValueNotFound, "value {value} not found in key {key}"},
    {ERROR_ACCESS_DENIED, "access to key {key} denied"},
    {ERROR_INVALID_HANDLE, "internal error: invalid handle for key {key}"},
    {ERROR_NOT_ENOUGH_MEMORY, "out of memory"},
    {ERROR_INVALID_PARAMETER, "invalid name, type or data for key {key}"},
    {ERROR_BAD_PATHNAME, "invalid key path {key}"},
    {ERROR_ALREADY_EXISTS,
     "the settings store {store} already exists; use zolreg init /f to replace it"},
    {ERROR_KEY_DELETED, "key {key} was deleted by another program meanwhile"},
    {ERROR_INVALID_STATE, "internal error: store transaction calls out of order"},
}};

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (size_t pos = text.find(from); pos != std::string::npos;
         pos = text.find(from, pos + to.size())) {
        text.replace(pos, from.size(), to);
    }
}

std::string valueLabel(const std::string& name) {
    return name.empty() ? "(Default)" : name;
}

bool isStoreLevel(LONG code) {
    return code == ERROR_REGISTRY_IO_FAILED || code == ERROR_REGISTRY_CORRUPT ||
           code == ERROR_NOT_ENOUGH_MEMORY;
}

}  // namespace

std::string storePath() {
    std::string path(4096, '\0');
    if (ZolRegStorePath(path.data(), static_cast<DWORD>(path.size())) != ERROR_SUCCESS) {
        return "registry/hklm.db";  // only in messages: the platform could not say more
    }
    path.resize(path.find('\0'));
    return path;
}

std::string storeErrorText(LONG code, std::string_view key,
                           const std::optional<std::string>& value) {
    const std::string store = storePath();
    if (code == ERROR_REGISTRY_IO_FAILED) {
        std::error_code ec;
        if (std::filesystem::exists(store, ec))
            code = kStoreUnreadable;
    }
    if (code == ERROR_FILE_NOT_FOUND && value)
        code = kValueNotFound;
    std::string text;
    for (const auto& entry : kErrorTexts) {
        if (entry.code == code)
            text = entry.text;
    }
    if (text.empty())
        text = "the settings store failed with error " + std::to_string(code) + " on key {key}";
    replaceAll(text, "{store}", store);
    replaceAll(text, "{key}", shortPath(key));
    replaceAll(text, "{value}", valueLabel(value.value_or("")));
    return text;
}

void check(LONG code, std::string_view key, const std::optional<std::string>& value) {
    if (code != ERROR_SUCCESS)
        throw ToolError(storeErrorText(code, key, value), code);
}

Key Key::open(const std::string& sub, REGSAM sam) {
    std::optional<Key> key = openIfExists(sub, sam);
    if (!key)
        check(ERROR_FILE_NOT_FOUND, sub);
    return std::move(*key);
}

std::optional<Key> Key::openIfExists(const std::string& sub, REGSAM sam) {
    if (sub.empty()) {
        // The root handle is not opened, but the store must still be usable.
        LONG rc = ZolRegCheckStore(0);
        check(rc, sub);
        return Key(HKEY_LOCAL_MACHINE, sub, false);
    }
    HKEY handle = nullptr;
    LONG rc = RegOpenKeyEx(HKEY_LOCAL_MACHINE, sub.c_str(), 0, sam, &handle);
    if (rc == ERROR_FILE_NOT_FOUND)
        return std::nullopt;
    check(rc, sub);
    return Key(handle, sub, true);
}

Key Key::create(const std::string& sub) {
    if (sub.empty())
        return open(sub, KEY_ALL_ACCESS);
    HKEY handle = nullptr;
    check(RegCreateKey(HKEY_LOCAL_MACHINE, sub.c_str(), &handle), sub);
    return Key(handle, sub, true);
}

Key::Key(Key&& other) noexcept
    : handle_(other.handle_), path_(std::move(other.path_)), owned_(other.owned_) {
    other.handle_ = nullptr;
    other.owned_ = false;
}

Key& Key::operator=(Key&& other) noexcept {
    if (this != &other) {
        release();
        handle_ = other.handle_;
        path_ = std::move(other.path_);
        owned_ = other.owned_;
        other.handle_ = nullptr;
        other.owned_ = false;
    }
    return *this;
}

Key::~Key() {
    release();
}

void Key::release() noexcept {
    if (owned_ && handle_ != nullptr)
        RegCloseKey(handle_);
    handle_ = nullptr;
    owned_ = false;
}

std::vector<std::string> Key::subKeyNames() const {
    std::vector<std::string> names;
    std::string name(ZOL_MAX_KEY_NAME + 1, '\0');
    for (DWORD index = 0;;) {
        DWORD length = static_cast<DWORD>(name.size());
        LONG rc =
            RegEnumKeyEx(handle_, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (rc == ERROR_NO_MORE_ITEMS)
            break;
        if (rc == ERROR_MORE_DATA && name.size() < 65536) {
            name.resize(name.size() * 2);  // a name longer than the platform's limit: just retry
            continue;
        }
        check(rc, path_);
        names.emplace_back(name.data(), length);
        ++index;
    }
    return names;
}

std::vector<Value> Key::values() const {
    std::vector<Value> result;
    std::string name(ZOL_MAX_VALUE_NAME + 1, '\0');
    std::string data(256, '\0');
    int retries = 0;
    for (DWORD index = 0;;) {
        DWORD nameLength = static_cast<DWORD>(name.size());
        DWORD size = static_cast<DWORD>(data.size());
        DWORD type = REG_NONE;
        LONG rc = RegEnumValue(handle_, index, name.data(), &nameLength, nullptr, &type,
                               reinterpret_cast<LPBYTE>(data.data()), &size);
        if (rc == ERROR_NO_MORE_ITEMS)
            break;
        // The data grew between two calls or did not fit: make room as told and ask again.
        if (rc == ERROR_MORE_DATA && size > data.size() && ++retries < 16) {
            data.resize(size);
            continue;
        }
        check(rc, path_);
        result.push_back(Value{std::string(name.data(), nameLength), type, data.substr(0, size)});
        retries = 0;
        ++index;
    }
    return result;
}

std::optional<Value> Key::value(const std::string& name) const {
    DWORD type = REG_NONE;
    DWORD size = 0;
    for (int attempt = 0; attempt < 16; ++attempt) {
        LONG rc = RegQueryValueEx(handle_, name.c_str(), nullptr, &type, nullptr, &size);
        if (rc == ERROR_FILE_NOT_FOUND)
            return std::nullopt;
        check(rc, path_, name);
        std::string data(size, '\0');
        DWORD got = size;
        rc = RegQueryValueEx(handle_, name.c_str(), nullptr, &type,
                             reinterpret_cast<LPBYTE>(data.data()), &got);
        if (rc == ERROR_MORE_DATA)
            continue;  // written meanwhile: size it again
        if (rc == ERROR_FILE_NOT_FOUND)
            return std::nullopt;
        check(rc, path_, name);
        data.resize(got);
        return Value{name, type, std::move(data)};
    }
    check(ERROR_MORE_DATA, path_, name);
    return std::nullopt;
}

Transaction::Transaction() {
    if (const LONG rc = tx_.status(); rc != ERROR_SUCCESS)
        check(rc, "", std::nullopt);
}

void Transaction::commit() {
    check(tx_.commit());
}

void deleteTree(const std::string& sub) {
    {
        std::optional<Key> key = Key::openIfExists(sub, KEY_ALL_ACCESS);
        if (!key)
            return;
        for (const std::string& name : key->subKeyNames())
            deleteTree(childPath(sub, name));
    }
    check(RegDeleteKey(HKEY_LOCAL_MACHINE, sub.c_str()), sub);
}

std::vector<KeyBlock> readTree(const Key& top) {
    std::vector<KeyBlock> blocks;
    blocks.push_back(KeyBlock{top.path(), top.values()});
    for (const std::string& name : top.subKeyNames()) {
        Key child = Key::open(childPath(top.path(), name), KEY_READ);
        std::vector<KeyBlock> below = readTree(child);
        blocks.insert(blocks.end(), std::make_move_iterator(below.begin()),
                      std::make_move_iterator(below.end()));
    }
    return blocks;
}

void applyOperations(const std::vector<Operation>& ops, std::string_view source) {
    std::optional<Key> current;  // the key of the last [KEY] line, kept open for its values
    for (const Operation& op : ops) {
        try {
            switch (op.kind) {
                case OpKind::CreateKey:
                    current.reset();
                    current = Key::create(op.key);
                    break;
                case OpKind::DeleteKey:
                    current.reset();
                    if (op.key.empty())
                        check(ERROR_ACCESS_DENIED, op.key);
                    deleteTree(op.key);
                    break;
                case OpKind::SetValue:
                    if (!current || current->path() != op.key) {
                        current.reset();
                        current = Key::create(op.key);
                    }
                    check(RegSetValueEx(current->get(), op.value.name.c_str(), 0, op.value.type,
                                        reinterpret_cast<const BYTE*>(op.value.data.data()),
                                        static_cast<DWORD>(op.value.data.size())),
                          op.key, op.value.name);
                    break;
                case OpKind::DeleteValue: {
                    std::optional<Key> key = Key::openIfExists(op.key, KEY_ALL_ACCESS);
                    if (!key)
                        break;  // nothing to delete, as with a missing key
                    LONG rc = RegDeleteValue(key->get(), op.value.name.c_str());
                    if (rc != ERROR_FILE_NOT_FOUND)
                        check(rc, op.key, op.value.name);
                    break;
                }
            }
        } catch (const ToolError& e) {
            // A store that cannot be used is not the line's fault; say so without the line.
            if (isStoreLevel(e.code()))
                throw;
            throw ToolError(
                std::string(source) + ": line " + std::to_string(op.line) + ": " + e.what(),
                e.code());
        }
    }
}

}  // namespace zolreg
