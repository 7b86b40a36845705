/*
 * records.h: the records the program and the agent's service libraries exchange whole. Their
 * layout is an interface format shared by separately built binaries, so every field has a fixed
 * width and offset (checked below) and the header compiles as C and as C++.
 */
#ifndef ZOL_RECORDS_H
#define ZOL_RECORDS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define ZOL_RECORD_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define ZOL_RECORD_ASSERT(cond, msg) _Static_assert(cond, msg)
#endif

/* Text fields of destination records, including the terminating zero. */
#define DEST_TEXT_SIZE 4096
/* Most destination records the report-settings library returns at once. */
#define DEST_MAX_RECORDS 100

/* What a write of a destination record does. */
#define DEST_OP_DELETE 0u
#define DEST_OP_CREATE 1u
#define DEST_OP_CHANGE 2u

/* Values of a destination that has never been set. */
#define DEST_DEFAULT_PORT 31134u
#define DEST_DEFAULT_HOURMASK 0xFFFFFFu /* every hour of the day */
#define DEST_DEFAULT_RETRYINTERVAL 5u   /* minutes */
#define DEST_DEFAULT_RETRYTIME 72u      /* hours */

/* One destination ID and everything stored under it. */
typedef struct DestData {
    uint32_t Operation; /* DEST_OP_*: what a write is to do */
    char ID[DEST_TEXT_SIZE];
    char Method[DEST_TEXT_SIZE];
    char Reserved[DEST_TEXT_SIZE]; /* carried unchanged */
    char Address[DEST_TEXT_SIZE];
    uint32_t Port;
    char Phone[DEST_TEXT_SIZE];
    char User[DEST_TEXT_SIZE];
    char Password[DEST_TEXT_SIZE]; /* plain text in memory; encoded only in the store */
    uint32_t HourMask;             /* bit n set: reports may be sent in hour n (0-23) */
    uint32_t RetryInterval;        /* minutes */
    uint32_t RetryTime;            /* hours */
    uint32_t ScheduleFlag;         /* carried unchanged */
} DestData;

ZOL_RECORD_ASSERT(offsetof(DestData, Operation) == 0, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, ID) == 4, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, Method) == 4100, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, Reserved) == 8196, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, Address) == 12292, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, Port) == 16388, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, Phone) == 16392, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, User) == 20488, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, Password) == 24584, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, HourMask) == 28680, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, RetryInterval) == 28684, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, RetryTime) == 28688, "DestData layout");
ZOL_RECORD_ASSERT(offsetof(DestData, ScheduleFlag) == 28692, "DestData layout");
ZOL_RECORD_ASSERT(sizeof(DestData) == 28696, "DestData layout");

/* Fills a record with the values of a destination that has never been set: every text empty,
 * the default port, every hour, 5 minutes between retries for 72 hours. */
static inline void DestDataSetDefaults(DestData* d) {
    /* Byte-wise clear instead of memset keeps this header free of <string.h>. */
    unsigned char* p = (unsigned char*)d;
    for (size_t i = 0; i < sizeof *d; ++i)
        p[i] = 0;
    d->Port = DEST_DEFAULT_PORT;
    d->HourMask = DEST_DEFAULT_HOURMASK;
    d->RetryInterval = DEST_DEFAULT_RETRYINTERVAL;
    d->RetryTime = DEST_DEFAULT_RETRYTIME;
}

/* One node of the destination-ID selection list of the event screens, one node per listed
 * destination ID, in the order of the destination list. */
typedef struct IDListNode {
    char Name[DEST_TEXT_SIZE]; /* the destination ID */
    uint32_t ReportFlag;       /* 1: the event being edited is reported to this ID */
    uint32_t Index;            /* position in the destination list; the list-box key */
    struct IDListNode* Next;
} IDListNode;

ZOL_RECORD_ASSERT(offsetof(IDListNode, Name) == 0, "IDListNode layout");
ZOL_RECORD_ASSERT(offsetof(IDListNode, ReportFlag) == 4096, "IDListNode layout");
ZOL_RECORD_ASSERT(offsetof(IDListNode, Index) == 4100, "IDListNode layout");
ZOL_RECORD_ASSERT(offsetof(IDListNode, Next) == 4104, "IDListNode layout");
ZOL_RECORD_ASSERT(sizeof(IDListNode) == 4104 + sizeof(void*), "IDListNode layout");

