// The destination-ID selection list of the event screens: one node per listed destination ID,
// each with the report flag the screen edits.
#pragma once

#include <zolwin.h>

#include "records.h"

// Head of the list; null when it has not been built or holds nothing.
extern IDListNode* IDList;

// Rebuilds IDList from the listed destination IDs (DestList, szIDnum): one node per ID in order,
// report flag 0, index 0 upwards. The earlier list is freed first. 0 on success; -1 when an
// allocation fails, and then the list is empty.
int GetReportIDformReg(HMODULE hLibRPTSET);

// Frees the whole list and sets IDList to null.
void FreeReportID();
