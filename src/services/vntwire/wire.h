// The remote report service's own line protocol and what its transports share: a report frame
// ("ZOLVNT/1 <kind> <length>" and the payload), reads and writes of a descriptor that end at a
// deadline.
#pragma once

#include <zolwin.h>

#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vntwire {

using Clock = std::chrono::steady_clock;

// One open descriptor, closed when it goes.
class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    ~UniqueFd();
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept;
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

  private:
    int fd_ = -1;
};

enum class Io {
    Ok,
    TimedOut,  // the deadline passed first
    Closed,    // the other end closed (or hung up)
    Failed,    // the descriptor failed; errno tells why
};

// Writes every byte before the deadline (the descriptor may be non-blocking).
Io WriteAll(int fd, std::string_view bytes, Clock::time_point deadline);

// Lines of a descriptor, each ended by "\n" with a "\r" before it dropped. Bytes read past a
// line wait for the next call.
class LineReader {
  public:
    explicit LineReader(int fd) : fd_(fd) {}
    // The next non-empty line (at most maxLength bytes; a longer one ends as Failed with
    // EMSGSIZE) before the deadline.
    Io next(std::string* line, Clock::time_point deadline, std::size_t maxLength = 1024);

  private:
    // Moves the first complete non-empty line of pending_ to *line.
    bool takeLine(std::string* line);
    int fd_;
    std::string pending_;
};

// The frame every report goes in over the service's own links:
//   "ZOLVNT/1 <kind> <length>\r\n" then <length> bytes of payload, which are header lines
//   ("Name: value\r\n", the subject among them), an empty line, and the report's body.
// The receiver answers one line: "ACK <kind>" or "NAK <reason>".
std::string Frame(std::string_view kind,
                  const std::vector<std::pair<std::string, std::string>>& fields,
                  std::string_view body);

// The receiver's answer to a frame.
struct Answer {
    enum class Kind { Ack, Nak, Unknown };
    Kind kind = Kind::Unknown;
    std::string detail;  // the kind acknowledged, the reason of a refusal, or the line itself
};
Answer ParseAnswer(std::string_view line);

}  // namespace vntwire
