/*
 * zolwin.h: the Win32-style platform layer (libzolwin.so) shared by ZOLamsadm, zolreg and the
 * agent's service libraries. Names, argument orders and error codes follow Win32 so that callers
 * read as they would on the agent's original platform; everything here is implemented for Linux
 * over SQLite (registry), dlopen (loader), POSIX shared memory (named objects) and iconv.
 */
#ifndef ZOLWIN_H
#define ZOLWIN_H

#include <netinet/in.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ZOLWIN_API __attribute__((visibility("default")))

/* ---- Basic types (Win32 widths: DWORD and LONG are 32-bit even on LP64) ---- */
typedef int BOOL;
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint16_t LANGID;
typedef DWORD REGSAM;
typedef BYTE* LPBYTE;
typedef DWORD* LPDWORD;
typedef char* LPSTR;
typedef const char* LPCSTR;
typedef void* HANDLE;
typedef void* HMODULE;
typedef HMODULE HINSTANCE;
/* The generic function pointer: callers cast it to the bound function's real type. */
typedef void (*FARPROC)(void);
typedef struct ZolRegKey* HKEY;
typedef HKEY* PHKEY;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

/* ---- Error codes (Win32 values) ---- */
#define ERROR_SUCCESS 0L
#define ERROR_FILE_NOT_FOUND 2L
#define ERROR_ACCESS_DENIED 5L
#define ERROR_INVALID_HANDLE 6L
#define ERROR_NOT_ENOUGH_MEMORY 8L
#define ERROR_INVALID_PARAMETER 87L
#define ERROR_MOD_NOT_FOUND 126L  /* a library file or one it needs is missing */
#define ERROR_PROC_NOT_FOUND 127L /* the library has no function of that name */
#define ERROR_BAD_PATHNAME 161L
#define ERROR_ALREADY_EXISTS 183L
#define ERROR_BAD_EXE_FORMAT 193L /* the file is not a loadable library */
#define ERROR_NOT_OWNER 288L      /* ReleaseMutex by a thread that does not own the mutex */
#define ERROR_MORE_DATA 234L
#define ERROR_NO_MORE_ITEMS 259L
#define ERROR_NOACCESS 998L            /* a null data pointer with a non-zero size */
#define ERROR_BADKEY 1010L             /* RegCreateKeyEx without a place for the new handle */
#define ERROR_REGISTRY_CORRUPT 1015L   /* the store file is damaged or not a store */
#define ERROR_REGISTRY_IO_FAILED 1016L /* the store is missing or cannot be read or written */
#define ERROR_KEY_DELETED 1018L        /* the key behind an open handle was deleted */
#define ERROR_INVALID_STATE 5023L      /* transaction calls out of order */

/* ---- Registry ---- */
/* The registry functions also accept the value sign-extended to 64 bits
 * ((HKEY)(uintptr_t)0xFFFFFFFF80000002), as headers written for Windows define it. */
#define HKEY_LOCAL_MACHINE ((HKEY)(uintptr_t)0x80000002u)

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_MULTI_SZ 7

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_NOTIFY 0x0010
#define KEY_CREATE_LINK 0x0020
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F

#define REG_OPTION_NON_VOLATILE 0
#define REG_OPTION_VOLATILE 1 /* refused: see docs/registry.md */
#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2

#define ZOL_MAX_KEY_NAME 255     /* characters in one key name component */
#define ZOL_MAX_VALUE_NAME 16383 /* characters in a value name */

ZOLWIN_API LONG RegOpenKeyEx(HKEY hKey, LPCSTR lpSubKey, DWORD ulOptions, REGSAM samDesired,
                             PHKEY phkResult);
ZOLWIN_API LONG RegCreateKey(HKEY hKey, LPCSTR lpSubKey, PHKEY phkResult);
ZOLWIN_API LONG RegCreateKeyEx(HKEY hKey, LPCSTR lpSubKey, DWORD Reserved, LPSTR lpClass,
                               DWORD dwOptions, REGSAM samDesired, const void* lpSecurityAttributes,
                               PHKEY phkResult, LPDWORD lpdwDisposition);