/* ---------------------------------------------------------------------------------------------
 * Records of the event-monitoring screens. Destination-ID tables are arrays of pointers, so these
 * records are for the 64-bit build only.
 * ------------------------------------------------------------------------------------------- */
ZOL_RECORD_ASSERT(sizeof(void*) == 8, "records with pointer tables need a 64-bit build");

/* Most destination IDs one event or syslog item record carries. */
#define EVENT_DEST_SLOTS 50
/* The event ID that stands for every event or item of one source. */
#define EVENT_ID_ALL "All"
/* Marker in a handling-method text that the user never set one. */
#define NO_US_DEALMETHOD "NO_US_DEALMETHOD"

/* What the agent does after reporting an event or item. */
#define EVENT_ACTION_NONE 0
#define EVENT_ACTION_SHUTDOWN 1
#define EVENT_ACTION_REBOOT 2

/* One monitored agent event (source name + event ID) and its report settings. */
typedef struct AgentEventData {
    char SourceName[4096];
    char EventID[4096];                   /* EVENT_ID_ALL: every event of the source */
    char* lplpszDestID[EVENT_DEST_SLOTS]; /* destination IDs; buffers owned by the allocator */
    char TrapName[81];
    char DealMethod[512]; /* handling method shown to the operator */
    char Padding[3];
    int32_t DestNum;    /* filled entries of lplpszDestID */
    int32_t ReportFlag; /* on writing: 1 report to lplpszDestID[0], 0 do not */
    int32_t Action;     /* EVENT_ACTION_* */
    int32_t Reserved1;
    int32_t ErrKind; /* 1 hardware, 2 software, 3 application, 4 environment, 6 off */
    int32_t Level;   /* 0 to 8 */
    int32_t Reserved2;
} AgentEventData;

ZOL_RECORD_ASSERT(offsetof(AgentEventData, EventID) == 4096, "AgentEventData layout");
ZOL_RECORD_ASSERT(offsetof(AgentEventData, lplpszDestID) == 8192, "AgentEventData layout");
ZOL_RECORD_ASSERT(offsetof(AgentEventData, TrapName) == 8592, "AgentEventData layout");
ZOL_RECORD_ASSERT(offsetof(AgentEventData, DealMethod) == 8673, "AgentEventData layout");
ZOL_RECORD_ASSERT(offsetof(AgentEventData, DestNum) == 9188, "AgentEventData layout");
ZOL_RECORD_ASSERT(offsetof(AgentEventData, ReportFlag) == 9192, "AgentEventData layout");
ZOL_RECORD_ASSERT(offsetof(AgentEventData, Action) == 9196, "AgentEventData layout");
ZOL_RECORD_ASSERT(offsetof(AgentEventData, Reserved1) == 9200, "AgentEventData layout");
ZOL_RECORD_ASSERT(offsetof(AgentEventData, ErrKind) == 9204, "AgentEventData layout");
ZOL_RECORD_ASSERT(offsetof(AgentEventData, Level) == 9208, "AgentEventData layout");
ZOL_RECORD_ASSERT(offsetof(AgentEventData, Reserved2) == 9212, "AgentEventData layout");
ZOL_RECORD_ASSERT(sizeof(AgentEventData) == 9216, "AgentEventData layout");

/* One syslog monitoring item (source name + event ID): what it matches and where it reports. */
typedef struct SyslogData {
    char SourceName[4096];
    char EventID[4096];                   /* EVENT_ID_ALL: every item of the source */
    char* lplpszDestID[EVENT_DEST_SLOTS]; /* destination IDs; buffers owned by the allocator */
    int32_t DestNum;
    char Keyword1[257];
    char Keyword2[257];
    char Keyword3[257];
    char Padding;
    int32_t Count;      /* matching lines that make the item fire */
    uint32_t TimeTable; /* hour mask of dscopy.dll; 0 = none */
    int32_t ReportFlag;
    int32_t Action;
    int32_t Reserved1;
    int32_t ErrKind;
    int32_t Level;
    char TrapName[81];
    char DealMethod[512];
    char Reserved2[11];
} SyslogData;

