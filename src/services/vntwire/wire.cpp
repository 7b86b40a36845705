// The service's line protocol and time-limited descriptor reads and writes (wire.h).
#include "wire.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

namespace vntwire {

namespace {

constexpr std::size_t kReadChunk = 512;

int MillisecondsUntil(Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::clamp<long long>(left.count(), 0, 60 * 60 * 1000));
}

// Waits until fd is ready for events before the deadline.
Io WaitFor(int fd, short events, Clock::time_point deadline) {
    for (;;) {
        pollfd p{fd, events, 0};
        const int n = poll(&p, 1, MillisecondsUntil(deadline));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return Io::Failed;
        if (n == 0)
            return Io::TimedOut;
        if ((p.revents & events) != 0)
            return Io::Ok;
        if ((p.revents & POLLHUP) != 0)
            return Io::Closed;
        errno = EIO;
        return Io::Failed;
    }
}

}  // namespace

UniqueFd::~UniqueFd() {
    if (fd_ >= 0)
        close(fd_);
}

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0)
            close(fd_);
        fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
}

Io WriteAll(int fd, std::string_view bytes, Clock::time_point deadline) {
    while (!bytes.empty()) {
        // A socket is written with send so that a peer gone away is an error, never SIGPIPE.
        ssize_t n = send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (n < 0 && errno == ENOTSOCK)
            n = write(fd, bytes.data(), bytes.size());
        if (n > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(n));
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK)
            return errno == EPIPE ? Io::Closed : Io::Failed;
        if (const Io ready = WaitFor(fd, POLLOUT, deadline); ready != Io::Ok)
            return ready;
    }
    return Io::Ok;
}

bool LineReader::takeLine(std::string* line) {
    for (std::size_t end; (end = pending_.find('\n')) != std::string::npos;) {
        std::string found = pending_.substr(0, end);
        pending_.erase(0, end + 1);
        if (!found.empty() && found.back() == '\r')
            found.pop_back();
        if (!found.empty()) {
            *line = std::move(found);
            return true;
        }
    }
    return false;
}

Io LineReader::next(std::string* line, Clock::time_point deadline, std::size_t maxLength) {
    while (!takeLine(line)) {
        if (pending_.size() > maxLength) {
            errno = EMSGSIZE;
            return Io::Failed;
        }
        if (const Io ready = WaitFor(fd_, POLLIN, deadline); ready != Io::Ok)
            return ready;
        char chunk[kReadChunk];
        const ssize_t n = read(fd_, chunk, sizeof chunk);
        if (n == 0)
            return Io::Closed;
        if (n < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK))
            continue;
        if (n < 0)
            return errno == EIO ? Io::Closed : Io::Failed;  // a hung-up terminal reads EIO
        pending_.append(chunk, static_cast<std::size_t>(n));
    }
    return Io::Ok;
}

std::string Frame(std::string_view kind,
                  const std::vector<std::pair<std::string, std::string>>& fields,
                  std::string_view body) {
    std::string payload;
    for (const auto& [name, value] : fields)
        payload.append(name).append(": ").append(value).append("\r\n");
    payload.append("\r\n").append(body);
    std::string frame = "ZOLVNT/1 ";
    frame.append(kind).append(" ").append(std::to_string(payload.size())).append("\r\n");
    frame.append(payload);
    return frame;
}

Answer ParseAnswer(std::string_view line) {
    auto word = [&](std::string_view prefix) {
        return line.size() >= prefix.size() && line.substr(0, prefix.size()) == prefix;
    };
    if (word("ACK ") || line == "ACK")
        return {Answer::Kind::Ack, std::string(line.substr(std::min<std::size_t>(4, line.size())))};
    if (word("NAK ") || line == "NAK")
        return {Answer::Kind::Nak, std::string(line.substr(std::min<std::size_t>(4, line.size())))};
    return {Answer::Kind::Unknown, std::string(line)};
}

}  // namespace vntwire
