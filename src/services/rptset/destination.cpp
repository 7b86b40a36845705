// rptset.dll: reading destination records. Each destination ID is one subkey of ID_LIST named
// by the ID; its values are listed in docs/registry.md ("Destinations (rptset.dll)").
#include <zolwin.h>

#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

#include "dest_fields.h"
#include "regvalue.h"
#include "rptset_api.h"

namespace {

using rptset::kIDListKey;
using TextField = rptset::DestTextField;
using NumberField = rptset::DestNumberField;
constexpr const auto& kTextFields = rptset::kDestTextFields;
constexpr const auto& kNumberFields = rptset::kDestNumberFields;
constexpr const char* kPasswordValue = rptset::kDestPasswordValue;

// Notes a value that could not be used as stored; the record keeps going with its default (or
// the cut text) so that one bad value does not hide the whole destination list.
void TraceBadValue(const char* id, const char* value, rptset::ValueRead how) {
    const char* why = how == rptset::ValueRead::WrongType ? "has the wrong type; default used"
                                                          : "is too long; cut to fit";
    ZOL_TRACE(TRACE_LEVEL_ERROR, "destination %s: value %s %s.", id, value, why);
}

// Reads destination subkey `name` of the open ID_LIST key into *record (ID = name).
// Gives a record the values of a destination that has never been set, keeping its Operation.
// Only the first byte of each text is cleared: every text ends at its terminator, and clearing
// all 28 KB of each record was a large part of reading the whole list.
void ResetDestination(DestData* d) {
    for (char* text : {d->ID, d->Method, d->Reserved, d->Address, d->Phone, d->User, d->Password})
        text[0] = '\0';
    d->Port = DEST_DEFAULT_PORT;
    d->HourMask = DEST_DEFAULT_HOURMASK;
    d->RetryInterval = DEST_DEFAULT_RETRYINTERVAL;
    d->RetryTime = DEST_DEFAULT_RETRYTIME;
    d->ScheduleFlag = 0;
}

// Reads destination subkey `name` of the open ID_LIST key straight into *fresh (ID = name,
// Operation kept). A failed read leaves *fresh partly filled.
LONG FillDestination(HKEY idList, const char* name, DestData* fresh) {
    rptset::Key key;
    const LONG rc = key.OpenRead(idList, name);
    if (rc != ERROR_SUCCESS)
        return rc;

    ResetDestination(fresh);
    const size_t idLength = strnlen(name, sizeof fresh->ID - 1);
    std::memcpy(fresh->ID, name, idLength);
    fresh->ID[idLength] = '\0';

    for (const TextField& f : kTextFields) {
        char* field = &((*fresh).*f.field)[0];
        const rptset::ValueRead r =
            rptset::ReadTextField(key.get(), f.value, field, DEST_TEXT_SIZE);
        if (r == rptset::ValueRead::Failed)
            return ERROR_REGISTRY_IO_FAILED;
        if (r == rptset::ValueRead::WrongType || r == rptset::ValueRead::Cut) {
            TraceBadValue(name, f.value, r);
        }
    }
    for (const NumberField& f : kNumberFields) {
        const rptset::ValueRead r = rptset::ReadDword(key.get(), f.value, &((*fresh).*f.field));
        if (r == rptset::ValueRead::Failed)
            return ERROR_REGISTRY_IO_FAILED;
        if (r == rptset::ValueRead::WrongType)
            TraceBadValue(name, f.value, r);
    }

    // The password is stored encoded (as the mail passwords are) and decoded here.
    std::string password;
    const rptset::ValueRead r = rptset::ReadText(key.get(), kPasswordValue, &password);
    if (r == rptset::ValueRead::Failed)
        return ERROR_REGISTRY_IO_FAILED;
    if (r == rptset::ValueRead::WrongType)
        TraceBadValue(name, kPasswordValue, r);
    if (r == rptset::ValueRead::Ok) {
        if (password.size() > DEST_TEXT_SIZE - 1) {
            TraceBadValue(name, kPasswordValue, rptset::ValueRead::Cut);
            password.resize(DEST_TEXT_SIZE - 1);
        }
        Ras_Decode(password.data(), static_cast<int>(password.size()));
        std::memcpy(fresh->Password, password.data(), password.size());
        fresh->Password[password.size()] = '\0';
    }
    return ERROR_SUCCESS;
}

// The same, all or nothing: filled aside and copied at the end, so that a failed read leaves the
// caller's record as it was. The whole-list read fills its own records in place instead: copying
// each 28 KB record once more was most of its time.
LONG ReadDestination(HKEY idList, const char* name, DestData* record) {
    auto fresh = std::make_unique<DestData>();
    fresh->Operation = record->Operation;
    const LONG rc = FillDestination(idList, name, fresh.get());
    if (rc == ERROR_SUCCESS)
        *record = *fresh;
    return rc;
}

// Reads the whole list inside one open ID_LIST key.
LONG ReadAll(HKEY idList, DestData** records, int* count) {
    for (DWORD index = 0;; ++index) {
        std::string name;
        LONG rc = rptset::SubkeyName(idList, index, &name);
        if (rc == ERROR_NO_MORE_ITEMS)
            return ERROR_SUCCESS;
        if (rc != ERROR_SUCCESS)
            return rc;
        if (*count == DEST_MAX_RECORDS) {
            ZOL_TRACE(TRACE_LEVEL_ERROR,
                      "more than %d destination IDs: %s and those after it are not returned.",
                      DEST_MAX_RECORDS, name.c_str());
            return ERROR_SUCCESS;
        }
        DestData* record = records[*count];
        record->Operation = 0;
        rc = FillDestination(idList, name.c_str(), record);
        if (rc != ERROR_SUCCESS)
            return rc;
        ++*count;
    }
}

}  // namespace