ZOL_RECORD_ASSERT(offsetof(SyslogData, lplpszDestID) == 8192, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, DestNum) == 8592, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, Keyword1) == 8596, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, Keyword2) == 8853, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, Keyword3) == 9110, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, Count) == 9368, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, TimeTable) == 9372, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, ReportFlag) == 9376, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, Action) == 9380, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, Reserved1) == 9384, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, ErrKind) == 9388, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, Level) == 9392, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, TrapName) == 9396, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, DealMethod) == 9477, "SyslogData layout");
ZOL_RECORD_ASSERT(offsetof(SyslogData, Reserved2) == 9989, "SyslogData layout");
ZOL_RECORD_ASSERT(sizeof(SyslogData) == 10000, "SyslogData layout");

/* ---------------------------------------------------------------------------------------------
 * Base report settings.
 * ------------------------------------------------------------------------------------------- */

/* Method names of the base-setting records. */
#define BASE_METHOD_SNMP "MANAGER (SNMP)"
#define BASE_METHOD_INBAND "MANAGER (TCP_IP IN-BAND)"
#define BASE_METHOD_OUTBAND "MANAGER (TCP_IP OUT-OF-BAND)"
#define BASE_METHOD_SHUTDOWN "SHUTDOWN DELAY"

/* One report method (or the shutdown delay) and whether it is in use. */
typedef struct BaseData {
    char MethodName[4096]; /* the key of the record: BASE_METHOD_* or a remote report method */
    int32_t Enable;        /* 1 on, 0 off */
    int32_t Value;         /* the shutdown delay in seconds (0 to 1800); 0 for the others */
    char Option[4096];     /* method-specific text (SNMP: the trap community); carried */
    uint32_t Reserved[4];
} BaseData;

ZOL_RECORD_ASSERT(offsetof(BaseData, Enable) == 4096, "BaseData layout");
ZOL_RECORD_ASSERT(offsetof(BaseData, Value) == 4100, "BaseData layout");
ZOL_RECORD_ASSERT(offsetof(BaseData, Option) == 4104, "BaseData layout");
ZOL_RECORD_ASSERT(offsetof(BaseData, Reserved) == 8200, "BaseData layout");
ZOL_RECORD_ASSERT(sizeof(BaseData) == 8216, "BaseData layout");

/* SNMP trap destination list: at most TRAP_DEST_MAX addresses of TRAP_DEST_SIZE bytes. */
#define TRAP_DEST_MAX 256
#define TRAP_DEST_SIZE 256

/* Registry texts read and written by the program through AMAMRegReadEx / AMAMRegWrite. */
#define REG_TEXT_SIZE 257
/* Buffer for the registry path AMAMGetBaseRegPath returns. */
#define BASE_REG_PATH_SIZE 512

/* Base settings of the remote report service's internet-mail delivery, read and written as a
 * whole with GetAMBIBaseSetting / SetAMBIBaseSetting at the path AMAMGetBaseRegPath gives. */
typedef struct AMBIBaseData {
    char SMTPServer[REG_TEXT_SIZE]; /* host name or dotted IPv4 address */
    char MailFrom[REG_TEXT_SIZE];   /* sender address */
    char Padding[2];
    uint32_t SMTPPort;      /* 1 to 65535; 25 by default */
    uint32_t DateFormat;    /* 0 RFC 822 local time, 1 RFC 822 universal time */
    uint32_t PopBeforeSMTP; /* 1: log in to the POP server before sending */
    uint32_t SMTPAuth;      /* 1: authenticate to the SMTP server */
    uint32_t Reserved[4];
} AMBIBaseData;

