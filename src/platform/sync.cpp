// Named mutexes and events shared between processes, over POSIX shared memory. Each object is
// one small shared block: a process-shared robust mutex (the mutex itself, so that a holder's
// death hands it to the next waiter), or a robust mutex, condition variable and signalled state
// (an event); plus a count of the handles open on it, so that the last CloseHandle removes the
// name. Names live in a namespace of their product root, so separate roots never meet.
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "zolwin.h"
#include "zolwin_private.h"

namespace {

constexpr uint32_t kMagic = 0x574c4f5a;  // "ZOLW"
enum class Kind : uint32_t { Mutex = 1, Event = 2 };

// How long an opener waits for a creator that has made the name but not yet initialised it;
// a block still not ready after this is left over from a creator that died half-way.
constexpr auto kReadyWait = std::chrono::seconds(2);

struct SharedBlock {
    std::atomic<uint32_t> ready;  // published last by the creator
    uint32_t magic;
    uint32_t kind;
    uint32_t refs;      // open handles in all processes (under meta)
    uint32_t unlinked;  // the name is gone: nobody may join any more (under meta)
    uint32_t manualReset;
    uint32_t signalled;  // event state (under meta)
    pthread_mutex_t meta;
    pthread_cond_t changed;  // signalled state changed (events)
    pthread_mutex_t owner;   // the mutex itself (mutexes)
};
static_assert(std::atomic<uint32_t>::is_always_lock_free, "ready flag must work across processes");

// Locks a robust mutex; when its holder died, the data it guards is plain words that are
// always consistent, so the lock is simply taken over.
bool lockRobust(pthread_mutex_t* m) {
    int rc = pthread_mutex_lock(m);
    if (rc == EOWNERDEAD) {
        pthread_mutex_consistent(m);
        rc = 0;
    }
    return rc == 0;
}

class MetaLock {
  public:
    explicit MetaLock(SharedBlock* b) : m_(&b->meta), locked_(lockRobust(m_)) {}
    ~MetaLock() {
        if (locked_)
            pthread_mutex_unlock(m_);
    }
    MetaLock(const MetaLock&) = delete;
    MetaLock& operator=(const MetaLock&) = delete;
    bool locked() const { return locked_; }

