// zolctl test: one test report to one destination ID by its method. The remote report service's
// ID goes through rptset.dll's "AMAMVantrelTestReport" (its delivery library decides); the TCP/IP
// methods get a report over TCP to the destination's address and port in the framing of
// docs/zolctl.md; SNMP destinations an SNMPv2c trap through net-snmp.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <iostream>
#include <string>

#include "destination/destination.h"
#include "frame/rptset_calls.h"
#include "zolctl/snmp_trap.h"
#include "zolctl/zolctl.h"

namespace zolctl {

namespace {

constexpr int kTimeoutMs = 5000;

struct Outcome {
    bool sent = false;
    std::string text;  // what happened, for the administrator
};

// A socket closed on every path out.
class Socket {
  public:
    Socket() : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {}
    ~Socket() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    int fd() const { return fd_; }

  private:
    int fd_;
};

bool WaitFor(int fd, short events) {
    pollfd p{fd, events, 0};
    return ::poll(&p, 1, kTimeoutMs) == 1;
}

std::string UtcNow() {
    const std::time_t now = std::time(nullptr);
    std::tm tm{};
    gmtime_r(&now, &tm);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &tm);
    return text;
}

std::string HostName() {
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) != 0)
        return "unknown";
    return name;
}

// The test report in the TCP framing: one header line naming the body's length, then the body.
std::string TcpReport(const Destination& d) {
    const std::string body = "Destination: " + d.id + "\nMethod: " + d.method +
                             "\nHost: " + HostName() + "\nTime: " + UtcNow() +
                             "\nText: Test report from zolctl\n";
    return "ZOLREPORT/1 TEST " + std::to_string(body.size()) + "\n" + body;
}

bool SendAll(int fd, const std::string& data) {
    std::size_t done = 0;
    while (done < data.size()) {
        const ssize_t n = ::send(fd, data.data() + done, data.size() - done, MSG_NOSIGNAL);
        if (n > 0) {
            done += static_cast<std::size_t>(n);
        } else if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            if (!WaitFor(fd, POLLOUT))
                return false;
        } else if (n < 0 && errno != EINTR) {
            return false;
        }
    }
    return true;
}

// The manager's answer, optional: its first line, or empty when it closed or said nothing in
// time.
std::string ReadAnswer(int fd) {
    std::string answer;
    char buffer[256];
    while (answer.find('\n') == std::string::npos && answer.size() < 1024 && WaitFor(fd, POLLIN)) {
        const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        if (n <= 0)
            break;
        answer.append(buffer, static_cast<std::size_t>(n));
    }
    if (const auto end = answer.find_first_of("\r\n"); end != std::string::npos)
        answer.resize(end);
    return answer;
}

Outcome ConnectTo(const Socket& s, const Destination& d) {
    const std::string where = d.address + " port " + std::to_string(d.port);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(static_cast<uint16_t>(d.port));
    if (d.port == 0 || d.port > 65535 ||
        ::inet_pton(AF_INET, d.address.c_str(), &addr.sin_addr) != 1)
        return {false, "not sent: \"" + where + "\" is no IPv4 address and port"};
    if (s.fd() < 0)
        return {false, std::string("not sent: ") + std::strerror(errno)};
    if (::connect(s.fd(), reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 &&
        errno != EINPROGRESS)
        return {false, "not sent: cannot connect to " + where + ": " + std::strerror(errno)};
    int error = 0;
    socklen_t length = sizeof error;
    if (!WaitFor(s.fd(), POLLOUT))
        return {false, "not sent: no connection to " + where + " within 5 seconds"};
    ::getsockopt(s.fd(), SOL_SOCKET, SO_ERROR, &error, &length);
    if (error != 0)
        return {false, "not sent: cannot connect to " + where + ": " + std::strerror(error)};
    return {true, where};
}

Outcome SendTcpReport(const Destination& d) {
    if (d.address.empty())
        return {false, "not sent: the destination has no address"};
    Socket s;
    Outcome connected = ConnectTo(s, d);
    if (!connected.sent)
        return connected;
    if (!SendAll(s.fd(), TcpReport(d)))
        return {false, "not sent: the connection to " + connected.text + " broke off"};
    ::shutdown(s.fd(), SHUT_WR);
    const std::string answer = ReadAnswer(s.fd());
    if (answer.empty())
        return {true, "sent to " + connected.text + " (no acknowledgement)"};
    if (answer.starts_with("OK"))
        return {true, "sent to " + connected.text + ", acknowledged: " + answer};
    return {false, "refused by " + connected.text + ": " + answer};
}

Outcome SendVantrelReport(HMODULE rptset, const Destination& d) {
    std::string reason;
    const LibResult r = SendTestReport(rptset, false, d.id.c_str(), &reason);
    if (r.ok())
        return {true, "sent by the remote report service"};
    if (r.unbound())
        return {false, "not sent: rptset.dll has no AMAMVantrelTestReport"};
    return {false,
            "not sent: " +
                (reason.empty() ? "the library answered " + std::to_string(r.value) : reason)};
}

Outcome SendTest(const Session& s, const Destination& d) {
    switch (ClassifyMethod(d.method)) {
        case DestMethod::Vantrel:
            return SendVantrelReport(s.rptset.get(), d);
        case DestMethod::InBand:
        case DestMethod::OutOfBand:
            return SendTcpReport(d);
        case DestMethod::Snmp: {
            const TrapResult r = SendTestTraps(s.rptset.get(), d);
            return {r.sent, r.text};
        }
        case DestMethod::Other:
            break;
    }
    return {false, "test reports are not offered for the method \"" + d.method + "\""};
}

}  // namespace

int RunTest(const Options& options) {
    Session session;
    if (!OpenSession(session, false))
        return kExitFailure;
    const Destination* d = FindDestination(session.store, ForStore(options.args[0]));
    if (d == nullptr) {
        Complain("no destination ID " + options.args[0]);
        return kExitFailure;
    }
    const Outcome outcome = SendTest(session, *d);
    if (options.json)
        std::cout << "{\"id\":" << JsonString(d->id) << ",\"method\":" << JsonString(d->method)
                  << ",\"sent\":" << (outcome.sent ? "true" : "false")
                  << ",\"outcome\":" << JsonString(outcome.text) << "}\n";
    else
        std::cout << ForTerminal(d->id) << ": " << ForTerminal(outcome.text) << '\n';
    return outcome.sent ? kExitOk : kExitFindings;
}

}  // namespace zolctl