ZOLWIN_API LONG RegQueryValueEx(HKEY hKey, LPCSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                                LPBYTE lpData, LPDWORD lpcbData);
ZOLWIN_API LONG RegSetValueEx(HKEY hKey, LPCSTR lpValueName, DWORD Reserved, DWORD dwType,
                              const BYTE* lpData, DWORD cbData);
ZOLWIN_API LONG RegDeleteValue(HKEY hKey, LPCSTR lpValueName);
ZOLWIN_API LONG RegDeleteKey(HKEY hKey, LPCSTR lpSubKey);
ZOLWIN_API LONG RegEnumKeyEx(HKEY hKey, DWORD dwIndex, LPSTR lpName, LPDWORD lpcchName,
                             LPDWORD lpReserved, LPSTR lpClass, LPDWORD lpcchClass,
                             void* lpftLastWriteTime);
ZOLWIN_API LONG RegEnumValue(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, LPDWORD lpcchValueName,
                             LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData);
ZOLWIN_API LONG RegCloseKey(HKEY hKey);

/*
 * Transactions and store management (this layer's own; no Win32 counterpart).
 * Writes between ZolRegBeginTransaction and ZolRegCommitTransaction land together or not at
 * all; ZolRegRollbackTransaction discards them. Calls nest: only the outermost commit writes.
 * The store is $ZolDir/registry/hklm.db; the process keeps one connection to it and reopens it
 * when ZolDir points elsewhere.
 */
ZOLWIN_API LONG ZolRegBeginTransaction(void);
ZOLWIN_API LONG ZolRegCommitTransaction(void);
ZOLWIN_API LONG ZolRegRollbackTransaction(void);
/* Full path of the store file for the current ZolDir; ERROR_MORE_DATA when size is too small. */
ZOLWIN_API LONG ZolRegStorePath(LPSTR buf, DWORD size);
/* Creates a new empty store (folder 0700, file 0600); ERROR_ALREADY_EXISTS if one is there. */
ZOLWIN_API LONG ZolRegCreateStore(void);
/* Removes the store file and its journal files (zolreg init /f). */
ZOLWIN_API LONG ZolRegRemoveStore(void);
/* quick_check (full = 0) or integrity_check (full != 0): ERROR_SUCCESS, ERROR_REGISTRY_CORRUPT
 * or ERROR_REGISTRY_IO_FAILED. */
ZOLWIN_API LONG ZolRegCheckStore(int full);
/* Closes the process's connection; the next registry call opens it again. */
ZOLWIN_API void ZolRegCloseStore(void);
/* A hint from a caller about to read the key and its whole subtree: reads it in one pass into
 * the process's read cache, so that the reads that follow cost no store query. Later reads
 * return exactly what they would have returned without it. ERROR_SUCCESS also when nothing was
 * kept (the cache cannot be trusted just now, or the subtree is too large). */
ZOLWIN_API LONG ZolRegReadAhead(HKEY hKey);

/* ---- Loader ---- */
ZOLWIN_API HMODULE LoadLibrary(LPCSTR lpLibFileName);
ZOLWIN_API FARPROC GetProcAddress(HMODULE hModule, LPCSTR lpProcName);
ZOLWIN_API BOOL FreeLibrary(HMODULE hLibModule);
/* The dynamic loader's text for the calling thread's last failed LoadLibrary or GetProcAddress
 * ("" when none), for trace lines. */
ZOLWIN_API LPCSTR ZolLastLoadError(void);

/* ---- Last error of the calling thread (set by the loader and the named objects) ---- */
ZOLWIN_API DWORD GetLastError(void);
ZOLWIN_API void SetLastError(DWORD dwErrCode);

/* ---- Environment ---- */
/* Expands %NAME% from the environment; %ZolDir% falls back to the built-in install prefix.
 * Returns the characters needed including the terminator, 0 on failure. */
ZOLWIN_API DWORD ExpandEnvironmentStrings(LPCSTR lpSrc, LPSTR lpDst, DWORD nSize);
/* The product root without a trailing slash; TRUE on success. */
ZOLWIN_API BOOL GetZolRootPath(LPSTR lpBuffer, DWORD nSize);
/* The install prefix recorded when this layer was built. */
ZOLWIN_API LPCSTR ZolInstallPrefix(void);

/* ---- Language ---- */
#define LANGID_JAPANESE 1041
#define LANGID_ENGLISH_US 1033
ZOLWIN_API LANGID GetSystemDefaultLangID(void);

