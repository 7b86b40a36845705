// Every service library of the product root loads and exports every function the program
// binds from it, by the names the program uses. The remote report package's libraries are
// required too: a product root without them is incomplete. Each must also unload again.
#include <dlfcn.h>

#include <string>
#include <vector>

#include "services_test_util.h"

namespace svctest {
namespace {

struct LibraryFunctions {
    const char* file;
    std::vector<const char*> functions;
};

const LibraryFunctions kBound[] = {
    {"rptset.dll",
     {"CheckInstVantrel",   "GetAllBaseSetting",     "GetBaseSetting",     "SetBaseSetting",
      "GetAMBIBaseSetting", "SetAMBIBaseSetting",    "AMAMGetBaseRegPath", "CheckInternetMailMode",
      "AMBIMyIPCheck",      "GetTrapDest",           "SetTrapDest",        "DelDest",
      "AMGetVntMethod",     "AMSetVntMethod",        "AMResetOpenSet",     "GetEOpening",
      "AMAMRegReadEx",      "AMAMRegWrite",          "GetAllDestSetting",  "GetDestSetting",
      "SetDestSetting",     "GetAMAMDeseSetting",    "SetAMAMDeseSetting", "GetManagerIP",
      "GetVntTo",           "AMAMVantrelTestReport", "TestFatalReport",    "GetAllAgntSetting",
      "GetAgntSetting",     "SetAgntSetting",        "SetAgntDataForSN",   "GetAllSyslogSetting",
      "GetSyslogSetting",   "SetSyslogSetting",      "SetSyslogDataForSN", "AddSyslogItem",
      "DelSyslogItem",      "GetVntSetting",         "GetVntUserSetting",  "SetVntUserSetting",
      "GetVntMachSetting",  "SetVntMachSetting",     "GetVntMachListData", "GetVntVendSetting",
      "SetVntVendSetting",  "GetVntOptSetting",      "SetVntOptSetting",   "GetVntOptKindList",
      "CheckKeyFDFlag",     "GetOpenMsgfromFD",      "checkVntFile",       "GetManagerPort",
      "SetManagerAddress",  "GetVntOptKindDesc",     "GetVntOptList",      "AddVntOption",
      "DelVntOption"}},
    {"dscopy.dll", {"x", "b"}},
    {"logacc.dll", {"AMACETDeleteIDAndGIDAtAllLog", "AMACETWriteAlertLog"}},
    {"vnthttps.dll",
     {"GetHTTPProxyUse", "GetHTTPProxyAddr", "GetHTTPProxyPort", "SetHTTPProxyUse",
      "SetHTTPProxyAddr", "SetHTTPProxyPort", "GetHTTPSURL", "SetHTTPSURL", "GUIVntReport"}},
    {"vntutil.dll",
     {"WriteOpenSetting", "setKeyFdType", "getKeyFdType", "getVntSuppressMode",
      "setVntSuppressMode", "getVntSuppressInterval", "setVntSuppressInterval",
      "VNTGetSelectedDllName"}},
    {"chkset.dll", {"CheckScheduleFile", "CheckLogFile"}},
    {"hrtbeat.dll", {"ReportByMain"}},
    {"SRVINFO.DLL", {"VX_Clear_EMP_info_Data"}},
};

TEST_F(ServicesTest, EveryLibraryExportsEveryFunctionTheProgramBinds) {
    std::string missing;
    for (const LibraryFunctions& library : kBound) {
        HMODULE handle = LoadLibrary(lib(library.file).c_str());
        if (handle == nullptr) {
            missing += std::string(library.file) + " (not loaded: " + ZolLastLoadError() + ")\n";
            continue;
        }
        for (const char* name : library.functions) {
            if (GetProcAddress(handle, name) == nullptr)
                missing += std::string(library.file) + ": " + name + "\n";
        }
        FreeLibrary(handle);
        // FreeLibrary must really unload: a library that cannot be unloaded (GCC's unique
        // symbols do that) would be reused by the next load even after its file changed.
        if (void* still = dlopen(lib(library.file).c_str(), RTLD_NOW | RTLD_NOLOAD)) {
            dlclose(still);
            missing += std::string(library.file) + " stays loaded after FreeLibrary\n";
        }
    }
    EXPECT_EQ(missing, "");
}

}  // namespace
}  // namespace svctest
