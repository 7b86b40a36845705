// Test support: one value of a root's store at a time (see store_reader.h).
#include "store_reader.h"

#include <cstring>

namespace zoltest {

namespace {

constexpr REGSAM kReadAccess = 0x20019;  // KEY_READ, as the libraries open keys to read

// ZolDir at the root while the call runs; the connection closed afterwards, so that the next
// call opens the store file again rather than trusting this process's view of it.
class AtRoot {
  public:
    explicit AtRoot(const std::string& root) : env_("ZolDir", root) {}
    ~AtRoot() { ZolRegCloseStore(); }
    AtRoot(const AtRoot&) = delete;
    AtRoot& operator=(const AtRoot&) = delete;

  private:
    ScopedEnv env_;
};

// Closes a key handle on every path.
class OpenKey {
  public:
    OpenKey(const std::string& path, REGSAM access, bool create) {
        status_ = create ? RegCreateKey(HKEY_LOCAL_MACHINE, path.c_str(), &key_)
                         : RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, access, &key_);
        if (status_ != ERROR_SUCCESS)
            key_ = nullptr;
    }
    ~OpenKey() {
        if (key_ != nullptr)
            RegCloseKey(key_);
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    LONG status() const { return status_; }
    HKEY get() const { return key_; }

  private:
    HKEY key_ = nullptr;
    LONG status_;
};

}  // namespace

std::optional<StoredValue> StoreReader::value(const std::string& key,
                                              const std::string& name) const {
    AtRoot at(root_);
    OpenKey k(key, kReadAccess, false);
    if (k.status() != ERROR_SUCCESS)
        return std::nullopt;
    StoredValue v;
    DWORD size = 0;
    if (RegQueryValueEx(k.get(), name.c_str(), nullptr, &v.type, nullptr, &size) != ERROR_SUCCESS)
        return std::nullopt;
    v.bytes.assign(size, '\0');
    if (RegQueryValueEx(k.get(), name.c_str(), nullptr, &v.type,
                        reinterpret_cast<BYTE*>(v.bytes.data()), &size) != ERROR_SUCCESS)
        return std::nullopt;
    v.bytes.resize(size);
    return v;
}

std::optional<std::string> StoreReader::text(const std::string& key,
                                             const std::string& name) const {
    auto v = value(key, name);
    if (!v || (v->type != REG_SZ && v->type != REG_EXPAND_SZ))
        return std::nullopt;
    // Up to the terminator: a text field written whole keeps its zero padding behind it.
    return v->bytes.substr(0, v->bytes.find('\0'));
}

std::optional<DWORD> StoreReader::dword(const std::string& key, const std::string& name) const {
    auto v = value(key, name);
    if (!v || v->type != REG_DWORD || v->bytes.size() != sizeof(DWORD))
        return std::nullopt;
    DWORD number = 0;
    std::memcpy(&number, v->bytes.data(), sizeof number);
    return number;
}

std::optional<std::vector<std::string>> StoreReader::multiString(const std::string& key,
                                                                 const std::string& name) const {
    auto v = value(key, name);
    if (!v || v->type != REG_MULTI_SZ)
        return std::nullopt;
    std::vector<std::string> list;
    for (std::size_t at = 0; at < v->bytes.size() && v->bytes[at] != '\0';) {
        const std::size_t end = v->bytes.find('\0', at);
        list.push_back(v->bytes.substr(at, end == std::string::npos ? end : end - at));
        if (end == std::string::npos)
            break;
        at = end + 1;
    }
    return list;
}

std::optional<std::vector<std::string>> StoreReader::subkeys(const std::string& key) const {
    AtRoot at(root_);
    OpenKey k(key, kReadAccess, false);
    if (k.status() != ERROR_SUCCESS)
        return std::nullopt;
    std::vector<std::string> names;
    char name[ZOL_MAX_KEY_NAME + 1];
    for (DWORD i = 0;; ++i) {
        DWORD size = sizeof name;
        if (RegEnumKeyEx(k.get(), i, name, &size, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            return names;
        names.emplace_back(name, size);
    }
}

LONG StoreReader::set(const std::string& key, const std::string& name, DWORD type,
                      const std::string& bytes) const {
    AtRoot at(root_);
    OpenKey k(key, KEY_ALL_ACCESS, true);
    if (k.status() != ERROR_SUCCESS)
        return k.status();
    return RegSetValueEx(k.get(), name.c_str(), 0, type,
                         reinterpret_cast<const BYTE*>(bytes.data()),
                         static_cast<DWORD>(bytes.size()));
}

LONG StoreReader::setText(const std::string& key, const std::string& name,
                          const std::string& text) const {
    return set(key, name, REG_SZ, text + '\0');
}

LONG StoreReader::setDword(const std::string& key, const std::string& name, DWORD value) const {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return set(key, name, REG_DWORD, bytes);
}

LONG StoreReader::setMultiString(const std::string& key, const std::string& name,
                                 const std::vector<std::string>& strings) const {
    std::string bytes;
    for (const std::string& s : strings)
        bytes += s + '\0';
    bytes += '\0';
    return set(key, name, REG_MULTI_SZ, bytes);
}

}  // namespace zoltest
