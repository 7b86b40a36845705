// The program's calls into the remote report service's own libraries: the key floppy and the
// customer record of "rptset.dll", the delivery-library choice of "vntutil.dll", a delivery
// library's report entry and SRVINFO.DLL's clearing of the set-up. Each wrapper binds its
// function at the call from the handle it is given; none shows a message, the screen does.
#pragma once

#include <zolwin.h>

#include "frame/libcall.h"
#include "records.h"
#include "rptset_api.h"
#include "srvinfo_api.h"
#include "vantrelpkg_api.h"

namespace vantrel {
using libresult::Any, libresult::NonZero, libresult::One, libresult::Zero;
inline constexpr LibFunction<GetOpenMsgfromFD_fn> kGetOpenMsgfromFD{"GetOpenMsgfromFD", Any};
inline constexpr LibFunction<checkVntFile_fn> kCheckVntFile{"checkVntFile", libresult::NotMinusOne};
inline constexpr LibFunction<GetVntUserSetting_fn> kGetVntUserSetting{"GetVntUserSetting", One};
inline constexpr LibFunction<SetVntUserSetting_fn> kSetVntUserSetting{"SetVntUserSetting", One};
inline constexpr LibFunction<VNTGetSelectedDllName_fn> kVNTGetSelectedDllName{
    "VNTGetSelectedDllName", Zero};
inline constexpr LibFunction<VX_Clear_EMP_info_Data_fn> kVXClearEMPInfoData{
    "VX_Clear_EMP_info_Data", NonZero};
}  // namespace vantrel

// Largest key-floppy file checkVntFile lets through, in bytes.
inline constexpr int kKeyFloppyMaxFile = 8193;

// GetOpenMsgfromFD: reads the key floppy under path into the store. The value is the library's
// own (1 read, KEYFD_* refusals, 0 the store could not be written); unbound without the function.
LibResult ReadKeyFloppy(HMODULE lib, const char* path);
// True when the library has checkVntFile.
bool HasKeyFloppyCheck(HMODULE lib);
// checkVntFile(path, 0, kKeyFloppyMaxFile): succeeded when path leads to a key-floppy file.
LibResult CheckKeyFloppyPath(HMODULE lib, const char* path);

// GetVntUserSetting / SetVntUserSetting of the customer record: succeeded on the library's 1.
LibResult ReadVntUser(HMODULE lib, VntUserData* record);
LibResult WriteVntUser(HMODULE lib, VntUserData* record);

// VNTGetSelectedDllName of "vntutil.dll" (handle vntutil): the delivery library of the stored
// method into name (size bytes).
LibResult SelectedDeliveryLibrary(HMODULE vntutil, char* name, int size);
// A delivery library's report entry (every delivery library exports one of this type) called
// with the error-text slot and the report kind; the value is the library's outcome (0 sent,
// 1 may be tried again, other values failed) and is never judged here.
LibResult CallDeliveryEntry(HMODULE delivery, const char* entry, char** errorText,
                            const char* kind);
// VX_Clear_EMP_info_Data of SRVINFO.DLL: succeeded when the set-up was cleared.
LibResult ClearServiceSetup(HMODULE srvinfo);
