// chkset.dll: checks that the remote report service can run: its heartbeat schedule in the
// store is whole and in range, and its log folder $ZolDir/log/vnt is there and writable.
#include <sys/stat.h>
#include <unistd.h>
#include <zolwin.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <string>
#include <type_traits>

#include "heartbeat.h"
#include "store.h"
#include "vantrelpkg_api.h"

namespace {

struct ScheduleRange {
    const char* name;
    DWORD min;
    DWORD max;
};
constexpr ScheduleRange kScheduleRanges[] = {
    {vntcore::kHeartbeatInterval, vntcore::kHeartbeatIntervalMin, vntcore::kHeartbeatIntervalMax},
    {vntcore::kHeartbeatSleepTime, vntcore::kHeartbeatSleepTimeMin,
     vntcore::kHeartbeatSleepTimeMax},
};

// "YYYY/MM/DD" naming a real calendar day.
bool IsReportDate(const std::string& text) {
    int y = 0;
    unsigned m = 0;
    unsigned d = 0;
    int used = 0;
    if (text.size() != 10 || text[4] != '/' || text[7] != '/' ||
        std::sscanf(text.c_str(), "%4d/%2u/%2u%n", &y, &m, &d, &used) != 3 || used != 10) {
        return false;
    }
    for (const std::size_t i : {0u, 1u, 2u, 3u, 5u, 6u, 8u, 9u}) {
        if (text[i] < '0' || text[i] > '9')
            return false;
    }
    return std::chrono::year_month_day{std::chrono::year{y}, std::chrono::month{m},
                                       std::chrono::day{d}}
        .ok();
}

}  // namespace

// 0 when HBINTERVAL and HBSLEEPTIME are stored and in range and HBRDATE is empty or a date;
// -1 otherwise (the first fault is traced).
extern "C" ZOLWIN_API int CheckScheduleFile(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    for (const ScheduleRange& r : kScheduleRanges) {
        DWORD value = 0;
        if (vntcore::ReadDword(vntcore::kHeartBeatKey, r.name, &value) != vntcore::Read::Ok) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s missing or not a number.return -1.", r.name);
            return -1;
        }
        if (value < r.min || value > r.max) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s=%u out of %u..%u.return -1.", r.name, value, r.min,
                      r.max);
            return -1;
        }
    }
    std::string date;
    const vntcore::Read r =
        vntcore::ReadText(vntcore::kHeartBeatKey, vntcore::kHeartbeatLastDate, &date);
    if (r == vntcore::Read::WrongType || r == vntcore::Read::Failed ||
        (!date.empty() && !IsReportDate(date))) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s is not a date.return -1.", vntcore::kHeartbeatLastDate);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(CheckScheduleFile), CheckScheduleFile_fn>);

// 0 when $ZolDir/log/vnt is a folder the service can write into, creating it when missing;
// -1 otherwise.
extern "C" ZOLWIN_API int CheckLogFile(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    char root[4096] = {};
    if (!GetZolRootPath(root, sizeof root)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetZolRootPath failed.return -1.");
        return -1;
    }
    // mkdir rather than <filesystem>, which would bring the C++ locale start-up into the library.
    std::string folder = root;
    struct stat st {};
    bool made = true;
    for (const char* part : {"/log", "/vnt"}) {
        folder += part;
        if (mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST)
            made = false;
    }
    if (!made || stat(folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s is not a folder and cannot be made one.return -1.",
                  folder.c_str());
        return -1;
    }
    if (access(folder.c_str(), W_OK | X_OK) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s is not writable.return -1.", folder.c_str());
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. folder=%s", folder.c_str());
    return 0;
}
static_assert(std::is_same_v<decltype(CheckLogFile), CheckLogFile_fn>);
