// Writing side of the report-settings library's destinations: the ID check and the whole-record
// writer shared by SetDestSetting and SetAMAMDeseSetting.
#pragma once

#include <zolwin.h>

#include "records.h"

namespace rptset {

// True when a destination ID can be a key name: not empty, terminated within the field, at
// most ZOL_MAX_KEY_NAME characters, no backslash.
bool StorableID(const char (&id)[DEST_TEXT_SIZE]);

// Writes every value of record into subkey name of the open ID_LIST key (created when missing).
// The caller holds the transaction. ERROR_INVALID_PARAMETER: a text field without terminator.
LONG WriteDestination(HKEY idList, const char* name, const DestData& record);

}  // namespace rptset
