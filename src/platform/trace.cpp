// The trace log: one line per call appended to $ZolDir/log/<program>.trace. Each line goes out
// in a single write(2) on an O_APPEND descriptor, so lines from several processes never mix;
// any failure drops the line silently, because tracing must never disturb the program.
#include <fcntl.h>
#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>

#include "zolwin.h"
#include "zolwin_private.h"

namespace {

// Longest line written, line feed included; longer texts are cut and marked.
constexpr size_t kMaxLine = 4096;
constexpr char kCutMarker[] = " [...]";

// When the log could not be opened, try again at most this often (seconds), so a missing
// folder costs one failed open per interval rather than one per line.
constexpr time_t kReopenInterval = 1;

struct TraceState {
    std::mutex lock;
    bool initialised = false;  // until TraceLogInit, lines go nowhere
    int maxLevel = TRACE_LEVEL_INFO;
    std::string path;
    int fd = -1;
    time_t lastOpenAttempt = 0;

    void openLog() {
        if (fd >= 0)
            close(fd);
        fd = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0640);
        lastOpenAttempt = time(nullptr);
    }
};

// Never destroyed: libraries and static destructors may still trace while the process exits.
TraceState& state() {
    static TraceState* s = new TraceState;
    return *s;
}

// The process id of every line, asked once rather than once a line (a system call each: a
// start-up writes some eighty lines); a child of fork() asks again.
std::atomic<pid_t> cachedPid{0};

pid_t tracePid() {
    pid_t pid = cachedPid.load(std::memory_order_relaxed);
    if (pid == 0) {
        static const bool forgetsAfterFork = pthread_atfork(nullptr, nullptr, [] {
                                                 cachedPid.store(0, std::memory_order_relaxed);
                                             }) == 0;
        pid = getpid();
        if (forgetsAfterFork)
            cachedPid.store(pid, std::memory_order_relaxed);
    }
    return pid;
}

// The unit as the caller names it: ZOL_TRACE passes its path below src/ ("frame/menu.cpp",
// "services/rptset/basesetting.cpp"), which tells apart units that share a file name.
const char* unitName(const char* file) {
    return file == nullptr || *file == '\0' ? "?" : file;
}

// "2026-11-21 05:04:17.123 [12345] L1 frame/menu.cpp:EditParameter:123 "
std::string linePrefix(int level, const char* file, const char* function, int line) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    std::array<char, 32> stamp{};
    strftime(stamp.data(), stamp.size(), "%Y-%m-%d %H:%M:%S", &local);
    std::array<char, 96> head{};
    snprintf(head.data(), head.size(), "%s.%03ld [%ld] L%d ", stamp.data(),
             static_cast<long>(now.tv_nsec / 1000000), static_cast<long>(tracePid()), level);
    std::string prefix = head.data();
    prefix += unitName(file);
    prefix += ':';
    prefix += function != nullptr && *function != '\0' ? function : "?";
    prefix += ':';
    prefix += std::to_string(line);
    prefix += ' ';
    return prefix;
}

std::string formatText(const char* format, va_list args) {
    if (format == nullptr)
        return {};
    va_list measure;
    va_copy(measure, args);
    int needed = vsnprintf(nullptr, 0, format, measure);
    va_end(measure);
    if (needed <= 0)
        return {};
    std::string text(static_cast<size_t>(needed), '\0');
    vsnprintf(text.data(), text.size() + 1, format, args);
    return text;
}

// Appends the text with line breaks made visible, so that one call stays one line.
void appendOneLine(std::string& out, const std::string& text) {
    for (char c : text) {
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else {
            out.push_back(c);
        }
    }
}

}  // namespace

extern "C" {

int TraceLogInit(int /*reserved1*/, LPCSTR program, int /*reserved2*/, int maxLevel,
                 int /*reserved3*/) {
    const int savedErrno = errno;
    TraceState& s = state();
    std::lock_guard<std::mutex> guard(s.lock);
    std::string name = program != nullptr && *program != '\0' ? program : "<unknown>";
    // The program name becomes a file name: keep it inside the log folder.
    for (char& c : name) {
        if (c == '/')
            c = '_';
    }
    s.path = zolwin::productRoot() + "/log/" + name + ".trace";
    s.maxLevel = maxLevel;
    s.initialised = true;
    s.openLog();
    errno = savedErrno;
    return 0;
}

void TraceLog(int level, LPCSTR file, LPCSTR function, int line, LPCSTR format, ...) {
    TraceState& s = state();
    {
        std::lock_guard<std::mutex> guard(s.lock);
        if (!s.initialised || level > s.maxLevel)
            return;
    }
    const int savedErrno = errno;  // callers trace and then report errno
    std::string out = linePrefix(level, file, function, line);
    va_list args;
    va_start(args, format);
    appendOneLine(out, formatText(format, args));
    va_end(args);
    if (out.size() + 1 > kMaxLine) {
        out.resize(kMaxLine - 1 - (sizeof kCutMarker - 1));
        out += kCutMarker;
    }
    out.push_back('\n');

    std::lock_guard<std::mutex> guard(s.lock);
    if (s.fd < 0 && time(nullptr) - s.lastOpenAttempt >= kReopenInterval)
        s.openLog();
    if (s.fd >= 0) {
        ssize_t written = write(s.fd, out.data(), out.size());
        (void)written;  // a lost trace line is not the program's problem
    }
    errno = savedErrno;
}

}  // extern "C"
