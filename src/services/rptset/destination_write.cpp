// rptset.dll: creating, changing and deleting destination IDs (SetDestSetting). A record is
// written whole in one transaction; deleting an ID also unbinds it from every agent event and
// syslog item in that transaction. Storage: docs/registry.md ("Destinations (rptset.dll)").
#include <zolwin.h>

#include <string>
#include <type_traits>
#include <vector>

#include "dest_fields.h"
#include "dest_store.h"
#include "regpaths.h"
#include "regvalue.h"
#include "rptset_api.h"

namespace {

// Results of SetDestSetting.
constexpr int kDone = 0;
constexpr int kSystemError = -1;
constexpr int kRefused = -2;
constexpr int kExists = -3;

// IDs the product needs whatever the administrator does; compared without regard to case.
constexpr const char* kBuiltInIDs[] = {"TCP_IP In-Band", "TCP_IP Out-of-Band", "SNMP",
                                       "VANTREL REPORT", "VANTRELREPORT"};

// Keys whose grandchildren (<source>\<event ID>) bind destination IDs in their subkey "Dest",
// one value per ID.
constexpr const char* kBindingRoots[] = {
    ZOL_KEY_AGENTEVENT,
    ZOL_KEY_SYSLOG,
};

bool IsBuiltIn(const char* id) {
    for (const char* builtIn : kBuiltInIDs) {
        if (rptset::EqualsNoCase(id, builtIn))
            return true;
    }
    return false;
}

// Removes value id from every binding's Dest subkey. Value names compare without regard to
// case, so every spelling of the ID goes.
LONG Unbind(const char* id) {
    for (const char* rootPath : kBindingRoots) {
        rptset::Key root;
        LONG rc = root.OpenWrite(HKEY_LOCAL_MACHINE, rootPath);
        if (rc == ERROR_FILE_NOT_FOUND)
            continue;
        std::vector<std::string> sources;
        if (rc != ERROR_SUCCESS || (rc = rptset::SubkeyNames(root.get(), &sources)) != 0)
            return rc;
        for (const std::string& source : sources) {
            rptset::Key sourceKey;
            std::vector<std::string> events;
            if ((rc = sourceKey.OpenWrite(root.get(), source.c_str())) != ERROR_SUCCESS ||
                (rc = rptset::SubkeyNames(sourceKey.get(), &events)) != ERROR_SUCCESS) {
                return rc;
            }
            for (const std::string& event : events) {
                rptset::Key dest;
                rc = dest.OpenWrite(sourceKey.get(), (event + "\\Dest").c_str());
                if (rc == ERROR_FILE_NOT_FOUND)
                    continue;
                if (rc == ERROR_SUCCESS)
                    rc = RegDeleteValue(dest.get(), id);
                if (rc != ERROR_SUCCESS && rc != ERROR_FILE_NOT_FOUND)
                    return rc;
            }
        }
    }
    return ERROR_SUCCESS;
}

// The stored spelling of id among names, or "" when there is none.
std::string StoredName(const std::vector<std::string>& names, const char* id) {
    for (const std::string& name : names) {
        if (rptset::EqualsNoCase(name.c_str(), id))
            return name;
    }
    return {};
}

// Store result of a write to SetDestSetting's result: a field the store cannot hold is the
// caller's fault (refused), anything else the system's.
int WriteResult(LONG rc) {
    if (rc == ERROR_SUCCESS)
        return kDone;
    return rc == ERROR_INVALID_PARAMETER ? kRefused : kSystemError;
}

// The operation inside the caller's transaction.
int Apply(const DestData& record) {
    rptset::Key idList;
    LONG rc = record.Operation == DEST_OP_CREATE
                  ? idList.Create(HKEY_LOCAL_MACHINE, rptset::kIDListKey)
                  : idList.OpenWrite(HKEY_LOCAL_MACHINE, rptset::kIDListKey);
    if (rc == ERROR_FILE_NOT_FOUND)
        return kRefused;  // no list at all: nothing to change or delete
    std::vector<std::string> names;
    if (rc != ERROR_SUCCESS || rptset::SubkeyNames(idList.get(), &names) != ERROR_SUCCESS)
        return kSystemError;
    const std::string stored = StoredName(names, record.ID);

    switch (record.Operation) {
        case DEST_OP_CREATE:
            if (!stored.empty())
                return kExists;
            if (names.size() >= DEST_MAX_RECORDS)
                return kRefused;
            return WriteResult(rptset::WriteDestination(idList.get(), record.ID, record));
        case DEST_OP_CHANGE:
            if (stored.empty())
                return kRefused;
            // Written under the stored spelling: a change never renames an ID.
            return WriteResult(rptset::WriteDestination(idList.get(), stored.c_str(), record));
        default:  // DEST_OP_DELETE
            if (stored.empty() || IsBuiltIn(record.ID))
                return kRefused;
            if (rptset::DeleteTree(idList.get(), stored.c_str()) != ERROR_SUCCESS)
                return kSystemError;
            return Unbind(stored.c_str()) == ERROR_SUCCESS ? kDone : kSystemError;
    }
}

}  // namespace

extern "C" ZOLWIN_API int SetDestSetting(DestData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return kSystemError;
    }
    if (record->Operation > DEST_OP_CHANGE || !rptset::StorableID(record->ID)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<operation %u or ID refused.return -2.", record->Operation);
        return kRefused;
    }
    zolwin::Transaction transaction;
    if (transaction.status() != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<transaction failed (%d).return -1.",
                  static_cast<int>(transaction.status()));
        return kSystemError;
    }
    int result = Apply(*record);
    if (result == kDone && transaction.commit() != ERROR_SUCCESS)
        result = kSystemError;
    // The destructor rolls back whatever a refused or failed operation wrote.
    ZOL_TRACE(result == kDone ? TRACE_LEVEL_TRACE : TRACE_LEVEL_ERROR,
              "<operation %u of %s: return %d.", record->Operation, record->ID, result);
    return result;
}
static_assert(std::is_same_v<decltype(SetDestSetting), SetDestSetting_fn>);
