// Store writes of the report-settings library's destinations.
#include "dest_store.h"

#include <string.h>

#include <cstring>

#include "dest_fields.h"
#include "regvalue.h"

namespace rptset {

bool StorableID(const char (&id)[DEST_TEXT_SIZE]) {
    const std::size_t length = strnlen(id, DEST_TEXT_SIZE);
    return length > 0 && length <= ZOL_MAX_KEY_NAME && std::memchr(id, '\\', length) == nullptr;
}

LONG WriteDestination(HKEY idList, const char* name, const DestData& record) {
    Key key;
    LONG rc = key.Create(idList, name);
    if (rc != ERROR_SUCCESS)
        return rc;
    for (const DestTextField& f : kDestTextFields) {
        rc = WriteTextField(key.get(), f.value, record.*f.field, DEST_TEXT_SIZE);
        if (rc != ERROR_SUCCESS)
            return rc;
    }
    for (const DestNumberField& f : kDestNumberFields) {
        if ((rc = WriteDword(key.get(), f.value, record.*f.field)) != ERROR_SUCCESS)
            return rc;
    }
    // Encoded in a copy: the caller's record keeps the plain password.
    char password[DEST_TEXT_SIZE];
    const std::size_t length = strnlen(record.Password, sizeof password);
    if (length == sizeof password)
        return ERROR_INVALID_PARAMETER;
    std::memcpy(password, record.Password, length + 1);
    Ras_Encode(password, static_cast<int>(length));
    rc = WriteTextField(key.get(), kDestPasswordValue, password, sizeof password);
    // The encoded text is as secret as the plain one.
    explicit_bzero(password, sizeof password);
    return rc;
}

}  // namespace rptset
