// The remote report service's set-up values and what each holds before any key floppy is read:
// the program writes them back before it reads a new floppy, and SRVINFO.DLL when the service
// has been ended, so that both reset exactly the same values.
#pragma once

#include <zolwin.h>

#include "regpaths.h"

// One value of the service's set-up: its key under HKEY_LOCAL_MACHINE, its type (REG_SZ or
// REG_DWORD), its name and its initial value (for REG_DWORD the decimal text of the number).
struct VntInitRow {
    const char* key;
    DWORD type;
    const char* name;
    const char* value;
};

// The HTTPS settings' key as the service has always spelled it here (the store ignores case).
inline constexpr const char* kVntHttpsKeyCaps =
    "SOFTWARE\\Tavik\\ZOLALERTMAN\\BASESETTING\\REPORT\\VANTRELREPORT(HTTPS)\\SETTING";

// The 49 values in the order they are written, then an end row with an empty key.
inline constexpr int kVntInitRowCount = 49;

inline constexpr VntInitRow kVntInitRows[kVntInitRowCount + 1] = {
    {ZOL_KEY_VNTSERVICE, REG_DWORD, "InstVantrelKeyFD", "0"},
    {kVntHttpsKeyCaps, REG_SZ, "HTTPD1URL", ""},
    {kVntHttpsKeyCaps, REG_SZ, "HTTPD2URL", ""},
    {ZOL_KEY_VANTREL_ADDRESS, REG_DWORD, "EOpening", "0"},
    {ZOL_KEY_VANTREL_ADDRESS, REG_SZ, "ETo", ""},
    {ZOL_KEY_VANTREL_ADDRESS, REG_DWORD, "ManVntStatus", "0"},
    {ZOL_KEY_VNTSERVICE, REG_DWORD, "InstVantrelBTO", "0"},
    {ZOL_KEY_VNTSERVICE, REG_DWORD, "MethodType", "0"},
    {ZOL_KEY_VNTSERVICE, REG_DWORD, "KEYFDTYPE", "0"},
    {ZOL_KEY_VNT_SETUP, REG_SZ, "VERSION", "3.51J"},
    {ZOL_KEY_VNT_SETUP, REG_DWORD, "SETTING", "0"},
    {ZOL_KEY_VNT_SETUP, REG_SZ, "MAILADRS", ""},
    {ZOL_KEY_VNT_SETUP, REG_SZ, "PHONENO", ""},
    {ZOL_KEY_VNT_SETUP, REG_SZ, "ERRORREPLY", ""},
    {ZOL_KEY_VNT_SETUP, REG_DWORD, "SavedAddressSet", "0"},
    {ZOL_KEY_VNT_SETUP, REG_SZ, "URL1", ""},
    {ZOL_KEY_VNT_SETUP, REG_SZ, "URL2", ""},
    {ZOL_KEY_VNT_SETTING, REG_DWORD, "VntLang", "0"},
    {ZOL_KEY_VNT_SETTING, REG_DWORD, "KAISHAKBN", "1"},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "TOKUINMA", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "TOKUINMN", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "BUNMN", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "ZIPNO", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "ADRSNMA", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "ADRSNMN", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SHOZAINMN", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "BUTEL", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "MAIL", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "USERCODE", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "BUTANNMA", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "BUTANNMN", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SYSNMN", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SOCHICD", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SYSGOKI", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "GUARANTEE", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "OSNMA", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "OSREV", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "COMMENT", ""},
    {ZOL_KEY_VNT_SETTING, REG_DWORD, "OPTCDN", "0"},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SYSSHOPNMN", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SYSEIGYOBUNMN", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SYSEIGYONMN", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SYSEIGYOTEL", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SYSSEBU", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SYSSENMN", ""},
    {ZOL_KEY_VNT_SETTING, REG_SZ, "SYSSETEL", ""},
    {ZOL_KEY_VNT_HEARTBEAT, REG_SZ, "HBRDATE", ""},
    {ZOL_KEY_VNT_HEARTBEAT, REG_DWORD, "HBINTERVAL", "1"},
    {ZOL_KEY_VNT_HEARTBEAT, REG_DWORD, "HBSLEEPTIME", "43200"},
    {"", 0, "", ""},
};
