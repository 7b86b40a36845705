// Store transactions: ZolRegBeginTransaction, ZolRegCommitTransaction and
// ZolRegRollbackTransaction. The outermost begin opens a BEGIN IMMEDIATE transaction on the
// process's connection; inner ones only count. A rollback inside an outer transaction dooms it:
// its writes are gone, further writes and its commit are refused until the outermost level ends.
// A transaction belongs to the thread that began it; other threads wait for its end.
#include <sqlite3.h>

#include <thread>

#include "registry_impl.h"

namespace zolwin::registry {

LONG Registry::begin() {
    Lock lk = enter();
    if (depth_ > 0) {
        if (doomed_)
            return ERROR_INVALID_STATE;
        ++depth_;
        return ERROR_SUCCESS;
    }
    LONG r = retryWhileBusy([&]() -> LONG {
        LONG c = connect(true);
        if (c != ERROR_SUCCESS)
            return c;
        int rc = store_.exec("BEGIN IMMEDIATE");
        return rc == SQLITE_OK ? ERROR_SUCCESS : mapSqliteError(rc);
    });
    if (r != ERROR_SUCCESS)
        return r;
    depth_ = 1;
    doomed_ = false;
    txOwner_ = std::this_thread::get_id();
    return ERROR_SUCCESS;
}

void Registry::endTransactionLocked() {
    // Reads inside a transaction that wrote may have cached data a rollback takes back (and a
    // commit changes the token anyway). A transaction that only read keeps the cache: nothing
    // else can commit while it holds the write lock, so what it read is still the store.
    if (wrote_ || doomed_)
        cache_.clear();
    wrote_ = false;
    depth_ = 0;
    doomed_ = false;
    txOwner_ = std::thread::id();
    txEnded_.notify_all();
}

LONG Registry::commit() {
    Lock lk = enter();
    if (depth_ == 0)
        return ERROR_INVALID_STATE;
    if (--depth_ > 0)
        return doomed_ ? ERROR_INVALID_STATE : ERROR_SUCCESS;
    if (doomed_) {
        endTransactionLocked();
        return ERROR_INVALID_STATE;
    }
    LONG r = ERROR_SUCCESS;
    if (store_.isOpen() && sqlite3_get_autocommit(store_.db()) == 0) {
        int rc = store_.exec("COMMIT");
        if (rc != SQLITE_OK) {
            r = mapSqliteError(rc);
            if (r == kBusy)
                r = ERROR_REGISTRY_IO_FAILED;
            if (sqlite3_get_autocommit(store_.db()) == 0)
                store_.exec("ROLLBACK");
        }
    } else {
        r = ERROR_REGISTRY_IO_FAILED;  // the connection lost the transaction
    }
    endTransactionLocked();
    return r;
}

LONG Registry::rollback() {
    Lock lk = enter();
    if (depth_ == 0)
        return ERROR_INVALID_STATE;
    if (!doomed_ && store_.isOpen() && sqlite3_get_autocommit(store_.db()) == 0) {
        store_.exec("ROLLBACK");
    }
    cache_.clear();
    if (--depth_ == 0) {
        endTransactionLocked();
    } else {
        doomed_ = true;
    }
    return ERROR_SUCCESS;
}

}  // namespace zolwin::registry

using zolwin::registry::guarded;
using zolwin::registry::Registry;

LONG ZolRegBeginTransaction(void) {
    return guarded([](Registry& r) { return r.begin(); });
}

LONG ZolRegCommitTransaction(void) {
    return guarded([](Registry& r) { return r.commit(); });
}

LONG ZolRegRollbackTransaction(void) {
    return guarded([](Registry& r) { return r.rollback(); });
}
