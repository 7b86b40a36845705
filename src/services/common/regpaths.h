/*
 * regpaths.h: the store's key paths below HKEY_LOCAL_MACHINE, spelled once for the service
 * libraries, the program, the platform layer and the tests (docs/registry.md says what each key
 * holds). Macros rather than constants, so that paths compose at compile time ("HKLM\\"
 * ZOL_KEY_VNT_SETUP for zolreg, ZOL_KEY_METHOD "\\" BASE_METHOD_SNMP for one method's key) and
 * the header compiles as C and as C++.
 */
#ifndef ZOL_REGPATHS_H
#define ZOL_REGPATHS_H

/* Everything of the agent's vendor: the alert manager and the remote report service. */
#define ZOL_KEY_TAVIK "SOFTWARE\\Tavik"

/* ---- The alert manager ---- */
#define ZOL_KEY_ALERTMAN ZOL_KEY_TAVIK "\\ZolAlertMan"
/* Base settings: one subkey per report method under Method, the delivery settings under Report. */
#define ZOL_KEY_BASESETTING ZOL_KEY_ALERTMAN "\\BaseSetting"
#define ZOL_KEY_METHOD ZOL_KEY_BASESETTING "\\Method"
#define ZOL_KEY_REPORT ZOL_KEY_BASESETTING "\\Report"
/* The remote report service's mail-server logins and its HTTPS settings. */
#define ZOL_KEY_MAIL_SETTING ZOL_KEY_REPORT "\\VantrelReport(Internet Mail)\\Setting"
#define ZOL_KEY_HTTPS_SETTING ZOL_KEY_REPORT "\\VantrelReport(HTTPS)\\Setting"
/* The remote report service's dial-up delivery. */
#define ZOL_KEY_DIAL_SETTING ZOL_KEY_REPORT "\\VantrelReport(Dial-up)\\Setting"
/* Destinations: one subkey per destination ID. */
#define ZOL_KEY_ID_LIST ZOL_KEY_ALERTMAN "\\Destination\\ID_LIST"
/* The remote report service's own destination record. */
#define ZOL_KEY_VANTREL_ADDRESS ZOL_KEY_ID_LIST "\\VantrelReport\\Address"
/* Event monitoring: agent events by source, syslog monitoring items. */
#define ZOL_KEY_AGENTEVENT ZOL_KEY_ALERTMAN "\\AgentEvent"
#define ZOL_KEY_SYSLOG ZOL_KEY_ALERTMAN "\\SyslogMonitor"

/* ---- The remote report service ---- */
#define ZOL_KEY_VNTSERVICE ZOL_KEY_TAVIK "\\VNTService"
#define ZOL_KEY_VNT_SETUP ZOL_KEY_VNTSERVICE "\\SETUP"
#define ZOL_KEY_VNT_SETTING ZOL_KEY_VNTSERVICE "\\SETTING"
#define ZOL_KEY_VNT_HEARTBEAT ZOL_KEY_VNTSERVICE "\\HeartBeat"
#define ZOL_KEY_VNT_STOPREPORT ZOL_KEY_VNTSERVICE "\\STOPREPORT"
/* The choice lists of the machine, vendor and option screens. */
#define ZOL_KEY_VNT_LIST_OS ZOL_KEY_VNTSERVICE "\\LIST\\OS"
#define ZOL_KEY_VNT_LIST_VENDOR ZOL_KEY_VNTSERVICE "\\LIST\\VENDOR"
#define ZOL_KEY_VNT_LIST_OPTION ZOL_KEY_VNTSERVICE "\\LIST\\OPTION"
/* What each option kind is, numbered as LIST\OPTION. */
#define ZOL_KEY_VNT_LIST_OPTION_DESC ZOL_KEY_VNTSERVICE "\\LIST\\OPTIONDESC"

#endif /* ZOL_REGPATHS_H */
