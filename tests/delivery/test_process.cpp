// The delivery test servers' common parts (test_process.h).
#include "test_process.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <thread>

#include "product_root.h"

namespace deliverytest {

namespace fs = std::filesystem;

namespace {

// The program of that name on PATH; a name with a '/' as it is.
std::string OnPath(const std::string& name) {
    if (name.find('/') != std::string::npos)
        return name;
    const char* path = std::getenv("PATH");
    const std::string dirs = path != nullptr ? path : "/usr/bin:/bin";
    for (std::size_t start = 0; start <= dirs.size();) {
        const std::size_t end = std::min(dirs.find(':', start), dirs.size());
        const fs::path candidate = fs::path(dirs.substr(start, end - start)) / name;
        if (access(candidate.c_str(), X_OK) == 0)
            return candidate.string();
        start = end + 1;
    }
    return name;
}

void MustRun(std::vector<std::string> argv) {
    argv[0] = OnPath(argv[0]);
    const zoltest::RunResult r = zoltest::run(argv, std::map<std::string, std::string>{});
    if (r.status != 0)
        throw std::runtime_error(argv[0] + " " + argv[1] + " failed: " + r.err);
}

sockaddr_in Loopback(uint16_t port) {
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return addr;
}

}  // namespace

TempDir::TempDir() {
    std::string pattern = (fs::temp_directory_path() / "zoldeliv-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ec;
    fs::remove_all(path_, ec);
}

ChildProcess::ChildProcess(const std::vector<std::string>& argv, const fs::path& output) {
    // Everything the child needs is made before the fork: between fork and exec it only makes
    // system calls.
    const std::string program = OnPath(argv.at(0));
    std::vector<char*> args;
    args.push_back(const_cast<char*>(program.c_str()));
    for (std::size_t i = 1; i < argv.size(); ++i)
        args.push_back(const_cast<char*>(argv[i].c_str()));
    args.push_back(nullptr);
    const int out = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (out < 0)
        throw std::runtime_error("cannot write " + output.string());
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        // Dies with the test, whatever way the test ends.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(127);
        setpgid(0, 0);
        if (dup2(out, 1) < 0 || dup2(out, 2) < 0)
            _exit(127);
        execv(args[0], args.data());
        _exit(127);
    }
    close(out);
    if (pid_ < 0)
        throw std::runtime_error("fork failed");
}

bool ChildProcess::running() const {
    return pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == 0;
}

void ChildProcess::Stop() {
    if (pid_ <= 0)
        return;
    kill(-pid_, SIGTERM);
    kill(pid_, SIGTERM);
    for (int i = 0; i < 100; ++i) {
        if (waitpid(pid_, nullptr, WNOHANG) != 0) {
            kill(-pid_, SIGKILL);  // helpers of the server left in its group
            pid_ = -1;
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    kill(-pid_, SIGKILL);
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
}

ChildProcess::~ChildProcess() {
    Stop();
}

uint16_t FreePort() {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in addr = Loopback(0);
    socklen_t size = sizeof addr;
    const bool ok = fd >= 0 && bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0 &&
                    getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &size) == 0;
    if (fd >= 0)
        close(fd);
    if (!ok)
        throw std::runtime_error("no free port");
    return ntohs(addr.sin_port);
}

bool WaitForPort(uint16_t port, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    const sockaddr_in addr = Loopback(port);
    while (std::chrono::steady_clock::now() < end) {
        const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool ok = connect(fd, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) == 0;
        close(fd);
        if (ok)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

TestCa::TestCa() {
    const std::string d = dir_.path().string() + "/";
    const std::vector<std::string> ec = {"-newkey", "ec", "-pkeyopt",
                                         "ec_paramgen_curve:prime256v1", "-nodes"};
    std::vector<std::string> ca = {"openssl", "req", "-x509"};
    ca.insert(ca.end(), ec.begin(), ec.end());
    ca.insert(ca.end(), {"-keyout", d + "ca.key", "-out", d + "ca.pem", "-days", "2", "-subj",
                         "/CN=ZOL delivery test CA", "-addext", "basicConstraints=critical,CA:TRUE",
                         "-addext", "keyUsage=critical,keyCertSign,cRLSign"});
    MustRun(ca);
    std::vector<std::string> csr = {"openssl", "req"};
    csr.insert(csr.end(), ec.begin(), ec.end());
    csr.insert(csr.end(),
               {"-keyout", d + "server.key", "-out", d + "server.csr", "-subj", "/CN=127.0.0.1"});
    MustRun(csr);
    zoltest::writeFile(dir_.path() / "ext.cnf",
                       "subjectAltName=IP:127.0.0.1,DNS:localhost\nbasicConstraints=CA:FALSE\n"
                       "extendedKeyUsage=serverAuth\n");
    MustRun({"openssl", "x509", "-req", "-in", d + "server.csr", "-CA", d + "ca.pem", "-CAkey",
             d + "ca.key", "-CAcreateserial", "-out", d + "server.pem", "-days", "2", "-extfile",
             d + "ext.cnf"});
}

}  // namespace deliverytest