ZOL_RECORD_ASSERT(offsetof(AMBIBaseData, MailFrom) == 257, "AMBIBaseData layout");
ZOL_RECORD_ASSERT(offsetof(AMBIBaseData, SMTPPort) == 516, "AMBIBaseData layout");
ZOL_RECORD_ASSERT(offsetof(AMBIBaseData, DateFormat) == 520, "AMBIBaseData layout");
ZOL_RECORD_ASSERT(offsetof(AMBIBaseData, PopBeforeSMTP) == 524, "AMBIBaseData layout");
ZOL_RECORD_ASSERT(offsetof(AMBIBaseData, SMTPAuth) == 528, "AMBIBaseData layout");
ZOL_RECORD_ASSERT(sizeof(AMBIBaseData) == 548, "AMBIBaseData layout");

/* SMTP authentication credentials (program side; stored values SMTPAuthUser / SMTPAuthPass). */
typedef struct SMTPParam {
    char User[REG_TEXT_SIZE];
    char Password[REG_TEXT_SIZE]; /* plain in memory, encoded in the store */
} SMTPParam;

ZOL_RECORD_ASSERT(offsetof(SMTPParam, Password) == 257, "SMTPParam layout");
ZOL_RECORD_ASSERT(sizeof(SMTPParam) == 514, "SMTPParam layout");

/* POP before SMTP credentials (stored values POPServer, POPUser, POPPass, POPPort). */
typedef struct POPParam {
    char Server[REG_TEXT_SIZE];
    char User[REG_TEXT_SIZE];
    char Password[REG_TEXT_SIZE];
    char Padding;
    uint32_t Port;
} POPParam;

ZOL_RECORD_ASSERT(offsetof(POPParam, User) == 257, "POPParam layout");
ZOL_RECORD_ASSERT(offsetof(POPParam, Password) == 514, "POPParam layout");
ZOL_RECORD_ASSERT(offsetof(POPParam, Port) == 772, "POPParam layout");
ZOL_RECORD_ASSERT(sizeof(POPParam) == 776, "POPParam layout");

/* ---------------------------------------------------------------------------------------------
 * Remote report service.
 * ------------------------------------------------------------------------------------------- */

/* Text fields of the customer, machine, vendor and option records, terminator included. */
#define VNT_TEXT_SIZE 128
/* Room of the lists the library fills: operating systems, distributors, option kinds. */
#define VNT_OS_LIST_MAX 128
#define VNT_VENDOR_LIST_MAX 512
#define VNT_OPTION_LIST_MAX 64
/* Buffer of the remote report destination texts (GetVntTo, GetManagerIP). */
#define VNT_MAILTO_SIZE 513

/* Delivery methods of the remote report service. */
#define VANTREL_INTERNETMAIL 0
#define VANTREL_DIALUP 1
#define VANTREL_TRANSTOMANAGER 2
#define VANTREL_HTTPS 3

/* Key-floppy types. */
#define KEYFD_TYPE_MAIL 1
#define KEYFD_TYPE_HTTPS 2

/* Results of GetOpenMsgfromFD other than success. */
#define KEYFD_READ_FAILED 0
#define KEYFD_BAD_FILE 100
#define KEYFD_BAD_CONTENT 200
#define KEYFD_BAD_PATH 300

/* The service's set-up data from the key floppy (SOFTWARE\Tavik\VNTService\SETUP). */
typedef struct VntSetupData {
    char Version[VNT_TEXT_SIZE];
    char MailAddress[REG_TEXT_SIZE]; /* MAILADRS: the service centre */
    char PhoneNo[VNT_TEXT_SIZE];     /* PHONENO: dial-up */
    char ErrorReply[REG_TEXT_SIZE];  /* ERRORREPLY */
    char URL1[REG_TEXT_SIZE];
    char URL2[REG_TEXT_SIZE];
    char Padding[3];
    uint32_t Setting;         /* SETTING: set-up state */
    uint32_t SavedAddressSet; /* 1: an address set has been saved */
    uint32_t KeyFDType;       /* KEYFD_TYPE_*, 0 when no floppy was read */
    uint32_t KeyFDRead;       /* InstVantrelKeyFD */
} VntSetupData;