/* ---- Named objects shared between processes ---- */
#define SYNCHRONIZE 0x00100000L
#define MUTEX_ALL_ACCESS 0x1F0001L
#define EVENT_ALL_ACCESS 0x1F0003L
#define INFINITE 0xFFFFFFFFu
/* WaitForSingleObject results. This layer reports a satisfied wait (an acquired mutex, also one
 * whose holder died, or a signalled event) as 2. */
#define ZOL_WAIT_ACQUIRED 2u
#define WAIT_TIMEOUT 258u
#define WAIT_FAILED 0xFFFFFFFFu

ZOLWIN_API HANDLE CreateMutex(const void* lpMutexAttributes, BOOL bInitialOwner, LPCSTR lpName);
ZOLWIN_API HANDLE OpenMutex(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCSTR lpName);
ZOLWIN_API BOOL ReleaseMutex(HANDLE hMutex);
ZOLWIN_API HANDLE CreateEvent(const void* lpEventAttributes, BOOL bManualReset, BOOL bInitialState,
                              LPCSTR lpName);
ZOLWIN_API HANDLE OpenEvent(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCSTR lpName);
ZOLWIN_API BOOL SetEvent(HANDLE hEvent);
ZOLWIN_API BOOL ResetEvent(HANDLE hEvent);
ZOLWIN_API DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds);
ZOLWIN_API BOOL CloseHandle(HANDLE hObject);

/* ---- Trace log: one line per call in $ZolDir/log/<program>.trace ---- */
#define TRACE_LEVEL_TRACE 0
#define TRACE_LEVEL_ERROR 1
#define TRACE_LEVEL_FAILURE 2
#define TRACE_LEVEL_INFO 3
/* The first, third and fifth arguments are kept for the agent's callers and have no effect;
 * lines whose level is above maxLevel are not written. Returns 0. */
ZOLWIN_API int TraceLogInit(int reserved1, LPCSTR program, int reserved2, int maxLevel,
                            int reserved3);
ZOLWIN_API void TraceLog(int level, LPCSTR file, LPCSTR function, int line, LPCSTR format, ...)
    __attribute__((format(printf, 5, 6)));

/* Trace from the current source position: the unit's path below src/ (the build maps the source
 * folder away from __FILE__), the enclosing named function (from C++ also inside a lambda, see
 * zolwin_trace_name.h) and the line. */
#ifdef __cplusplus
#define ZOL_TRACE(level, ...)                                                          \
    do {                                                                               \
        static constexpr auto zolTraceFunction_ =                                      \
            ::zolwin::tracename::functionOf(__PRETTY_FUNCTION__, __func__);            \
        TraceLog((level), __FILE__, zolTraceFunction_.c_str(), __LINE__, __VA_ARGS__); \
    } while (0)
#else
#define ZOL_TRACE(level, ...) TraceLog((level), __FILE__, __func__, __LINE__, __VA_ARGS__)
#endif

/* ---- Utilities ---- */
/* TRUE when the settings store opens, passes its quick check and holds the alert manager's key. */
ZOLWIN_API BOOL IsZOLntserverReady(void);
/* EUC-JP text to UTF-8 (the system log's encoding); 0 on success, -1 on failure. */
ZOLWIN_API int CodeConvertFromEUC(LPCSTR lpSource, LPSTR lpTarget, int nTargetSize);
/* IPv4 address to dotted text in buf; returns buf, or NULL when it does not fit. */
ZOLWIN_API char* zol_inet_ntoa_r(struct in_addr in, char* buf, int size);
/* Reversible in-place encoding of stored passwords: keeps the length and never yields a zero
 * byte from a non-zero one. */
ZOLWIN_API void Ras_Encode(char* buffer, int length);
ZOLWIN_API void Ras_Decode(char* buffer, int length);
/* newt and S-Lang are linked directly: these succeed at once (0), -1 would mean failure. */
ZOLWIN_API int initnewtlib(void);
ZOLWIN_API void freenewtlib(void);
ZOLWIN_API int initslanglib(void);
ZOLWIN_API void freeslanglib(void);

#ifdef __cplusplus
}
#include "zolwin_trace_name.h"
#endif

#endif /* ZOLWIN_H */
