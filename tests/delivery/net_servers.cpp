// The delivery tests' servers (net_servers.h).
#include "net_servers.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <pty.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

#include "product_root.h"

namespace fs = std::filesystem;

namespace nettest {

namespace {

using Clock = std::chrono::steady_clock;

void Sleep(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

// Reads what a socket or terminal has now (up to a short wait) onto buffer; false at its end.
bool ReadSome(int fd, std::string& buffer, int waitMs) {
    pollfd p{fd, POLLIN, 0};
    if (poll(&p, 1, waitMs) <= 0)
        return true;
    char chunk[512];
    const ssize_t n = read(fd, chunk, sizeof chunk);
    if (n <= 0)
        return n < 0 && (errno == EAGAIN || errno == EINTR);
    buffer.append(chunk, static_cast<std::size_t>(n));
    return true;
}

// The length announced by a frame's header line "ZOLVNT/1 <kind> <length>", or -1.
long FrameLength(const std::string& header, std::string* kind) {
    const std::size_t first = header.find(' ');
    const std::size_t second = header.find(' ', first + 1);
    if (header.rfind("ZOLVNT/1 ", 0) != 0 || second == std::string::npos)
        return -1;
    *kind = header.substr(first + 1, second - first - 1);
    return std::strtol(header.c_str() + second + 1, nullptr, 10);
}

// Takes one whole frame off the front of buffer, when it is all there.
bool TakeFrame(std::string& buffer, std::string* frame, std::string* kind) {
    const std::size_t end = buffer.find("\r\n");
    if (end == std::string::npos)
        return false;
    const long length = FrameLength(buffer.substr(0, end), kind);
    if (length < 0 || buffer.size() < end + 2 + static_cast<std::size_t>(length))
        return false;
    *frame = buffer.substr(0, end + 2 + static_cast<std::size_t>(length));
    buffer.erase(0, frame->size());
    return true;
}

}  // namespace

HttpsServer::HttpsServer(const TestCa& ca, int status) {
    const fs::path script = fs::path(ZOL_SOURCE_DIR) / "tests" / "delivery" / "https_server.py";
    const fs::path portFile = dir_.path() / "port";
    fs::create_directories(dir_.path() / "posts");
    process_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"python3", script.string(), ca.serverCert().string(),
                                 ca.serverKey().string(), (dir_.path() / "posts").string(),
                                 portFile.string(), std::to_string(status)},
        dir_.path() / "server.log");
    const auto deadline = Clock::now() + std::chrono::seconds(15);
    while (!fs::exists(portFile) && Clock::now() < deadline && process_->running())
        Sleep(20);
    if (!fs::exists(portFile))
        throw std::runtime_error("the HTTPS test server did not start: " +
                                 zoltest::readFile(dir_.path() / "server.log"));
    port_ = std::stoi(zoltest::readFile(portFile));
}

std::string HttpsServer::url(const std::string& path) const {
    return "https://127.0.0.1:" + std::to_string(port_) + path;
}

std::vector<std::string> HttpsServer::posts(const char* suffix) const {
    std::vector<std::string> all;
    for (fs::path file;
         fs::exists(file = dir_.path() / "posts" / (std::to_string(all.size() + 1) + suffix));)
        all.push_back(zoltest::readFile(file));
    return all;
}

bool HttpsServer::waitForPosts(std::size_t count, int timeoutMs) const {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (bodies().size() < count && Clock::now() < deadline)
        Sleep(10);
    return bodies().size() >= count;
}

Tinyproxy::Tinyproxy() : port_(FreePort()) {
    const fs::path config = dir_.path() / "tinyproxy.conf";
    zoltest::writeFile(config, "Port " + std::to_string(port_) +
                                   "\nListen 127.0.0.1\nTimeout 30\nLogFile \"" +
                                   (dir_.path() / "tinyproxy.log").string() +
                                   "\"\nLogLevel Info\nMaxClients 10\nAllow 127.0.0.1\n");
    process_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"tinyproxy", "-d", "-c", config.string()},
        dir_.path() / "tinyproxy.out");
    if (!WaitForPort(port_))
        throw std::runtime_error("tinyproxy did not start: " +
                                 zoltest::readFile(dir_.path() / "tinyproxy.out"));
}

std::string Tinyproxy::log() const {
    const fs::path file = dir_.path() / "tinyproxy.log";
    return fs::exists(file) ? zoltest::readFile(file) : std::string();
}