  private:
    pthread_mutex_t* m_;
    bool locked_;
};

timespec deadlineAfter(DWORD ms) {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    t.tv_sec += static_cast<time_t>(ms / 1000);
    t.tv_nsec += static_cast<long>(ms % 1000) * 1000000L;
    if (t.tv_nsec >= 1000000000L) {
        t.tv_sec += 1;
        t.tv_nsec -= 1000000000L;
    }
    return t;
}

bool initialiseBlock(SharedBlock* b, Kind kind, bool manualReset, bool initialState,
                     bool initialOwner) {
    pthread_mutexattr_t ma;
    pthread_mutexattr_init(&ma);
    pthread_mutexattr_setpshared(&ma, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&ma, PTHREAD_MUTEX_ROBUST);
    bool ok = pthread_mutex_init(&b->meta, &ma) == 0;
    // Win32 mutexes are recursive: the owner may wait on it again and releases once per wait.
    pthread_mutexattr_settype(&ma, PTHREAD_MUTEX_RECURSIVE);
    ok = ok && pthread_mutex_init(&b->owner, &ma) == 0;
    pthread_mutexattr_destroy(&ma);

    pthread_condattr_t ca;
    pthread_condattr_init(&ca);
    pthread_condattr_setpshared(&ca, PTHREAD_PROCESS_SHARED);
    pthread_condattr_setclock(&ca, CLOCK_MONOTONIC);
    ok = ok && pthread_cond_init(&b->changed, &ca) == 0;
    pthread_condattr_destroy(&ca);
    if (!ok)
        return false;

    b->magic = kMagic;
    b->kind = static_cast<uint32_t>(kind);
    b->refs = 1;
    b->unlinked = 0;
    b->manualReset = manualReset ? 1 : 0;
    b->signalled = initialState ? 1 : 0;
    // Taken before the block is published, so nobody can get in between.
    if (kind == Kind::Mutex && initialOwner && pthread_mutex_lock(&b->owner) != 0)
        return false;
    b->ready.store(1, std::memory_order_release);
    return true;
}

// This process's view of one shared object: a single mapping, shared by all of the process's
// handles to that name so that a mutex is locked and unlocked at one address.
struct Mapping {
    SharedBlock* block = nullptr;
    Mapping() = default;
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    std::string shmName;        // empty for an unnamed object
    std::atomic<long> held{0};  // acquisitions not yet released, all threads of this process
    ~Mapping();
};

// One handle: what CreateX/OpenX return (its address is the HANDLE).
struct Handle {
    Kind kind = Kind::Mutex;
    std::shared_ptr<Mapping> map;
    Handle() = default;
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle();
};

std::mutex tableLock;
std::map<void*, std::shared_ptr<Handle>> handles;        // live handles
std::map<std::string, std::weak_ptr<Mapping>> mappings;  // named objects mapped here

Mapping::~Mapping() {
    if (!shmName.empty()) {
        std::lock_guard<std::mutex> guard(tableLock);
        auto it = mappings.find(shmName);
        if (it != mappings.end() && it->second.expired())
            mappings.erase(it);
    }
    // A mutex still held here stays mapped: the thread's robust-lock list points into it.
    if (block != nullptr && held.load() == 0)
        munmap(block, sizeof(SharedBlock));
}

Handle::~Handle() {
    if (!map)
        return;
    SharedBlock* b = map->block;
    MetaLock lock(b);
    if (!lock.locked())
        return;
    if (b->refs > 0)
        --b->refs;
    if (b->refs == 0 && !map->shmName.empty()) {
        // Removed under the lock, so an opener that mapped the old block sees it is gone.
        b->unlinked = 1;
        shm_unlink(map->shmName.c_str());
    }
}

SharedBlock* mapBlock(int fd) {
    void* p = mmap(nullptr, sizeof(SharedBlock), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    return p == MAP_FAILED ? nullptr : static_cast<SharedBlock*>(p);
}

// 64-bit FNV-1a, as 16 hex digits: short, stable names from long paths.
std::string hashHex(const std::string& text) {
    uint64_t h = 1469598103934665603ull;
    for (unsigned char c : text) {
        h ^= c;
        h *= 1099511628211ull;
    }
    std::array<char, 17> hex{};
    snprintf(hex.data(), hex.size(), "%016llx", static_cast<unsigned long long>(h));
    return hex.data();
}

// "/zolwin.<root hash>.<kind>.<name>", the name with every character that is not a plain
// letter, digit, '-', '_' or '.' written as %XX; very long names end in a hash of the whole.
std::string shmNameFor(Kind kind, const std::string& name) {
    std::string root = zolwin::productRoot();
    if (char* real = realpath(root.c_str(), nullptr)) {
        root = real;
        std::free(real);
    }
    std::string encoded;
    for (unsigned char c : name) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.';
        if (plain) {
            encoded.push_back(static_cast<char>(c));
        } else {
            std::array<char, 4> esc{};
            snprintf(esc.data(), esc.size(), "%%%02X", c);
            encoded += esc.data();
        }
    }
    if (encoded.size() > 160)
        encoded = encoded.substr(0, 140) + "~" + hashHex(name);
    return "/zolwin." + hashHex(root) + (kind == Kind::Mutex ? ".mutex." : ".event.") + encoded;
}

enum class Join { Joined, Missing, Stale, Failed };

template <typename Pred>
bool waitFor(Pred ready) {
    const auto until = std::chrono::steady_clock::now() + kReadyWait;
    while (!ready()) {
        if (std::chrono::steady_clock::now() >= until)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Joins an existing named object: maps it once its creator has finished, and counts the new
// handle unless the object is already being removed.
Join joinExisting(const std::string& shmName, Kind kind, SharedBlock*& out, DWORD& error) {
    int fd = shm_open(shmName.c_str(), O_RDWR | O_CLOEXEC, 0);
    if (fd < 0) {
        error = errno == ENOENT ? ERROR_FILE_NOT_FOUND : ERROR_ACCESS_DENIED;
        return errno == ENOENT ? Join::Missing : Join::Failed;
    }
    // The creator sizes the object right after making it; mapping a shorter file would fault.
    const bool sized = waitFor([fd] {
        struct stat st {};
        return fstat(fd, &st) == 0 && st.st_size >= static_cast<off_t>(sizeof(SharedBlock));
    });
    SharedBlock* b = sized ? mapBlock(fd) : nullptr;
    close(fd);
    if (!sized)
        return Join::Stale;
    if (b == nullptr) {
        error = ERROR_NOT_ENOUGH_MEMORY;
        return Join::Failed;
    }
    if (!waitFor([b] { return b->ready.load(std::memory_order_acquire) == 1; })) {
        munmap(b, sizeof(SharedBlock));
        return Join::Stale;
    }
    if (b->magic != kMagic || b->kind != static_cast<uint32_t>(kind)) {
        munmap(b, sizeof(SharedBlock));
        error = ERROR_INVALID_HANDLE;
        return Join::Failed;
    }
    {
        MetaLock lock(b);
        if (lock.locked() && !b->unlinked) {
            ++b->refs;
            out = b;
            return Join::Joined;
        }
    }
    munmap(b, sizeof(SharedBlock));
    error = ERROR_FILE_NOT_FOUND;
    return Join::Missing;
}

// Makes a new named object; nullptr with ERROR_ALREADY_EXISTS when the name is taken.
SharedBlock* createNamed(const std::string& shmName, Kind kind, bool manualReset, bool state,
                         bool owner, DWORD& error) {
    int fd = shm_open(shmName.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        error = errno == EEXIST ? ERROR_ALREADY_EXISTS : ERROR_ACCESS_DENIED;
        return nullptr;
    }
    SharedBlock* b = nullptr;
    if (ftruncate(fd, sizeof(SharedBlock)) == 0)
        b = mapBlock(fd);
    close(fd);
    if (b == nullptr || !initialiseBlock(b, kind, manualReset, state, owner)) {
        if (b != nullptr)
            munmap(b, sizeof(SharedBlock));
        shm_unlink(shmName.c_str());
        error = ERROR_NOT_ENOUGH_MEMORY;
        return nullptr;
    }
    return b;
}

HANDLE publish(Kind kind, std::shared_ptr<Mapping> map) {
    // Built in place: a temporary Handle's destructor would drop a count it never took.
    auto handle = std::make_shared<Handle>();
    handle->kind = kind;
    handle->map = std::move(map);
    void* key = handle.get();
    std::lock_guard<std::mutex> guard(tableLock);
    if (!handle->map->shmName.empty())
        mappings[handle->map->shmName] = handle->map;
    handles.emplace(key, std::move(handle));
    return key;
}

std::shared_ptr<Mapping> newMapping(SharedBlock* b, std::string shmName) {
    auto map = std::make_shared<Mapping>();
    map->block = b;
    map->shmName = std::move(shmName);
    return map;
}

// A second handle on an object this process has mapped already: only the count changes.
std::shared_ptr<Mapping> reuseMapping(const std::string& shmName) {
    std::shared_ptr<Mapping> map;
    {
        std::lock_guard<std::mutex> guard(tableLock);
        auto it = mappings.find(shmName);
        if (it != mappings.end())
            map = it->second.lock();
    }
    if (!map)
        return nullptr;
    // While this process holds a handle the object cannot have been removed.
    MetaLock lock(map->block);
    if (!lock.locked())
        return nullptr;
    ++map->block->refs;
    return map;
}

HANDLE createObject(Kind kind, bool manualReset, bool state, bool owner, LPCSTR lpName) {
    if (lpName == nullptr || *lpName == '\0') {
        // An unnamed object is private to this process (and children that inherit the memory).
        void* p = mmap(nullptr, sizeof(SharedBlock), PROT_READ | PROT_WRITE,
                       MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        auto* b = static_cast<SharedBlock*>(p);
        if (p == MAP_FAILED || !initialiseBlock(b, kind, manualReset, state, owner)) {
            if (p != MAP_FAILED)
                munmap(p, sizeof(SharedBlock));
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
        }
        auto map = newMapping(b, {});
        if (kind == Kind::Mutex && owner)
            map->held = 1;
        SetLastError(ERROR_SUCCESS);
        return publish(kind, std::move(map));
    }
    const std::string shmName = shmNameFor(kind, lpName);
    if (auto map = reuseMapping(shmName)) {
        SetLastError(ERROR_ALREADY_EXISTS);
        return publish(kind, std::move(map));
    }
    DWORD error = ERROR_SUCCESS;
    // Creating and joining race with other processes doing the same or closing the last
    // handle; each lost race is retried, a bounded number of times.
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (SharedBlock* b = createNamed(shmName, kind, manualReset, state, owner, error)) {
            auto map = newMapping(b, shmName);
            if (kind == Kind::Mutex && owner)
                map->held = 1;
            SetLastError(ERROR_SUCCESS);
            return publish(kind, std::move(map));
        }
        if (error != ERROR_ALREADY_EXISTS)
            break;
        SharedBlock* b = nullptr;
        switch (joinExisting(shmName, kind, b, error)) {
            case Join::Joined:
                // An existing object keeps its state: bInitialOwner and the initial state are
                // only for the creator, as on Win32.
                SetLastError(ERROR_ALREADY_EXISTS);
                return publish(kind, newMapping(b, shmName));
            case Join::Stale:
                shm_unlink(shmName.c_str());
                continue;
            case Join::Missing:
                continue;
            case Join::Failed:
                SetLastError(error);
                return nullptr;
        }
    }
    SetLastError(error == ERROR_ALREADY_EXISTS ? ERROR_ACCESS_DENIED : error);
    return nullptr;
}

HANDLE openObject(Kind kind, LPCSTR lpName) {
    if (lpName == nullptr || *lpName == '\0') {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const std::string shmName = shmNameFor(kind, lpName);
    if (auto map = reuseMapping(shmName)) {
        SetLastError(ERROR_SUCCESS);
        return publish(kind, std::move(map));
    }
    SharedBlock* b = nullptr;
    DWORD error = ERROR_FILE_NOT_FOUND;
    switch (joinExisting(shmName, kind, b, error)) {
        case Join::Joined:
            SetLastError(ERROR_SUCCESS);
            return publish(kind, newMapping(b, shmName));
        case Join::Stale:
            SetLastError(ERROR_FILE_NOT_FOUND);
            return nullptr;
        case Join::Missing:
        case Join::Failed:
            break;
    }
    SetLastError(error);
    return nullptr;
}

std::shared_ptr<Handle> findHandle(HANDLE h) {
    std::lock_guard<std::mutex> guard(tableLock);
    auto it = handles.find(h);
    if (it == handles.end())
        return nullptr;
    return it->second;
}

DWORD waitMutex(Mapping& map, DWORD ms) {
    pthread_mutex_t* m = &map.block->owner;
    int rc;
    if (ms == INFINITE) {
        rc = pthread_mutex_lock(m);
    } else if (ms == 0) {
        rc = pthread_mutex_trylock(m);
    } else {
        const timespec deadline = deadlineAfter(ms);
        rc = pthread_mutex_clocklock(m, CLOCK_MONOTONIC, &deadline);
    }
    if (rc == EOWNERDEAD) {
        // The holder died: the mutex is ours, as the next waiter's on Win32 (abandoned).
        pthread_mutex_consistent(m);
        rc = 0;
    }
    if (rc == 0) {
        ++map.held;
        return ZOL_WAIT_ACQUIRED;
    }
    if (rc == ETIMEDOUT || rc == EBUSY)
        return WAIT_TIMEOUT;
    SetLastError(rc == EAGAIN ? ERROR_NOT_ENOUGH_MEMORY : ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
}

DWORD waitEvent(Mapping& map, DWORD ms) {
    SharedBlock* b = map.block;
    MetaLock lock(b);
    if (!lock.locked()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    const timespec deadline = deadlineAfter(ms == INFINITE ? 0 : ms);
    while (b->signalled == 0) {
        if (ms == 0)
            return WAIT_TIMEOUT;
        int rc = ms == INFINITE ? pthread_cond_wait(&b->changed, &b->meta)
                                : pthread_cond_timedwait(&b->changed, &b->meta, &deadline);
        if (rc == EOWNERDEAD) {
            pthread_mutex_consistent(&b->meta);
            rc = 0;
        }
        if (rc == ETIMEDOUT) {
            if (b->signalled != 0)
                break;
            return WAIT_TIMEOUT;
        }
        if (rc != 0) {
            SetLastError(ERROR_INVALID_HANDLE);
            return WAIT_FAILED;
        }
    }
    // An auto-reset event lets exactly one waiter through per SetEvent.
    if (b->manualReset == 0)
        b->signalled = 0;
    return ZOL_WAIT_ACQUIRED;
}

BOOL setEventState(HANDLE hEvent, bool signalled) {
    auto h = findHandle(hEvent);
    if (!h || h->kind != Kind::Event) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    SharedBlock* b = h->map->block;
    MetaLock lock(b);
    if (!lock.locked()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    b->signalled = signalled ? 1 : 0;
    // Every waiter rechecks; for an auto-reset event the first one through resets it.
    if (signalled)
        pthread_cond_broadcast(&b->changed);
    return TRUE;
}

}  // namespace

extern "C" {

HANDLE CreateMutex(const void* /*lpMutexAttributes*/, BOOL bInitialOwner, LPCSTR lpName) {
    return createObject(Kind::Mutex, false, false, bInitialOwner != FALSE, lpName);
}

HANDLE OpenMutex(DWORD /*dwDesiredAccess*/, BOOL /*bInheritHandle*/, LPCSTR lpName) {
    return openObject(Kind::Mutex, lpName);
}

BOOL ReleaseMutex(HANDLE hMutex) {
    auto h = findHandle(hMutex);
    if (!h || h->kind != Kind::Mutex) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    // Only the owning thread may release; pthread reports anyone else with EPERM.
    if (pthread_mutex_unlock(&h->map->block->owner) != 0) {
        SetLastError(ERROR_NOT_OWNER);
        return FALSE;
    }
    --h->map->held;
    return TRUE;
}

HANDLE CreateEvent(const void* /*lpEventAttributes*/, BOOL bManualReset, BOOL bInitialState,
                   LPCSTR lpName) {
    return createObject(Kind::Event, bManualReset != FALSE, bInitialState != FALSE, false, lpName);
}

HANDLE OpenEvent(DWORD /*dwDesiredAccess*/, BOOL /*bInheritHandle*/, LPCSTR lpName) {
    return openObject(Kind::Event, lpName);
}

BOOL SetEvent(HANDLE hEvent) {
    return setEventState(hEvent, true);
}

BOOL ResetEvent(HANDLE hEvent) {
    return setEventState(hEvent, false);
}

DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds) {
    auto h = findHandle(hHandle);
    if (!h) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    return h->kind == Kind::Mutex ? waitMutex(*h->map, dwMilliseconds)
                                  : waitEvent(*h->map, dwMilliseconds);
}

BOOL CloseHandle(HANDLE hObject) {
    std::shared_ptr<Handle> h;
    {
        std::lock_guard<std::mutex> guard(tableLock);
        auto it = handles.find(hObject);
        if (it == handles.end()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        h = std::move(it->second);
        handles.erase(it);
    }
    // Dropped outside the table lock: the last reference unmaps, which takes that lock itself.
    h.reset();
    return TRUE;
}

}  // extern "C"
