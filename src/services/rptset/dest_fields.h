// Where each field of a destination record lives in its ID_LIST subkey: one table read by
// GetAllDestSetting / GetDestSetting and written by SetDestSetting, so both sides agree.
#pragma once

#include <cstdint>

#include "records.h"
#include "regpaths.h"

namespace rptset {

// Plain constexpr (one copy per source file) rather than inline variables: GCC exports inline
// variables as unique symbols, which would keep the library from ever being unloaded.

constexpr const char* kIDListKey = ZOL_KEY_ID_LIST;

struct DestTextField {
    const char* value;
    char (DestData::*field)[DEST_TEXT_SIZE];
};
struct DestNumberField {
    const char* value;
    uint32_t DestData::*field;
};

constexpr DestTextField kDestTextFields[] = {
    {"Method", &DestData::Method},   {"Reserved", &DestData::Reserved},
    {"Address", &DestData::Address}, {"Phone", &DestData::Phone},
    {"User", &DestData::User},
};
constexpr DestNumberField kDestNumberFields[] = {
    {"Port", &DestData::Port},
    {"HourMask", &DestData::HourMask},
    {"RetryInterval", &DestData::RetryInterval},
    {"RetryTime", &DestData::RetryTime},
    {"ScheduleFlag", &DestData::ScheduleFlag},
};
// Stored encoded with Ras_Encode; kept apart from the plain texts.
constexpr const char* kDestPasswordValue = "Password";

}  // namespace rptset