ManagerListener::ManagerListener(std::string answer) : answer_(std::move(answer)) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof a;
    if (listener_ < 0 || bind(listener_, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 ||
        listen(listener_, 4) != 0 ||
        getsockname(listener_, reinterpret_cast<sockaddr*>(&a), &size) != 0)
        throw std::runtime_error("the manager listener cannot listen");
    port_ = ntohs(a.sin_port);
    thread_ = std::thread([this] { serve(); });
}

ManagerListener::~ManagerListener() {
    stop_ = true;
    thread_.join();
    close(listener_);
}

void ManagerListener::serve() {
    while (!stop_) {
        pollfd p{listener_, POLLIN, 0};
        if (poll(&p, 1, 50) <= 0)
            continue;
        const int fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0)
            continue;
        std::string buffer, frame, kind;
        const auto deadline = Clock::now() + std::chrono::seconds(5);
        while (!TakeFrame(buffer, &frame, &kind) && Clock::now() < deadline && !stop_) {
            if (!ReadSome(fd, buffer, 50))
                break;
        }
        {
            const std::lock_guard lock(mutex_);
            frames_.push_back(frame.empty() ? buffer : frame);
        }
        if (!answer_.empty()) {
            const std::string line = answer_ + "\r\n";
            (void)!write(fd, line.data(), line.size());
        }
        close(fd);
    }
}

std::vector<std::string> ManagerListener::frames() const {
    const std::lock_guard lock(mutex_);
    return frames_;
}

FakeModem::FakeModem(std::map<std::string, std::string> dialAnswers, std::string defaultAnswer)
    : dialAnswers_(std::move(dialAnswers)), defaultAnswer_(std::move(defaultAnswer)) {
    char name[256] = {};
    termios raw{};
    cfmakeraw(&raw);
    if (openpty(&master_, &slave_, name, &raw, nullptr) != 0)
        throw std::runtime_error("openpty failed");
    fcntl(master_, F_SETFD, FD_CLOEXEC);
    fcntl(slave_, F_SETFD, FD_CLOEXEC);
    linePath_ = name;
    thread_ = std::thread([this] { serve(); });
}

FakeModem::~FakeModem() {
    stop_ = true;
    thread_.join();
    close(slave_);
    close(master_);
}

void FakeModem::say(const std::string& line) {
    const std::string out = "\r\n" + line + "\r\n";
    (void)!write(master_, out.data(), out.size());
}

// Answers one command line; false when it was a dial that connected.
bool FakeModem::handleCommand(const std::string& command) {
    {
        const std::lock_guard lock(mutex_);
        commands_.push_back(command);
    }
    if (command.rfind("ATD", 0) == 0 && command.size() > 4) {
        const auto it = dialAnswers_.find(command.substr(4));
        const std::string answer = it != dialAnswers_.end() ? it->second : defaultAnswer_;
        say(answer);
        return answer.rfind("CONNECT", 0) != 0;
    }
    say(command.rfind("AT", 0) == 0 ? "OK" : "ERROR");
    return true;
}

void FakeModem::readFrame(std::string& pending) {
    if (pending.rfind("+++", 0) == 0) {
        pending.erase(0, 3);
        online_ = false;
        say("OK");
        return;
    }
    std::string frame, kind;
    if (TakeFrame(pending, &frame, &kind)) {
        {
            const std::lock_guard lock(mutex_);
            frames_.push_back(frame);
        }
        say("ACK " + kind);
    }
}

void FakeModem::serve() {
    std::string pending;
    while (!stop_) {
        ReadSome(master_, pending, 50);
        if (online_) {
            readFrame(pending);
            continue;
        }
        for (std::size_t end; (end = pending.find('\r')) != std::string::npos;) {
            std::string command = pending.substr(0, end);
            pending.erase(0, end + 1);
            command.erase(std::remove(command.begin(), command.end(), '\n'), command.end());
            if (!command.empty() && !handleCommand(command)) {
                online_ = true;
                break;
            }
        }
    }
}

std::vector<std::string> FakeModem::commands() const {
    const std::lock_guard lock(mutex_);
    return commands_;
}

std::vector<std::string> FakeModem::frames() const {
    const std::lock_guard lock(mutex_);
    return frames_;
}

}  // namespace nettest
