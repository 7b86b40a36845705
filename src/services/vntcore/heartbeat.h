// The heartbeat schedule of the remote report service (HeartBeat key): value names and the
// ranges that both the key floppy and the schedule check accept.
#pragma once

#include <zolwin.h>

namespace vntcore {

inline constexpr const char* kHeartbeatInterval = "HBINTERVAL";    // days between reports
inline constexpr const char* kHeartbeatSleepTime = "HBSLEEPTIME";  // seconds between checks
inline constexpr const char* kHeartbeatLastDate = "HBRDATE";       // "YYYY/MM/DD" or empty

inline constexpr DWORD kHeartbeatIntervalMin = 1;
inline constexpr DWORD kHeartbeatIntervalMax = 365;
inline constexpr DWORD kHeartbeatSleepTimeMin = 60;
inline constexpr DWORD kHeartbeatSleepTimeMax = 86400;

}  // namespace vntcore
