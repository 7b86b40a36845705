/*
 * logacc_api.h: the alert-log library "logacc.dll". The alert manager records every report it
 * sends, with the destination ID it went to, in the alert logs under $ZolDir/log/alert.
 */
#ifndef ZOL_LOGACC_API_H
#define ZOL_LOGACC_API_H

/* Removes destination ID id (idLength bytes) from every alert log. kind 1 is the only kind;
 * gid / gidLength name a destination group (0 and null: none); flags must be 0. Nonzero on
 * success, 0 on failure. */
typedef int AMACETDeleteIDAndGIDAtAllLog_fn(int kind, int idLength, const char* id, int gidLength,
                                            const char* gid, int flags);

#endif /* ZOL_LOGACC_API_H */
