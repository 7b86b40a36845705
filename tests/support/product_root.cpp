// Test support: temporary product roots and child processes with captured output.
#include "product_root.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace fs = std::filesystem;

namespace zoltest {

namespace {

fs::path makeTempDir() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/zoltest-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("mkdtemp failed: " + std::string(std::strerror(errno)));
    }
    return pattern;
}

struct Pipe {
    int fd[2] = {-1, -1};
    Pipe() {
        if (pipe2(fd, O_CLOEXEC) != 0)
            throw std::runtime_error("pipe failed");
    }
    ~Pipe() { closeBoth(); }
    void closeEnd(int i) {
        if (fd[i] >= 0)
            close(fd[i]);
        fd[i] = -1;
    }
    void closeBoth() {
        closeEnd(0);
        closeEnd(1);
    }
};

}  // namespace

ProductRoot::ProductRoot(bool initStore) : root_(makeTempDir()) {
    const fs::path stage = ZOL_STAGE_DIR;
    for (const char* dir : {"bin", "lib", "data"}) {
        if (fs::exists(stage / dir)) {
            fs::copy(stage / dir, root_ / dir,
                     fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        }
    }
    fs::create_directories(root_ / "log");
    if (initStore) {
        RunResult r = run({bin("zolreg").string(), "init"}, env());
        if (r.status != 0) {
            throw std::runtime_error("zolreg init failed in " + root_.string() + ": " + r.err);
        }
    }
}

ProductRoot::~ProductRoot() {
    std::error_code ec;
    if (std::getenv("ZOLTEST_KEEP") == nullptr)
        fs::remove_all(root_, ec);
}

std::map<std::string, std::string> ProductRoot::env(
    std::map<std::string, std::string> extra) const {
    extra.emplace("ZolDir", root_.string());
    return extra;
}

RunResult run(const std::vector<std::string>& argv,
              const std::map<std::string, std::optional<std::string>>& env,
              const std::string& input) {
    if (argv.empty())
        throw std::invalid_argument("run: empty argv");

    // Everything the child needs is built before fork: only async-signal-safe calls follow it.
    std::map<std::string, std::string> merged;
    for (char** e = environ; *e != nullptr; ++e) {
        std::string_view kv(*e);
        auto eq = kv.find('=');
        if (eq != std::string_view::npos)
            merged[std::string(kv.substr(0, eq))] = kv.substr(eq + 1);
    }
    for (const auto& [name, value] : env) {
        if (value) {
            merged[name] = *value;
        } else {
            merged.erase(name);
        }
    }
    std::vector<std::string> envStrings;
    for (const auto& [name, value] : merged)
        envStrings.push_back(name + "=" + value);
    std::vector<char*> envp;
    for (auto& s : envStrings)
        envp.push_back(s.data());
    envp.push_back(nullptr);
    std::vector<std::string> args = argv;
    std::vector<char*> argp;
    for (auto& a : args)
        argp.push_back(a.data());
    argp.push_back(nullptr);

    Pipe in, out, err;
    pid_t pid = fork();
    if (pid < 0)
        throw std::runtime_error("fork failed");
    if (pid == 0) {
        dup2(in.fd[0], 0);
        dup2(out.fd[1], 1);
        dup2(err.fd[1], 2);
        execve(argp[0], argp.data(), envp.data());
        const char msg[] = "exec failed\n";
        ssize_t ignored = write(2, msg, sizeof msg - 1);
        (void)ignored;
        _exit(127);
    }
    in.closeEnd(0);
    out.closeEnd(1);
    err.closeEnd(1);

    RunResult result;
    size_t written = 0;
    if (input.empty())
        in.closeEnd(1);
    while (out.fd[0] >= 0 || err.fd[0] >= 0) {
        std::array<pollfd, 3> fds{};
        nfds_t n = 0;
        int outIdx = -1, errIdx = -1, inIdx = -1;
        if (out.fd[0] >= 0)
            fds[outIdx = n++] = {out.fd[0], POLLIN, 0};
        if (err.fd[0] >= 0)
            fds[errIdx = n++] = {err.fd[0], POLLIN, 0};
        if (in.fd[1] >= 0)
            fds[inIdx = n++] = {in.fd[1], POLLOUT, 0};
        if (poll(fds.data(), n, -1) < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        char buf[4096];
        auto drain = [&](int idx, Pipe& p, std::string& sink) {
            if (idx < 0 || fds[idx].revents == 0)
                return;
            ssize_t got = read(p.fd[0], buf, sizeof buf);
            if (got > 0) {
                sink.append(buf, static_cast<size_t>(got));
            } else if (got == 0 || errno != EINTR) {
                p.closeEnd(0);
            }
        };
        drain(outIdx, out, result.out);
        drain(errIdx, err, result.err);
        if (inIdx >= 0 && fds[inIdx].revents != 0) {
            ssize_t put = write(in.fd[1], input.data() + written, input.size() - written);
            if (put > 0)
                written += static_cast<size_t>(put);
            if (put < 0 || written == input.size())
                in.closeEnd(1);
        }
    }
    in.closeEnd(1);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

RunResult run(const std::vector<std::string>& argv, const std::map<std::string, std::string>& env,
              const std::string& input) {
    std::map<std::string, std::optional<std::string>> optEnv(env.begin(), env.end());
    return run(argv, optEnv, input);
}

ScopedEnv::ScopedEnv(std::string name, std::optional<std::string> value) : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str()))
        old_ = old;
    if (value) {
        setenv(name_.c_str(), value->c_str(), 1);
    } else {
        unsetenv(name_.c_str());
    }
}

ScopedEnv::~ScopedEnv() {
    if (old_) {
        setenv(name_.c_str(), old_->c_str(), 1);
    } else {
        unsetenv(name_.c_str());
    }
}

std::string readFile(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void writeFile(const fs::path& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out)
        throw std::runtime_error("cannot write " + file.string());
}

}  // namespace zoltest
