// Store access for the remote report service's records and lists (see vntstore.h).
#include "vntstore.h"

#include <cstdio>
#include <cstring>

#include "records.h"
#include "regvalue.h"

namespace rptset::vnt {

std::size_t EucPrefixLength(std::string_view text, std::size_t limit) {
    std::size_t end = 0;
    while (end < text.size()) {
        const auto lead = static_cast<unsigned char>(text[end]);
        // 0x8E: half-width kana (2 bytes); 0x8F: JIS X 0212 (3 bytes); 0xA1-0xFE: JIS X 0208
        // (2 bytes); anything else stands alone.
        std::size_t length = 1;
        if (lead == 0x8E || (lead >= 0xA1 && lead <= 0xFE))
            length = 2;
        else if (lead == 0x8F)
            length = 3;
        if (end + length > limit)
            break;
        end += length;
    }
    return end < text.size() ? end : text.size();
}

ReadKey::~ReadKey() {
    if (key_ != nullptr)
        RegCloseKey(key_);
}

LONG ReadKey::Open(const char* path) {
    const LONG rc = RegOpenKeyEx(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key_);
    if (rc == ERROR_FILE_NOT_FOUND) {
        key_ = nullptr;
        ZOL_TRACE(TRACE_LEVEL_ERROR, "key %s is missing: its values read as defaults.", path);
        return ERROR_SUCCESS;
    }
    if (rc != ERROR_SUCCESS)
        key_ = nullptr;
    return rc;
}

namespace {

// Notes a value that was read as its default or cut; the caller goes on with the rest.
void TraceUnusable(const char* keyPath, const char* name, ValueRead how) {
    const char* why = how == ValueRead::WrongType ? "has the wrong type; default used"
                                                  : "is too long; cut to fit";
    ZOL_TRACE(TRACE_LEVEL_ERROR, "%s\\%s %s.", keyPath, name, why);
}

// Reads a text value whole. Missing and WrongType leave *text alone.
ValueRead ReadWholeText(const ReadKey& key, const char* keyPath, const char* name,
                        std::string* text) {
    if (key.get() == nullptr)
        return ValueRead::Missing;
    const ValueRead r = ReadText(key.get(), name, text);
    if (r == ValueRead::WrongType)
        TraceUnusable(keyPath, name, r);
    return r;
}

// Cuts text to fit a field of size bytes (terminator included); true when it was cut.
bool FitField(std::string* text, std::size_t size) {
    if (text->size() <= size - 1)
        return false;
    text->resize(EucPrefixLength(*text, size - 1));
    return true;
}

}  // namespace

bool ReadTextValue(const ReadKey& key, const char* keyPath, const char* name, char* field,
                   std::size_t size) {
    std::string text;
    const ValueRead r = ReadWholeText(key, keyPath, name, &text);
    if (r == ValueRead::Failed)
        return false;
    if (r != ValueRead::Ok)
        return true;
    if (FitField(&text, size))
        TraceUnusable(keyPath, name, ValueRead::Cut);
    std::memcpy(field, text.data(), text.size());
    field[text.size()] = '\0';
    return true;
}

bool ReadDwordValue(const ReadKey& key, const char* keyPath, const char* name, uint32_t* out) {
    if (key.get() == nullptr)
        return true;
    const ValueRead r = ReadDword(key.get(), name, out);
    if (r == ValueRead::WrongType)
        TraceUnusable(keyPath, name, r);
    return r != ValueRead::Failed;
}

bool ReadList(const char* keyPath, int max, std::vector<std::string>* names) {
    names->clear();
    ReadKey key;
    if (key.Open(keyPath) != ERROR_SUCCESS)
        return false;
    for (int index = 0;; ++index) {
        char name[16];
        std::snprintf(name, sizeof name, "%03d", index);
        std::string text;
        const ValueRead r = ReadWholeText(key, keyPath, name, &text);
        if (r == ValueRead::Failed)
            return false;
        if (r == ValueRead::Missing || r == ValueRead::WrongType)
            return true;
        if (index == max) {
            ZOL_TRACE(TRACE_LEVEL_ERROR,
                      "%s holds more than %d entries: %s and those after it are not returned.",
                      keyPath, max, name);
            return true;
        }
        if (FitField(&text, VNT_TEXT_SIZE))
            TraceUnusable(keyPath, name, ValueRead::Cut);
        names->push_back(std::move(text));
    }
}

bool FillNames(const std::vector<std::string>& names, char** out, int* count) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (out[i] == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "list buffer %zu is NULL.", i);
            return false;
        }
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::memcpy(out[i], names[i].c_str(), names[i].size() + 1);
    }
    *count = static_cast<int>(names.size());
    return true;
}

}  // namespace rptset::vnt
