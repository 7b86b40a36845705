// The program's calls into the report-settings library "rptset.dll" for the remote report
// service's machine, vendor and option data: the functions it binds (name and success test) and
// the wrappers the screens of src/remote use. None shows a message; the screens do.
#pragma once

#include <zolwin.h>

#include <cstdint>
#include <string>
#include <vector>

#include "frame/libcall.h"
#include "records.h"
#include "regpaths.h"
#include "rptset_api.h"

namespace vntdata {
using libresult::Any, libresult::NonZero, libresult::One;
inline constexpr LibFunction<GetVntMachSetting_fn> kGetVntMachSetting{"GetVntMachSetting", One};
inline constexpr LibFunction<SetVntMachSetting_fn> kSetVntMachSetting{"SetVntMachSetting", One};
inline constexpr LibFunction<GetVntMachListData_fn> kGetVntMachListData{"GetVntMachListData", One};
inline constexpr LibFunction<GetVntVendSetting_fn> kGetVntVendSetting{"GetVntVendSetting", One};
inline constexpr LibFunction<SetVntVendSetting_fn> kSetVntVendSetting{"SetVntVendSetting", NonZero};
inline constexpr LibFunction<GetVntOptKindList_fn> kGetVntOptKindList{"GetVntOptKindList", One};
inline constexpr LibFunction<GetVntOptKindDesc_fn> kGetVntOptKindDesc{"GetVntOptKindDesc", One};
inline constexpr LibFunction<GetVntOptList_fn> kGetVntOptList{"GetVntOptList", One};
inline constexpr LibFunction<AddVntOption_fn> kAddVntOption{"AddVntOption", Any};
inline constexpr LibFunction<DelVntOption_fn> kDelVntOption{"DelVntOption", Any};
inline constexpr LibFunction<AMAMRegWrite_fn> kAMAMRegWrite{"AMAMRegWrite", NonZero};
}  // namespace vntdata

// ---- Machine data ----

// The operating systems the machine screen offers, filled by InitInfo; OSLen is their count.
extern std::vector<std::string> OSName;
extern int OSLen;

// GetVntMachSetting into record: TRUE, or FALSE (record as it was).
BOOL InitMachSetting(HMODULE lib, VntMachData* record);
// GetVntMachListData into OSName / OSLen: TRUE, or FALSE with the list empty.
BOOL InitInfo(HMODULE lib);
// SetVntMachSetting: TRUE only when the library answered 1.
BOOL PutVntMachSetting(HMODULE lib, VntMachData* record);

// Where the machine comment lives, under HKEY_LOCAL_MACHINE, and its longest text in bytes.
inline constexpr const char* kCommentKey = ZOL_KEY_VNT_SETTING;
inline constexpr const char* kCommentValue = "Comment";
inline constexpr std::size_t kCommentMax = 256;
// The stored comment (read directly from the store); empty when it is missing or unreadable.
std::string ReadMachComment();
// Writes the comment as REG_SZ with its terminator through "AMAMRegWrite": unbound when the
// library lacks it, failed when the write failed.
LibResult WriteMachComment(HMODULE lib, const std::string& comment);

// ---- Vendor data ----

// The distributors of the vendor screen in Japanese mode, filled by InitVendSetting when a list
// is asked for; VendLen is their count.
extern std::vector<std::string> VendData;
extern int VendLen;

// GetVntVendSetting into record, and with withList the distributor list into VendData / VendLen:
// TRUE only when the library answered 1.
BOOL InitVendSetting(HMODULE lib, VntVendData* record, bool withList);
// SetVntVendSetting: TRUE, or FALSE when the library answered 0.
BOOL PutVntVendSetting(HMODULE lib, VntVendData* record);

// ---- Option data ----

// One option kind the store offers: its code (position in the kind list), name and description.
struct OptionKind {
    std::uint32_t code = 0;
    std::string name, description;
};
// The option kinds, each with its description (empty where the store has none). FALSE when a
// list cannot be read.
BOOL ReadOptionKinds(HMODULE lib, std::vector<OptionKind>* kinds);
// The codes of the options held, in their order. FALSE when they cannot be read.
BOOL ReadOptionsHeld(HMODULE lib, std::vector<std::uint32_t>* codes);
// AddVntOption / DelVntOption: the value is the library's VNT_OPT_* result (0 the store failed);
// unbound when the library lacks the function.
LibResult AddOption(HMODULE lib, std::uint32_t code);
LibResult DeleteOption(HMODULE lib, std::uint32_t code);
