/*
 * logacc_api.h: the alert-log library "logacc.dll". The alert manager records every report it
 * sends, with the destination ID it went to, in the alert logs under $ZolDir/log/alert: one
 * file a day, "alert-YYYYMMDD.log", one line per report with the tab-separated fields local
 * time ("YYYY-MM-DD HH:MM:SS"), source, event ID, destination ID, group ID (empty: none) and
 * result (0 delivered, else the delivery library's error code).
 */
#ifndef ZOL_LOGACC_API_H
#define ZOL_LOGACC_API_H

/* Removes destination ID id (idLength bytes) from every alert log. kind 1 is the only kind;
 * gid / gidLength name a destination group (0 and null: none); flags must be 0. Nonzero on
 * success, 0 on failure. */
typedef int AMACETDeleteIDAndGIDAtAllLog_fn(int kind, int idLength, const char* id, int gidLength,
                                            const char* gid, int flags);

/* Appends one report to today's alert log. groupID may be null (no group). No text may be
 * null (but groupID), longer than 4095 bytes or hold a tab or a line break; source, eventID and
 * destID may not be empty. Nonzero on success, 0 on failure (nothing written). */
typedef int AMACETWriteAlertLog_fn(const char* source, const char* eventID, const char* destID,
                                   const char* groupID, int result);

#endif /* ZOL_LOGACC_API_H */
