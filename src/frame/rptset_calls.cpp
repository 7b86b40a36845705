// Wrappers of the report-settings library's base-setting, trap, remote-report-method and
// mail-login functions. The call layer traces a missing function or a failed call; each wrapper
// adds its entry and exit lines and turns the outcome into the result its callers have always had.
#include "frame/rptset_calls.h"

#include <cstdlib>
#include <cstring>

BaseData** CPAllBaseData = nullptr;
int numBaseData = 0;
char g_szAMBaseRegPath[BASE_REG_PATH_SIZE] = {};
AMBIBaseData g_AMBIBaseData = {};

namespace {

// The remote-report method wrappers refuse a missing handle before anything is bound.
bool HandleMissing(HMODULE lib, int result) {
    if (lib != nullptr)
        return false;
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<hLibRPTSET ==NULL.return %d [0:success -1:failure].", result);
    return true;
}

// The exit line of a wrapper that passes a library's result on.
int ReturnResult(const LibResult& r, int whenUnbound) {
    const int result = r.unbound() ? whenUnbound : r.value;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

BOOL ReturnBool(const LibResult& r) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %s.", r ? "TRUE" : "FALSE");
    return r ? TRUE : FALSE;
}

// A login value that may be missing: the reader judges the result itself, so that a value never
// written is not traced as a failure.
constexpr LibFunction<AMAMRegReadEx_fn> kReadLoginValue{"AMAMRegReadEx", libresult::Any};

// Reads one REG_SZ login value into a field; an unreadable value leaves the field empty.
LibResult ReadLoginText(HMODULE lib, const char* value, char (&field)[REG_TEXT_SIZE]) {
    std::memset(field, 0, sizeof field);
    const LibResult r =
        CallLibrary(lib, kReadLoginValue, HKEY_LOCAL_MACHINE, kMailLoginKey, value, REG_SZ,
                    static_cast<void*>(field), static_cast<DWORD>(sizeof field));
    if (r.value == 0)
        std::memset(field, 0, sizeof field);
    field[REG_TEXT_SIZE - 1] = '\0';
    return r;
}

LibResult ReadLoginPassword(HMODULE lib, const char* value, char (&field)[REG_TEXT_SIZE]) {
    const LibResult r = ReadLoginText(lib, value, field);
    Ras_Decode(field, static_cast<int>(std::strlen(field)));
    return r;
}

DWORD ReadLoginDword(HMODULE lib, const char* value, DWORD whenMissing) {
    DWORD data = 0;
    const LibResult r = CallLibrary(lib, kReadLoginValue, HKEY_LOCAL_MACHINE, kMailLoginKey, value,
                                    REG_DWORD, static_cast<void*>(&data), DWORD{sizeof data});
    return r.value == 0 ? whenMissing : data;
}

int LoginArgumentError() {
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.");
    return -1;
}

int LoginReadUnbound() {
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(AMAMRegReadEx) failed.");
    return -1;
}

int LoginWritten(const LibResult& r) {
    const int result = r ? 0 : -1;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

}  // namespace

void FreeAllBaseSetting() {
    if (CPAllBaseData != nullptr) {
        for (int i = 0; i < numBaseData; ++i)
            std::free(CPAllBaseData[i]);
        std::free(CPAllBaseData);
    }
    CPAllBaseData = nullptr;
    numBaseData = 0;
}

BOOL InitAllBaseSetting(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    FreeAllBaseSetting();
    BaseData** records = nullptr;
    int count = 0;
    const LibResult r = CallLibrary(lib, rptset::kGetAllBaseSetting, &records, &count);
    // Whatever a failed call left behind is not ours to trust; the menu stays empty.
    if (r) {
        CPAllBaseData = records;
        numBaseData = records != nullptr && count > 0 ? count : 0;
    }
    return ReturnBool(r);
}

int InitBaseSetting(HMODULE lib, BaseData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return ReturnResult({}, -1);
    return ReturnResult(CallLibrary(lib, rptset::kGetBaseSetting, record), -1);
}

BOOL PutBaseSetting(HMODULE lib, BaseData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return ReturnBool({});
    return ReturnBool(CallLibrary(lib, rptset::kSetBaseSetting, record));
}

BOOL InitIMBaseRegPath(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const LibResult r = CallLibrary(lib, rptset::kAMAMGetBaseRegPath, g_szAMBaseRegPath);
    // The library writes at most BASE_REG_PATH_SIZE bytes; keep the text terminated whatever.
    g_szAMBaseRegPath[sizeof g_szAMBaseRegPath - 1] = '\0';
    return ReturnBool(r);
}

BOOL CheckIMMode(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return ReturnBool(CallLibrary(lib, rptset::kCheckInternetMailMode));
}

BOOL InitIMBaseSetting(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return ReturnBool(
        CallLibrary(lib, rptset::kGetAMBIBaseSetting, &g_AMBIBaseData, g_szAMBaseRegPath));
}

int SetIMBaseSetting(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return ReturnResult(
        CallLibrary(lib, rptset::kSetAMBIBaseSetting, &g_AMBIBaseData, g_szAMBaseRegPath), 0);
}

int GetTrapSetting(HMODULE lib, int* count, char** list) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return ReturnBool(CallLibrary(lib, rptset::kGetTrapDest, count, list));
}

