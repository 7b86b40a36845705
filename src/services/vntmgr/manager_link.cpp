// One report to the manager: connect (time-limited), the frame, and the manager's answer line.
#include "manager_link.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "wire.h"

namespace vntmgr {

namespace {

using vntwire::Clock;
using vntwire::Io;

constexpr auto kConnectTime = std::chrono::seconds(10);
constexpr auto kAnswerTime = std::chrono::seconds(30);
constexpr std::size_t kShownAnswer = 80;  // of an answer that is no answer, in the error text

std::string Where(const ManagerTarget& t) {
    return t.address + " port " + std::to_string(t.port);
}

Delivery Retry(std::string text) {
    return {1, std::move(text)};
}
Delivery Refused(std::string text) {
    return {4, std::move(text)};
}

bool RetryableConnectError(int error) {
    return error == ECONNREFUSED || error == ETIMEDOUT || error == ENETUNREACH ||
           error == EHOSTUNREACH || error == ECONNRESET;
}

// A connected socket, or the failure as a delivery outcome.
vntwire::UniqueFd Connect(const ManagerTarget& target, Delivery* failure) {
    sockaddr_in peer{};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(static_cast<uint16_t>(target.port));
    if (target.port == 0 || target.port > 65535 ||
        inet_pton(AF_INET, target.address.c_str(), &peer.sin_addr) != 1) {
        *failure = Refused("the manager's address " + Where(target) + " is not valid");
        return {};
    }
    vntwire::UniqueFd fd(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!fd) {
        *failure = Retry(std::string("no socket for the manager: ") + std::strerror(errno));
        return {};
    }
    int error = 0;
    if (connect(fd.get(), reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0) {
        error = errno;
        if (error == EINPROGRESS) {
            pollfd p{fd.get(), POLLOUT, 0};
            const int waitMs = static_cast<int>(std::chrono::milliseconds(kConnectTime).count());
            int n;
            while ((n = poll(&p, 1, waitMs)) < 0 && errno == EINTR) {
            }
            socklen_t size = sizeof error;
            if (n == 0)
                error = ETIMEDOUT;
            else if (n < 0 || getsockopt(fd.get(), SOL_SOCKET, SO_ERROR, &error, &size) != 0)
                error = errno;
        }
    }
    if (error == 0)
        return fd;
    const std::string text =
        "the manager at " + Where(target) + " cannot be reached (" + std::strerror(error) + ")";
    *failure = RetryableConnectError(error) ? Retry(text) : Refused(text);
    return {};
}

Delivery ReadAnswer(int fd, const ManagerTarget& target, const std::string& kind) {
    vntwire::LineReader reader(fd);
    std::string line;
    switch (reader.next(&line, Clock::now() + kAnswerTime)) {
        case Io::Ok:
            break;
        case Io::TimedOut:
            return Retry("the manager at " + Where(target) +
                         " did not acknowledge the report in time");
        case Io::Closed:
            return Retry("the manager at " + Where(target) +
                         " closed the connection without acknowledging the report");
        case Io::Failed:
            return Retry("the connection to the manager at " + Where(target) +
                         " failed: " + std::strerror(errno));
    }
    const vntwire::Answer answer = vntwire::ParseAnswer(line);
    if (answer.kind == vntwire::Answer::Kind::Ack && answer.detail == kind)
        return {0, {}};
    if (answer.kind == vntwire::Answer::Kind::Nak)
        return Refused("the manager refused the report: " + answer.detail.substr(0, kShownAnswer));
    return Refused("the manager gave an answer this system does not know: " +
                   line.substr(0, kShownAnswer));
}

}  // namespace

Delivery SendToManager(const ManagerTarget& target, const std::string& frame,
                       const std::string& kind) {
    Delivery failure;
    const vntwire::UniqueFd fd = Connect(target, &failure);
    if (!fd)
        return failure;
    switch (vntwire::WriteAll(fd.get(), frame, Clock::now() + kAnswerTime)) {
        case Io::Ok:
            return ReadAnswer(fd.get(), target, kind);
        case Io::TimedOut:
            return Retry("the manager at " + Where(target) + " did not take the report in time");
        case Io::Closed:
        case Io::Failed:
            break;
    }
    return Retry("the connection to the manager at " + Where(target) +
                 " broke: " + std::strerror(errno));
}

}  // namespace vntmgr
