// The alert logs: one line per report, tab-separated fields, one file a day in a folder of
// their own. Line handling is plain functions; the file functions keep each log whole (a
// rewrite replaces a file by rename) and serialise writers on a lock file in the folder.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace logacc {

// Longest text of one field.
inline constexpr std::size_t kMaxField = 4095;

struct AlertEntry {
    std::string source;
    std::string eventID;
    std::string destID;
    std::string groupID;  // empty: none
    int result = 0;
};

// True when text can be one field: no tab, no line break, at most kMaxField bytes.
bool FieldOk(std::string_view text);

// The entry's line (with its line feed) at local time `when`.
std::string FormatLine(const AlertEntry& entry, std::time_t when);

// content without the lines whose destination ID equals id or whose group ID equals gid (both
// without regard to case; an empty id or gid matches nothing). Lines that are not entries are
// kept as they stand.
std::string RemoveEntries(std::string_view content, std::string_view id, std::string_view gid);

// Folder of the logs ($ZolDir/log/alert); empty when the product root is unknown.
std::string LogFolder();
// Name of the log of the day holding `when`: "alert-YYYYMMDD.log".
std::string LogName(std::time_t when);

// Appends entry to its day's log in folder (created when missing). False on any failure.
bool Append(const std::string& folder, const AlertEntry& entry, std::time_t when);

// Rewrites every "*.log" of folder without the entries of id / gid. Every log is read before
// any is written: an unreadable one fails the call with nothing changed. False on failure.
bool RemoveFromAll(const std::string& folder, std::string_view id, std::string_view gid);

}  // namespace logacc
