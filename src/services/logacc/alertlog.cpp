// Alert-log lines and files.
#include "alertlog.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <zolwin.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>
#include <vector>

namespace logacc {

namespace {

constexpr char kSeparator = '\t';
constexpr std::size_t kDestField = 3;
constexpr std::size_t kGroupField = 4;
constexpr std::string_view kLogSuffix = ".log";

bool EqualsNoCase(std::string_view a, std::string_view b) {
    auto lower = [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; };
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [&](char x, char y) {
               return lower(static_cast<unsigned char>(x)) == lower(static_cast<unsigned char>(y));
           });
}

// Field `index` of line, or nothing when the line has fewer fields.
bool Field(std::string_view line, std::size_t index, std::string_view* out) {
    for (std::size_t i = 0; i < index; ++i) {
        const std::size_t tab = line.find(kSeparator);
        if (tab == std::string_view::npos)
            return false;
        line.remove_prefix(tab + 1);
    }
    *out = line.substr(0, line.find(kSeparator));
    return true;
}

bool Matches(std::string_view line, std::string_view id, std::string_view gid) {
    std::string_view field;
    if (!id.empty() && Field(line, kDestField, &field) && EqualsNoCase(field, id))
        return true;
    return !gid.empty() && Field(line, kGroupField, &field) && EqualsNoCase(field, gid);
}

// Owns a file descriptor.
class Fd {
  public:
    explicit Fd(int fd = -1) : fd_(fd) {}
    ~Fd() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd_; }
    // Closes now and reports whether the close succeeded (a late write error shows here).
    bool Close() {
        const int fd = std::exchange(fd_, -1);
        return fd < 0 || ::close(fd) == 0;
    }

  private:
    int fd_;
};

// Holds the folder's lock file locked for the scope: writers and the rewrite never overlap.
class FolderLock {
  public:
    explicit FolderLock(const std::string& folder)
        : fd_(::open((folder + "/.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        locked_ = fd_.get() >= 0 && ::flock(fd_.get(), LOCK_EX) == 0;
    }
    bool locked() const { return locked_; }

  private:
    Fd fd_;
    bool locked_ = false;
};

bool WriteAll(int fd, std::string_view data) {
    while (!data.empty()) {
        const ssize_t n = ::write(fd, data.data(), data.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

bool ReadAll(const std::string& path, std::string* out, mode_t* mode) {
    Fd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat st {};
    if (fd.get() < 0 || ::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode))
        return false;
    *mode = st.st_mode & 07777;
    out->clear();
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return false;
        if (n == 0)
            return true;
        out->append(buffer, static_cast<std::size_t>(n));
    }
}

// Replaces path by content: a temporary file beside it, synced, renamed over it. A crash
// leaves the old file or the new one.
bool Replace(const std::string& folder, const std::string& name, const std::string& content,
             mode_t mode) {
    const std::string temp = folder + "/." + name + ".tmp";
    ::unlink(temp.c_str());  // left by a crash
    Fd fd(::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (fd.get() < 0)
        return false;
    const bool written = WriteAll(fd.get(), content) && ::fsync(fd.get()) == 0 && fd.Close();
    if (!written || ::rename(temp.c_str(), (folder + "/" + name).c_str()) != 0) {
        ::unlink(temp.c_str());
        return false;
    }
    return true;
}

// Names of the "*.log" entries of folder; false when the folder cannot be listed.
bool LogNames(const std::string& folder, std::vector<std::string>* names) {
    DIR* dir = ::opendir(folder.c_str());
    if (dir == nullptr)
        return false;
    while (const dirent* entry = ::readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name.size() > kLogSuffix.size() && name.front() != '.' &&
            name.substr(name.size() - kLogSuffix.size()) == kLogSuffix) {
            names->emplace_back(name);
        }
    }
    ::closedir(dir);
    return true;
}

}  // namespace

bool FieldOk(std::string_view text) {
    return text.size() <= kMaxField && text.find_first_of("\t\r\n") == std::string_view::npos;
}

std::string FormatLine(const AlertEntry& entry, std::time_t when) {
    std::tm local{};
    localtime_r(&when, &local);
    char time[32];
    std::strftime(time, sizeof time, "%Y-%m-%d %H:%M:%S", &local);
    std::string line = time;
    for (const std::string* field :
         {&entry.source, &entry.eventID, &entry.destID, &entry.groupID}) {
        line += kSeparator;
        line += *field;
    }
    // snprintf rather than std::to_string, whose digit table GCC exports as a unique symbol
    // that would keep the library from being unloaded.
    char result[16];
    std::snprintf(result, sizeof result, "\t%d\n", entry.result);
    return line + result;
}

std::string RemoveEntries(std::string_view content, std::string_view id, std::string_view gid) {
    std::string kept;
    kept.reserve(content.size());
    while (!content.empty()) {
        const std::size_t end = content.find('\n');
        const std::size_t length = end == std::string_view::npos ? content.size() : end + 1;
        const std::string_view line = content.substr(0, length);
        if (!Matches(line.substr(0, end), id, gid))
            kept.append(line);
        content.remove_prefix(length);
    }
    return kept;
}

std::string LogFolder() {
    char root[4096];
    if (!GetZolRootPath(root, sizeof root))
        return {};
    return std::string(root) + "/log/alert";
}

std::string LogName(std::time_t when) {
    std::tm local{};
    localtime_r(&when, &local);
    char name[32];
    std::strftime(name, sizeof name, "alert-%Y%m%d.log", &local);
    return name;
}

bool Append(const std::string& folder, const AlertEntry& entry, std::time_t when) {
    if (::mkdir(folder.c_str(), 0750) != 0 && errno != EEXIST)
        return false;
    FolderLock lock(folder);
    if (!lock.locked())
        return false;
    Fd fd(::open((folder + "/" + LogName(when)).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC,
                 0640));
    return fd.get() >= 0 && WriteAll(fd.get(), FormatLine(entry, when)) && fd.Close();
}

bool RemoveFromAll(const std::string& folder, std::string_view id, std::string_view gid) {
    struct stat st {};
    if (::stat(folder.c_str(), &st) != 0 && errno == ENOENT)
        return true;  // no log yet: none holds the ID
    FolderLock lock(folder);
    std::vector<std::string> names;
    if (!lock.locked() || !LogNames(folder, &names))
        return false;

    struct Rewrite {
        std::string name;
        std::string content;
        mode_t mode;
    };
    std::vector<Rewrite> rewrites;
    for (const std::string& name : names) {
        std::string content;
        mode_t mode = 0;
        if (!ReadAll(folder + "/" + name, &content, &mode)) {
            ZOL_TRACE(TRACE_LEVEL_FAILURE, "alert log %s cannot be read.", name.c_str());
            return false;
        }
        std::string kept = RemoveEntries(content, id, gid);
        if (kept.size() != content.size())
            rewrites.push_back({name, std::move(kept), mode});
    }
    for (const Rewrite& r : rewrites) {
        if (!Replace(folder, r.name, r.content, r.mode)) {
            ZOL_TRACE(TRACE_LEVEL_FAILURE, "alert log %s cannot be rewritten.", r.name.c_str());
            return false;
        }
    }
    // The renames are durable once the folder is.
    Fd dir(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return dir.get() >= 0 && ::fsync(dir.get()) == 0;
}

}  // namespace logacc
