// Creating, removing, checking and closing the store. A store is built under a temporary name and
// linked into place, so no process ever sees a half-made one; a check runs SQLite's quick_check
// or integrity_check on the process's connection.
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "registry_impl.h"

namespace zolwin::registry {

LONG Registry::createStore() {
    Lock lk = enter();
    const std::string path = currentStorePath();
    const std::string dir = path.substr(0, path.rfind('/'));
    struct stat st {};
    if (::stat(path.c_str(), &st) == 0)
        return ERROR_ALREADY_EXISTS;
    if (::mkdir(dir.c_str(), 0700) == 0) {
        ::chmod(dir.c_str(), 0700);  // whatever the umask
    } else if (errno != EEXIST) {
        return ERROR_REGISTRY_IO_FAILED;
    }

    // Build the store under a private name, then link it into place: another process either
    // finds no store or a complete one, and of two creators exactly one wins.
    const std::string tmp =
        dir + "/.hklm.db.new." + std::to_string(getpid()) + "." + std::to_string(fileTimeNow());
    auto removeTmp = [&] {
        for (const char* suffix : {"", "-wal", "-shm", "-journal"})
            ::unlink((tmp + suffix).c_str());
    };
    int fd = ::open(tmp.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    if (fd < 0)
        return ERROR_REGISTRY_IO_FAILED;
    const bool modeSet = ::fchmod(fd, 0600) == 0;
    ::close(fd);
    if (!modeSet) {
        removeTmp();
        return ERROR_REGISTRY_IO_FAILED;
    }
    LONG r = ERROR_SUCCESS;
    {
        sqlite3* db = nullptr;
        int rc =
            sqlite3_open_v2(tmp.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
        const std::string script = std::string("PRAGMA synchronous = FULL; BEGIN; ") + kSchemaSql +
                                   "PRAGMA application_id = " + std::to_string(kApplicationId) +
                                   "; PRAGMA user_version = " + std::to_string(kSchemaVersion) +
                                   "; COMMIT; PRAGMA journal_mode = WAL;";
        if (rc == SQLITE_OK)
            rc = sqlite3_exec(db, script.c_str(), nullptr, nullptr, nullptr);
        if (rc != SQLITE_OK)
            r = mapSqliteError(rc);
        // Closing checkpoints the new store into its file and removes its journal.
        if (sqlite3_close(db) != SQLITE_OK && r == ERROR_SUCCESS)
            r = ERROR_REGISTRY_IO_FAILED;
    }
    if (r == ERROR_SUCCESS && ::link(tmp.c_str(), path.c_str()) != 0) {
        r = errno == EEXIST ? ERROR_ALREADY_EXISTS : ERROR_REGISTRY_IO_FAILED;
    }
    removeTmp();
    if (r == kBusy)
        r = ERROR_REGISTRY_IO_FAILED;
    if (r != ERROR_SUCCESS)
        return r;
    int dfd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dfd >= 0) {
        ::fsync(dfd);  // the new name must survive a crash as well as the contents
        ::close(dfd);
    }
    if (store_.isOpen() && store_.path() == path && depth_ == 0)
        store_.close();
    return ERROR_SUCCESS;
}

LONG Registry::removeStore() {
    Lock lk = enter();
    const std::string path = currentStorePath();
    if (store_.isOpen() && store_.path() == path) {
        if (depth_ > 0) {
            if (sqlite3_get_autocommit(store_.db()) == 0)
                store_.exec("ROLLBACK");
            doomed_ = true;
        }
        store_.close();
    }
    LONG r = ERROR_SUCCESS;
    if (::unlink(path.c_str()) != 0)
        r = ERROR_REGISTRY_IO_FAILED;
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        if (::unlink((path + suffix).c_str()) != 0 && errno != ENOENT)
            r = ERROR_REGISTRY_IO_FAILED;
    }
    return r;
}

LONG Registry::checkStore(bool full) {
    Lock lk = enter();
    return retryWhileBusy([&]() -> LONG {
        bool opened = false;
        LONG r = connect(true, &opened);
        if (r != ERROR_SUCCESS)
            return r;
        // A connection opened by this call has just passed the quick check (the program's
        // start-up check, IsZOLntserverReady, would otherwise run it twice).
        if (opened && !full)
            return ERROR_SUCCESS;
        return store_.check(full);
    });
}

void Registry::closeStore() {
    Lock lk = enter();
    cache_.clear();
    if (!store_.isOpen())
        return;
    if (depth_ > 0) {
        if (sqlite3_get_autocommit(store_.db()) == 0)
            store_.exec("ROLLBACK");
        doomed_ = true;
    }
    store_.close();
}

}  // namespace zolwin::registry

using zolwin::registry::guarded;
using zolwin::registry::Registry;

LONG ZolRegStorePath(LPSTR buf, DWORD size) {
    if (buf == nullptr)
        return ERROR_INVALID_PARAMETER;
    return guarded([&](Registry&) -> LONG {
        const std::string path = zolwin::registry::storePathFor(zolwin::registry::registryRoot());
        if (path.size() + 1 > size)
            return ERROR_MORE_DATA;
        std::memcpy(buf, path.c_str(), path.size() + 1);
        return ERROR_SUCCESS;
    });
}

LONG ZolRegCreateStore(void) {
    return guarded([](Registry& r) { return r.createStore(); });
}

LONG ZolRegRemoveStore(void) {
    return guarded([](Registry& r) { return r.removeStore(); });
}

LONG ZolRegCheckStore(int full) {
    return guarded([&](Registry& r) { return r.checkStore(full != 0); });
}

void ZolRegCloseStore(void) {
    guarded([](Registry& r) {
        r.closeStore();
        return ERROR_SUCCESS;
    });
}
