// rptset.dll: the options the remote report service's customer holds, as a list of option kind
// codes (numbers of LIST\OPTION). OPTCDN keeps the first code, so that a reader of the single
// value sees the option the service has always sent; OPTCDNLIST holds the whole list as decimal
// codes separated by commas. A store without OPTCDNLIST (made before the list existed), or whose
// list does not start with OPTCDN (OPTCDN written alone since), holds the single option OPTCDN.
#include <zolwin.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "regvalue.h"
#include "rptset_api.h"
#include "vntstore.h"

namespace {

using rptset::vnt::kSettingKey;
using zolwin::Transaction;

constexpr const char* kOptionValue = "OPTCDN";
constexpr const char* kOptionListValue = "OPTCDNLIST";

// "0,2,5" as its codes; nothing when the text is not such a list (empty, a blank, a sign, an
// empty item, a number that does not fit) or holds more than VNT_OPTION_LIST_MAX codes.
std::optional<std::vector<uint32_t>> ParseCodes(std::string_view text) {
    std::vector<uint32_t> codes;
    const char* p = text.data();
    const char* end = p + text.size();
    while (true) {
        uint32_t code = 0;
        const auto [next, ec] = std::from_chars(p, end, code);
        if (ec != std::errc() || codes.size() == VNT_OPTION_LIST_MAX)
            return std::nullopt;
        codes.push_back(code);
        if (next == end)
            return codes;
        if (*next != ',')
            return std::nullopt;
        p = next + 1;
    }
}

std::string JoinCodes(const std::vector<uint32_t>& codes) {
    std::string text;
    for (const uint32_t code : codes) {
        if (!text.empty())
            text += ',';
        text += std::to_string(code);
    }
    return text;
}

// Reads the options held. false only when the store cannot be read.
bool ReadHeld(std::vector<uint32_t>* codes) {
    rptset::vnt::ReadKey key;
    uint32_t first = 0;
    if (key.Open(kSettingKey) != ERROR_SUCCESS ||
        !rptset::vnt::ReadDwordValue(key, kSettingKey, kOptionValue, &first)) {
        return false;
    }
    *codes = {first};
    if (key.get() == nullptr)
        return true;
    std::string text;
    switch (rptset::ReadText(key.get(), kOptionListValue, &text)) {
        case rptset::ValueRead::Failed:
            return false;
        case rptset::ValueRead::Ok:
        case rptset::ValueRead::Cut:
            break;
        case rptset::ValueRead::Missing:
            return true;
        case rptset::ValueRead::WrongType:
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s has the wrong type; the single option %u is held.",
                      kOptionListValue, first);
            return true;
    }
    const std::optional<std::vector<uint32_t>> list = ParseCodes(text);
    if (!list || list->front() != first) {
        ZOL_TRACE(TRACE_LEVEL_ERROR,
                  "%s \"%s\" does not go with %s %u; that single option is held.", kOptionListValue,
                  text.c_str(), kOptionValue, first);
        return true;
    }
    *codes = *list;
    return true;
}

LONG WriteHeld(const std::vector<uint32_t>& codes) {
    rptset::Key key;
    LONG rc = key.Create(HKEY_LOCAL_MACHINE, kSettingKey);
    if (rc == ERROR_SUCCESS)
        rc = rptset::WriteDword(key.get(), kOptionValue, codes.front());
    if (rc == ERROR_SUCCESS)
        rc = rptset::WriteText(key.get(), kOptionListValue, JoinCodes(codes).c_str());
    return rc;
}

// Runs change(held, kindCount) over the stored list inside one transaction and stores the list
// when it answers VNT_OPT_DONE. The result is change's, or 0 when the store failed.
template <class Change>
int ChangeHeld(Change change) {
    Transaction transaction;
    std::vector<uint32_t> held;
    std::vector<std::string> kinds;
    if (transaction.status() != ERROR_SUCCESS || !ReadHeld(&held) ||
        !rptset::vnt::ReadList(rptset::vnt::kOptionListKey, VNT_OPTION_LIST_MAX, &kinds)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<the store cannot be read.return 0.");
        return 0;
    }
    const int result = change(held, kinds.size());
    if (result != VNT_OPT_DONE) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused.return %d.", result);
        return result;
    }
    LONG rc = WriteHeld(held);
    if (rc == ERROR_SUCCESS)
        rc = transaction.commit();
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write failed (%d); nothing written.return 0.",
                  static_cast<int>(rc));
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1. held=%s", JoinCodes(held).c_str());
    return VNT_OPT_DONE;
}

bool Holds(const std::vector<uint32_t>& held, uint32_t code) {
    return std::find(held.begin(), held.end(), code) != held.end();
}

}  // namespace

extern "C" ZOLWIN_API int GetVntOptList(uint32_t* codes, int* count) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (codes == nullptr || count == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    std::vector<uint32_t> held;
    Transaction transaction;
    const bool ok = transaction.status() == ERROR_SUCCESS && ReadHeld(&held);
    transaction.commit();
    if (!ok) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<the store cannot be read.return 0.");
        return 0;
    }
    std::copy(held.begin(), held.end(), codes);
    *count = static_cast<int>(held.size());
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1. held=%s", JoinCodes(held).c_str());
    return 1;
}
static_assert(std::is_same_v<decltype(GetVntOptList), GetVntOptList_fn>);

extern "C" ZOLWIN_API int AddVntOption(uint32_t code) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] code=%u", code);
    return ChangeHeld([code](std::vector<uint32_t>& held, std::size_t kindCount) {
        if (Holds(held, code))
            return VNT_OPT_HELD;
        if (code >= kindCount || held.size() >= VNT_OPTION_LIST_MAX)
            return VNT_OPT_REFUSED;
        held.push_back(code);
        return VNT_OPT_DONE;
    });
}
static_assert(std::is_same_v<decltype(AddVntOption), AddVntOption_fn>);

extern "C" ZOLWIN_API int DelVntOption(uint32_t code) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] code=%u", code);
    // A code the kind list no longer names may still be deleted.
    return ChangeHeld([code](std::vector<uint32_t>& held, std::size_t) {
        if (!Holds(held, code))
            return VNT_OPT_HELD;
        if (held.size() == 1)
            return VNT_OPT_REFUSED;
        held.erase(std::find(held.begin(), held.end(), code));
        return VNT_OPT_DONE;
    });
}
static_assert(std::is_same_v<decltype(DelVntOption), DelVntOption_fn>);
