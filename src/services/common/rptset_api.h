/*
 * rptset_api.h: the functions of the report-settings library "rptset.dll" as the program binds
 * them by name. The library defines each with exactly this type; callers cast the result of
 * GetProcAddress to a pointer to it.
 */
#ifndef ZOL_RPTSET_API_H
#define ZOL_RPTSET_API_H

#include "records.h"

/* 1 when the remote report service package is installed, else 0. */
typedef int CheckInstVantrel_fn(void);

/* Reads every destination ID into records[0..*count-1] (the caller passes DEST_MAX_RECORDS
 * allocated records). 0 on success, else a registry error code or -1 for bad arguments. */
typedef int GetAllDestSetting_fn(DestData** records, int* count);

/* Reads the destination whose ID (compared without regard to case) the record holds; the ID
 * takes the stored spelling, Operation is left as the caller set it. 0 on success, else failure
 * (2 when there is no such ID). */
typedef int GetDestSetting_fn(DestData* record);

#endif /* ZOL_RPTSET_API_H */
