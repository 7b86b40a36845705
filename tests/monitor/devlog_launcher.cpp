// Runs a program with the system log's socket /dev/log replaced by a socket of the caller's, so
// that a test can read what the program hands to syslog(3) without a system logger and without
// touching the machine: in a mount namespace of its own, /dev becomes a fresh tmpfs holding a
// bind mount of every entry of the real /dev (the terminal's /dev/pts, /dev/null, /dev/shm of
// the named objects, ...) and a link "log" to the caller's socket. Everything lives only as long
// as the namespace, which ends with the program: nothing is left behind on any path.
//
// Usage: devlog_launcher <socket> <program> [arguments...]
// Exits 125 when the namespace cannot be made (not privileged), 127 when the program cannot run.
#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int kCannotIsolate = 125;
constexpr int kCannotRun = 127;

int Fail(const char* what, int code) {
    std::fprintf(stderr, "devlog_launcher: %s: %s\n", what, std::strerror(errno));
    return code;
}

// Recreates one entry of the real /dev (opened as realDev) in the new /dev.
bool Mirror(int realDev, const char* name, unsigned char type) {
    const std::string source = "/proc/self/fd/" + std::to_string(realDev) + "/" + name;
    const std::string target = std::string("/dev/") + name;
    if (type == DT_LNK) {
        std::vector<char> link(4096);
        const ssize_t n = readlinkat(realDev, name, link.data(), link.size() - 1);
        return n >= 0 && symlink(std::string(link.data(), static_cast<std::size_t>(n)).c_str(),
                                 target.c_str()) == 0;
    }
    if (type == DT_DIR) {
        if (mkdir(target.c_str(), 0755) != 0)
            return false;
    } else {
        const int fd = open(target.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        if (fd < 0)
            return false;
        close(fd);
    }
    return mount(source.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0;
}

// Replaces /dev, in this namespace, by a copy whose "log" is the caller's socket.
int IsolateDev(const char* socketPath) {
    if (unshare(CLONE_NEWNS) != 0)
        return Fail("unshare(CLONE_NEWNS)", kCannotIsolate);
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return Fail("making mounts private", kCannotIsolate);
    const int realDev = open("/dev", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (realDev < 0)
        return Fail("open /dev", kCannotIsolate);
    DIR* listing = fdopendir(dup(realDev));
    if (listing == nullptr)
        return Fail("reading /dev", kCannotIsolate);
    if (mount("tmpfs", "/dev", "tmpfs", MS_NOSUID | MS_NOEXEC, "mode=755") != 0)
        return Fail("mounting tmpfs on /dev", kCannotIsolate);
    for (dirent* entry = readdir(listing); entry != nullptr; entry = readdir(listing)) {
        const std::string name = entry->d_name;
        if (name == "." || name == ".." || name == "log")
            continue;
        if (!Mirror(realDev, entry->d_name, entry->d_type))
            std::fprintf(stderr, "devlog_launcher: /dev/%s not mirrored: %s\n", entry->d_name,
                         std::strerror(errno));
    }
    closedir(listing);
    close(realDev);
    if (symlink(socketPath, "/dev/log") != 0)
        return Fail("linking /dev/log", kCannotIsolate);
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: devlog_launcher <socket> <program> [arguments...]\n");
        return 2;
    }
    if (const int rc = IsolateDev(argv[1]); rc != 0)
        return rc;
    execv(argv[2], argv + 2);
    return Fail(argv[2], kCannotRun);
}
