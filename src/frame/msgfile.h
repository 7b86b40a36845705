// Message resource file: every label, title and message of the program is looked up by ID in
// data/E_report.rc or data/J_report.rc, held whole in memory for the program's lifetime.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

// Spare bytes after the file's text in ZOL_RcFileBuf, kept zero so every scan ends.
inline constexpr std::size_t kRcFileSpare = 1024;
// Size of ReadString, deststr and every value the scanner copies (including the terminator).
inline constexpr std::size_t kMessageTextSize = 1024;

// The whole message file (owned by main through LoadRcFile/FreeRcFile); null when not loaded.
extern char* ZOL_RcFileBuf;
// The shared destination of CPGetText: a fetched text lasts only until the next fetch.
extern char ReadString[1024];
// The value found by the last CPFindDestStr; empty when the ID was absent.
extern char deststr[1024];

// Opens "%ZolDir%" + relativePath (relativePath starts with '/') for reading and stores the
// file's size in *length. Returns null (after a trace line and a line on stdout) on failure;
// the caller reads and closes the stream.
FILE* OpenStrFile(const char* relativePath, int32_t* length);

// Scans buffer for the entry "[id]" and copies its value into deststr. Returns 0 when the scan
// ran (deststr empty when the ID is absent or its value empty), -1 when the buffer is empty.
int CPFindDestStr(const char* buffer, const char* id);

// Copies the text of id from fileBuffer into destination (at least 1024 bytes) and returns
// destination. An absent ID or an empty value gives "No Such Name"; an empty buffer also shows
// the "Read rc file failed!" box.
char* CPGetText(const char* id, char* destination, const char* fileBuffer);

// Start-up steps of main: opens the file with OpenStrFile and reads it whole into a new
// ZOL_RcFileBuf of file size + 1024 bytes (first eight bytes and the spare bytes zeroed).
// On failure writes the start-up trace line ("<Open Str File:%s failed.return 0." or
// "<malloc for Str File failed.return 0.") and returns false; the caller returns 0.
bool LoadRcFile(const char* relativePath);
// Frees ZOL_RcFileBuf and sets it to null; safe to call when nothing is loaded.
void FreeRcFile();

// Scope owner for the loaded message file: frees it on every path out of the scope.
class RcFileGuard {
  public:
    RcFileGuard() = default;
    ~RcFileGuard() { FreeRcFile(); }
    RcFileGuard(const RcFileGuard&) = delete;
    RcFileGuard& operator=(const RcFileGuard&) = delete;
};

// The text of id from ZOL_RcFileBuf, copied out (fetched through ReadString like every other
// lookup), for callers that need several texts at once.
std::string MessageText(const char* id);