ZOL_RECORD_ASSERT(offsetof(VntSetupData, MailAddress) == 128, "VntSetupData layout");
ZOL_RECORD_ASSERT(offsetof(VntSetupData, PhoneNo) == 385, "VntSetupData layout");
ZOL_RECORD_ASSERT(offsetof(VntSetupData, ErrorReply) == 513, "VntSetupData layout");
ZOL_RECORD_ASSERT(offsetof(VntSetupData, URL1) == 770, "VntSetupData layout");
ZOL_RECORD_ASSERT(offsetof(VntSetupData, URL2) == 1027, "VntSetupData layout");
ZOL_RECORD_ASSERT(offsetof(VntSetupData, Setting) == 1288, "VntSetupData layout");
ZOL_RECORD_ASSERT(offsetof(VntSetupData, KeyFDRead) == 1300, "VntSetupData layout");
ZOL_RECORD_ASSERT(sizeof(VntSetupData) == 1304, "VntSetupData layout");

/* Customer data sent with the service's reports (SETTING values in brackets). */
typedef struct VntUserData {
    int32_t Kind;                      /* KAISHAKBN: 0 personal, 1 company */
    char CustomerNameA[VNT_TEXT_SIZE]; /* TOKUINMA */
    char CustomerNameJ[VNT_TEXT_SIZE]; /* TOKUINMN */
    char Department[VNT_TEXT_SIZE];    /* BUNMN */
    char PostCode[VNT_TEXT_SIZE];      /* ZIPNO */
    char AddressA[VNT_TEXT_SIZE];      /* ADRSNMA */
    char AddressJ[VNT_TEXT_SIZE];      /* ADRSNMN */
    char AddressDetail[VNT_TEXT_SIZE]; /* SHOZAINMN */
    char Telephone[VNT_TEXT_SIZE];     /* BUTEL */
    char Mail[VNT_TEXT_SIZE];          /* MAIL */
    char PersonA[VNT_TEXT_SIZE];       /* BUTANNMA */
    char PersonJ[VNT_TEXT_SIZE];       /* BUTANNMN */
    char UserCode[VNT_TEXT_SIZE];      /* USERCODE */
} VntUserData;

ZOL_RECORD_ASSERT(offsetof(VntUserData, CustomerNameA) == 4, "VntUserData layout");
ZOL_RECORD_ASSERT(offsetof(VntUserData, PostCode) == 388, "VntUserData layout");
ZOL_RECORD_ASSERT(offsetof(VntUserData, Mail) == 1028, "VntUserData layout");
ZOL_RECORD_ASSERT(offsetof(VntUserData, UserCode) == 1412, "VntUserData layout");
ZOL_RECORD_ASSERT(sizeof(VntUserData) == 1540, "VntUserData layout");

/* The monitored machine's description, in the order of the machine screen's record. */
typedef struct VntMachData {
    char HostName[VNT_TEXT_SIZE];
    char Manufacturer[VNT_TEXT_SIZE];
    char LicenseNo[VNT_TEXT_SIZE];
    char OSVersion[VNT_TEXT_SIZE];
    char OSName[VNT_TEXT_SIZE];
    char ProductName[VNT_TEXT_SIZE];
} VntMachData;

ZOL_RECORD_ASSERT(offsetof(VntMachData, OSName) == 512, "VntMachData layout");
ZOL_RECORD_ASSERT(sizeof(VntMachData) == 768, "VntMachData layout");

/* Who sold and who maintains the machine. */
typedef struct VntVendData {
    char Distributor[VNT_TEXT_SIZE];  /* SYSSHOPNMN */
    char SalesDept[VNT_TEXT_SIZE];    /* SYSEIGYOBUNMN */
    char SalesPerson[VNT_TEXT_SIZE];  /* SYSEIGYONMN */
    char SalesTel[VNT_TEXT_SIZE];     /* SYSEIGYOTEL */
    char EngineerDept[VNT_TEXT_SIZE]; /* SYSSEBU */
    char Engineer[VNT_TEXT_SIZE];     /* SYSSENMN */
    char EngineerTel[VNT_TEXT_SIZE];  /* SYSSETEL */
} VntVendData;

ZOL_RECORD_ASSERT(offsetof(VntVendData, EngineerTel) == 768, "VntVendData layout");
ZOL_RECORD_ASSERT(sizeof(VntVendData) == 896, "VntVendData layout");