int SetTrapSetting(HMODULE lib, int count, char** list) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p count=%d", lib, count);
    return ReturnBool(CallLibrary(lib, rptset::kSetTrapDest, count, list));
}

int DelTrapSetting(HMODULE lib, int* count, const char* address, char** list) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p address=%s", lib, address ? address : "(null)");
    return ReturnBool(CallLibrary(lib, rptset::kDelDest, count, address, list));
}

BOOL ApplyTrapSetting(HMODULE lib, const std::vector<std::string>& added,
                      const std::vector<std::string>& removed) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p added=%zu removed=%zu", lib, added.size(),
              removed.size());
    // The library takes the C form of a list: counted arrays of texts it only reads.
    auto pointers = [](const std::vector<std::string>& list) {
        std::vector<char*> out;
        for (const std::string& address : list)
            out.push_back(const_cast<char*>(address.c_str()));
        return out;
    };
    std::vector<char*> add = pointers(added);
    std::vector<char*> remove = pointers(removed);
    return ReturnBool(CallLibrary(lib, rptset::kApplyTrapDest, static_cast<int>(add.size()),
                                  add.data(), static_cast<int>(remove.size()), remove.data()));
}

int IPAddressCheck(HMODULE lib, const char* text) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const LibResult r = CallLibrary(lib, rptset::kAMBIMyIPCheck, text != nullptr ? text : "");
    return ReturnResult(r, -1);
}

int GetSMTPParam(HMODULE lib, SMTPParam* smtp) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (lib == nullptr || smtp == nullptr)
        return LoginArgumentError();
    if (ReadLoginText(lib, "SMTPAuthUser", smtp->User).unbound())
        return LoginReadUnbound();
    ReadLoginPassword(lib, "SMTPAuthPass", smtp->Password);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

int GetPopParam(HMODULE lib, POPParam* pop, DWORD* waitTime) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (lib == nullptr || pop == nullptr || waitTime == nullptr)
        return LoginArgumentError();
    if (ReadLoginText(lib, "POPServer", pop->Server).unbound())
        return LoginReadUnbound();
    ReadLoginText(lib, "POPUser", pop->User);
    ReadLoginPassword(lib, "POPPass", pop->Password);
    pop->Port = ReadLoginDword(lib, "POPPort", kDefaultPopPort);
    *waitTime = ReadLoginDword(lib, "POPTime", kDefaultPopWait);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

int PutSMTPParam(HMODULE lib, const SMTPParam* smtp) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (lib == nullptr || smtp == nullptr)
        return LoginArgumentError();
    return LoginWritten(CallLibrary(lib, rptset::kAMAMSetMailLogin,
                                    static_cast<const POPParam*>(nullptr), DWORD{0}, smtp));
}

