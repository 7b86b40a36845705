// Wrappers of the report-settings library's machine, vendor and option functions. The call layer
// traces a missing function or a failed call; each wrapper adds its entry and exit lines.
#include "frame/vantrel_data_calls.h"

#include <array>
#include <cstring>

#include "frame/libraries.h"

std::vector<std::string> OSName;
int OSLen = 0;
std::vector<std::string> VendData;
int VendLen = 0;

namespace {

BOOL ReturnBool(bool ok) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %s.", ok ? "TRUE" : "FALSE");
    return ok ? TRUE : FALSE;
}

LibResult ReturnResult(const LibResult& r) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d (%s).", r.value,
              r.unbound() ? "unbound" : (r.ok() ? "succeeded" : "failed"));
    return r;
}

// Buffers of VNT_TEXT_SIZE bytes for a list function, as many as the list may hold.
class ListBuffers {
  public:
    explicit ListBuffers(int max) : bytes_(static_cast<std::size_t>(max)) {
        for (auto& b : bytes_)
            pointers_.push_back(b.data());
    }
    char** get() { return pointers_.data(); }
    // The first count texts, each cut at its buffer's end should the library leave one open.
    std::vector<std::string> texts(int count) const {
        std::vector<std::string> out;
        for (int i = 0; i < count && i < static_cast<int>(bytes_.size()); ++i) {
            const auto& b = bytes_[static_cast<std::size_t>(i)];
            out.emplace_back(b.data(), strnlen(b.data(), b.size()));
        }
        return out;
    }

  private:
    std::vector<std::array<char, VNT_TEXT_SIZE>> bytes_;
    std::vector<char*> pointers_;
};

// Calls a list function of the library into texts: TRUE, or FALSE with texts empty.
template <class Fn>
bool ReadList(HMODULE lib, const LibFunction<Fn>& fn, int max, std::vector<std::string>* texts) {
    ListBuffers buffers(max);
    int count = 0;
    texts->clear();
    if (!CallLibrary(lib, fn, buffers.get(), &count).ok() || count < 0 || count > max)
        return false;
    *texts = buffers.texts(count);
    return true;
}

}  // namespace

BOOL InitMachSetting(HMODULE lib, VntMachData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return ReturnBool(false);
    return ReturnBool(CallLibrary(lib, vntdata::kGetVntMachSetting, record).ok());
}

BOOL InitInfo(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const bool ok = ReadList(lib, vntdata::kGetVntMachListData, VNT_OS_LIST_MAX, &OSName);
    OSLen = static_cast<int>(OSName.size());
    return ReturnBool(ok);
}

BOOL PutVntMachSetting(HMODULE lib, VntMachData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return ReturnBool(false);
    return ReturnBool(CallLibrary(lib, vntdata::kSetVntMachSetting, record).ok());
}

std::string ReadMachComment() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    std::array<BYTE, kCommentMax + 1> data{};
    DWORD type = 0;
    DWORD size = data.size();
    if (!RegReadEx(HKEY_LOCAL_MACHINE, kCommentKey, kCommentValue, &type, &size, data.data()) ||
        type != REG_SZ) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<no comment.");
        return {};
    }
    const auto* text = reinterpret_cast<const char*>(data.data());
    std::string comment(text, strnlen(text, data.size()));
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %zu bytes.", comment.size());
    return comment;
}

LibResult WriteMachComment(HMODULE lib, const std::string& comment) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return ReturnResult(CallLibrary(lib, vntdata::kAMAMRegWrite, HKEY_LOCAL_MACHINE, kCommentKey,
                                    kCommentValue, static_cast<DWORD>(REG_SZ), comment.c_str(),
                                    static_cast<DWORD>(comment.size() + 1)));
}

BOOL InitVendSetting(HMODULE lib, VntVendData* record, bool withList) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p withList=%d", lib, withList ? 1 : 0);
    VendData.clear();
    VendLen = 0;
    if (record == nullptr)
        return ReturnBool(false);
    if (!withList) {
        return ReturnBool(
            CallLibrary(lib, vntdata::kGetVntVendSetting, record, nullptr, nullptr).ok());
    }
    ListBuffers buffers(VNT_VENDOR_LIST_MAX);
    int count = 0;
    if (!CallLibrary(lib, vntdata::kGetVntVendSetting, record, buffers.get(), &count).ok() ||
        count < 0 || count > VNT_VENDOR_LIST_MAX) {
        return ReturnBool(false);
    }
    VendData = buffers.texts(count);
    VendLen = count;
    return ReturnBool(true);
}

BOOL PutVntVendSetting(HMODULE lib, VntVendData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return ReturnBool(false);
    return ReturnBool(CallLibrary(lib, vntdata::kSetVntVendSetting, record).ok());
}

BOOL ReadOptionKinds(HMODULE lib, std::vector<OptionKind>* kinds) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    kinds->clear();
    std::vector<std::string> names;
    std::vector<std::string> descriptions;
    if (!ReadList(lib, vntdata::kGetVntOptKindList, VNT_OPTION_LIST_MAX, &names) ||
        !ReadList(lib, vntdata::kGetVntOptKindDesc, VNT_OPTION_LIST_MAX, &descriptions)) {
        return ReturnBool(false);
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        kinds->push_back({static_cast<std::uint32_t>(i), names[i],
                          i < descriptions.size() ? descriptions[i] : std::string()});
    }
    return ReturnBool(true);
}

BOOL ReadOptionsHeld(HMODULE lib, std::vector<std::uint32_t>* codes) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    std::vector<std::uint32_t> buffer(VNT_OPTION_LIST_MAX);
    int count = 0;
    codes->clear();
    if (!CallLibrary(lib, vntdata::kGetVntOptList, buffer.data(), &count).ok() || count < 0 ||
        count > VNT_OPTION_LIST_MAX) {
        return ReturnBool(false);
    }
    codes->assign(buffer.begin(), buffer.begin() + count);
    return ReturnBool(true);
}

LibResult AddOption(HMODULE lib, std::uint32_t code) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p code=%u", lib, code);
    return ReturnResult(CallLibrary(lib, vntdata::kAddVntOption, code));
}

LibResult DeleteOption(HMODULE lib, std::uint32_t code) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p code=%u", lib, code);
    return ReturnResult(CallLibrary(lib, vntdata::kDelVntOption, code));
}
