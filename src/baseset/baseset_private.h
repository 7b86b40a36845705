// Helpers the base-setting screens share: base-setting records on the heap, as the library's
// records are, owned for one screen's life.
#pragma once

#include <cstdlib>
#include <cstring>
#include <memory>

#include "records.h"

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

using BaseRecordPtr = std::unique_ptr<BaseData, FreeDeleter>;

// A zeroed record named method (cut to fit its field), or null when memory runs out.
inline BaseRecordPtr NewBaseRecord(const char* method) {
    BaseRecordPtr record(static_cast<BaseData*>(std::calloc(1, sizeof(BaseData))));
    if (record != nullptr)
        std::strncpy(record->MethodName, method, sizeof record->MethodName - 1);
    return record;
}