int PutPopParam(HMODULE lib, const POPParam* pop, DWORD waitTime) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (lib == nullptr || pop == nullptr)
        return LoginArgumentError();
    return LoginWritten(CallLibrary(lib, rptset::kAMAMSetMailLogin, pop, waitTime,
                                    static_cast<const SMTPParam*>(nullptr)));
}

int GetVntMethod(HMODULE lib, int* method) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (HandleMissing(lib, -1) || method == nullptr)
        return -1;
    return ReturnResult(CallLibrary(lib, rptset::kAMGetVntMethod, method), -1);
}

int SetVntMethod(HMODULE lib, int method) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p method=%d", lib, method);
    if (HandleMissing(lib, -1))
        return -1;
    return ReturnResult(CallLibrary(lib, rptset::kAMSetVntMethod, method), -1);
}

int SetVntReport(HMODULE lib, int method, bool enabled) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p method=%d enabled=%d", lib, method,
              enabled ? 1 : 0);
    if (HandleMissing(lib, -1))
        return -1;
    return ReturnResult(CallLibrary(lib, rptset::kAMSetVntReport, method, enabled ? 1 : 0), -1);
}

int ResetOpenSet(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (HandleMissing(lib, -1))
        return -1;
    return ReturnResult(CallLibrary(lib, rptset::kAMResetOpenSet), -1);
}

int szGetEOpening(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (HandleMissing(lib, 0))
        return 0;
    return ReturnResult(CallLibrary(lib, rptset::kGetEOpening), 0);
}

namespace {

// The exit line of an event-monitoring wrapper.
LibResult Traced(const LibResult& r) {
    if (r.unbound())
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<unbound.");
    else
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", r.value);
    return r;
}

}  // namespace

LibResult GetAllAgntRecords(HMODULE lib, AgentEventData*** records, int* count, int* numSN,
                            int* numEvntID) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return Traced(CallLibrary(lib, rptset::kGetAllAgntSetting, records, count, numSN, numEvntID));
}

LibResult GetAgntRecord(HMODULE lib, AgentEventData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return Traced(CallLibrary(lib, rptset::kGetAgntSetting, record));
}

LibResult SetAgntRecord(HMODULE lib, AgentEventData* record, int changed) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p changed=%d", lib, changed);
    return Traced(CallLibrary(lib, rptset::kSetAgntSetting, record, changed));
}

LibResult SetAgntSourceFlag(HMODULE lib, AgentEventData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return Traced(CallLibrary(lib, rptset::kSetAgntDataForSN, record));
}

LibResult GetAllSyslogRecords(HMODULE lib, SyslogData*** records, int* count, int* numSN,
                              int* numEvntID) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return Traced(CallLibrary(lib, rptset::kGetAllSyslogSetting, records, count, numSN, numEvntID));
}

LibResult GetSyslogRecord(HMODULE lib, SyslogData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return Traced(CallLibrary(lib, rptset::kGetSyslogSetting, record));
}

LibResult SetSyslogRecord(HMODULE lib, SyslogData* record, int changed) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p changed=%d", lib, changed);
    return Traced(CallLibrary(lib, rptset::kSetSyslogSetting, record, changed));
}

LibResult SetSyslogSourceFlag(HMODULE lib, SyslogData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return Traced(CallLibrary(lib, rptset::kSetSyslogDataForSN, record));
}

LibResult AddSyslogRecord(HMODULE lib, SyslogData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return Traced(CallLibrary(lib, rptset::kAddSyslogItem, record));
}

LibResult DelSyslogRecord(HMODULE lib, const char* source, const char* eventID) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p source=%s eventID=%s", lib,
              source ? source : "(null)", eventID ? eventID : "(null)");
    return Traced(CallLibrary(lib, rptset::kDelSyslogItem, source, eventID));
}
