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

#endif /* ZOL_RECORDS_H */