/* Option data: the kind of service contract the reports are sent under. */
typedef struct VntOptData {
    uint32_t OptionCode;            /* OPTCDN: index into the option kind list */
    char OptionName[VNT_TEXT_SIZE]; /* that kind's name, filled on reading */
} VntOptData;

ZOL_RECORD_ASSERT(offsetof(VntOptData, OptionName) == 4, "VntOptData layout");
ZOL_RECORD_ASSERT(sizeof(VntOptData) == 132, "VntOptData layout");

/* Results of AddVntOption and DelVntOption besides 0 (the store failed). */
#define VNT_OPT_DONE 1
#define VNT_OPT_HELD (-2)
#define VNT_OPT_REFUSED (-3)

/* The remote report service's internet-mail destination: where its reports are mailed. */
typedef struct VxMLDestData {
    char MailTo[VNT_MAILTO_SIZE];  /* ETo: comma-separated addresses */
    char Subject[VNT_MAILTO_SIZE]; /* subject line of the report mails */
    char Padding[2];
    uint32_t Opening; /* EOpening: 1 once the opening report was sent */
    uint32_t Reserved[4];
} VxMLDestData;

ZOL_RECORD_ASSERT(offsetof(VxMLDestData, Subject) == 513, "VxMLDestData layout");
ZOL_RECORD_ASSERT(offsetof(VxMLDestData, Opening) == 1028, "VxMLDestData layout");
ZOL_RECORD_ASSERT(sizeof(VxMLDestData) == 1048, "VxMLDestData layout");

/* The remote report service's dial-up delivery (its modem line and the service centre's
 * numbers), read and written whole by the report-settings library. */
#define VNT_DIAL_PHONE_MAX 30 /* bytes of a telephone number */
#define VNT_DIAL_USER_MAX 32  /* bytes of the user ID */
#define VNT_DIAL_MODE_TONE 0u
#define VNT_DIAL_MODE_PULSE 1u
#define VNT_DIAL_REDIAL_MIN 1u /* minutes */
#define VNT_DIAL_REDIAL_MAX 60u
typedef struct VntDialData {
    char PhoneNo1[VNT_TEXT_SIZE]; /* primary number: digits, '-', '(' and ')' */
    char PhoneNo2[VNT_TEXT_SIZE]; /* secondary number, empty when there is none */
    char UserID[VNT_TEXT_SIZE];   /* user ID given to the service centre */
    char Device[VNT_TEXT_SIZE];   /* the modem's serial line device, a path under /dev/ */
    uint32_t DialMode;            /* VNT_DIAL_MODE_* */
    uint32_t RedialInterval;      /* minutes before dialling again */
} VntDialData;

ZOL_RECORD_ASSERT(offsetof(VntDialData, Device) == 384, "VntDialData layout");
ZOL_RECORD_ASSERT(offsetof(VntDialData, DialMode) == 512, "VntDialData layout");
ZOL_RECORD_ASSERT(sizeof(VntDialData) == 520, "VntDialData layout");

/* The remote report service's HTTPS delivery: its two URLs, whether the secondary one is tried
 * when the primary fails, and the proxy, read and written whole by "vnthttps.dll". */
typedef struct VntHttpsData {
    uint32_t ContinueReport;       /* 1: the secondary URL is tried when the primary fails */
    uint32_t ProxyUse;             /* 1: through the proxy */
    uint32_t ProxyPort;            /* 1 to 65535 */
    char Url1[REG_TEXT_SIZE];      /* HTTPD1URL */
    char Url2[REG_TEXT_SIZE];      /* HTTPD2URL */
    char ProxyAddr[REG_TEXT_SIZE]; /* host name or IPv4 address */
} VntHttpsData;

ZOL_RECORD_ASSERT(offsetof(VntHttpsData, Url1) == 12, "VntHttpsData layout");
ZOL_RECORD_ASSERT(offsetof(VntHttpsData, ProxyAddr) == 526, "VntHttpsData layout");
ZOL_RECORD_ASSERT(sizeof(VntHttpsData) == 784, "VntHttpsData layout");

#endif /* ZOL_RECORDS_H */
