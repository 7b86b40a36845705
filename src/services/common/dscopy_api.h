/*
 * dscopy_api.h: the destination-data copy library "dscopy.dll", which turns a report schedule's
 * hour mask into its text and back. The export names are one letter on purpose: the program binds
 * them as "x" and "b".
 *
 * Schedule text: items separated by ","; each item is an hour "h" or a range "h1-h2" of hours 0
 * to 23, both ends included. A range whose first hour is greater than its last runs over
 * midnight ("22-2" is 22, 23, 0, 1, 2). Blanks around numbers are ignored. "x" writes every run
 * of set hours as a range, even a single hour ("7-7"), ordered from hour 0, so that its text
 * always passes the program's syntax check; every hour is "0-23" and no hour is the empty text.
 */
#ifndef ZOL_DSCOPY_API_H
#define ZOL_DSCOPY_API_H

#include <stdint.h>

/* Longest text "x" writes, terminator included ("0-0,2-2,...,22-22"). */
#define SCHEDULE_TEXT_MAX 72

/* Mask to text: writes at most SCHEDULE_TEXT_MAX bytes into text (hours above 23 are ignored).
 * Returns 0, or -1 when text is null. */
typedef int ScheduleMaskToText_fn(uint32_t mask, char* text);

/* Text to mask: on success sets *mask and returns 0; a text that is not a valid schedule leaves
 * *mask unchanged and returns -1. The empty text is the empty mask. */
typedef int ScheduleTextToMask_fn(const char* text, uint32_t* mask);

#endif /* ZOL_DSCOPY_API_H */