extern "C" ZOLWIN_API int GetAllDestSetting(DestData** records, int* count) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (records == nullptr || count == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    for (int i = 0; i < DEST_MAX_RECORDS; ++i) {
        if (records[i] == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]records[%d] is NULL.return -1.", i);
            return -1;
        }
    }
    *count = 0;
    LONG rc;
    {
        // The list cannot change between the enumeration and the reads.
        zolwin::ReadSnapshot snapshot;
        rptset::Key idList;
        rc = idList.OpenRead(HKEY_LOCAL_MACHINE, kIDListKey);
        if (rc == ERROR_SUCCESS)
            rc = ReadAll(idList.get(), records, count);
    }
    if (rc != ERROR_SUCCESS) {
        *count = 0;
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<read of %s failed (%d).return %d.", kIDListKey,
                  static_cast<int>(rc), static_cast<int>(rc));
        return static_cast<int>(rc);
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. count=%d", *count);
    return 0;
}
static_assert(std::is_same_v<decltype(GetAllDestSetting), GetAllDestSetting_fn>);

extern "C" ZOLWIN_API int GetDestSetting(DestData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr || record->ID[0] == '\0' ||
        std::memchr(record->ID, '\0', sizeof record->ID) == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    LONG rc;
    {
        zolwin::ReadSnapshot snapshot;
        rptset::Key idList;
        rc = idList.OpenRead(HKEY_LOCAL_MACHINE, kIDListKey);
        // Find the stored spelling of the ID: IDs match without regard to case.
        std::string name;
        for (DWORD index = 0; rc == ERROR_SUCCESS; ++index) {
            rc = rptset::SubkeyName(idList.get(), index, &name);
            if (rc == ERROR_SUCCESS && rptset::EqualsNoCase(name.c_str(), record->ID))
                break;
        }
        if (rc == ERROR_NO_MORE_ITEMS)
            rc = ERROR_FILE_NOT_FOUND;
        if (rc == ERROR_SUCCESS)
            rc = ReadDestination(idList.get(), name.c_str(), record);
    }
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<read of destination %s failed (%d).return %d.", record->ID,
                  static_cast<int>(rc), static_cast<int>(rc));
        return static_cast<int>(rc);
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(GetDestSetting), GetDestSetting_fn>);
