// The modem conversation. The line is set raw, 8 data bits, no parity, one stop bit, 115200 bit/s,
// with the modem's control lines ignored (CLOCAL): carrier loss shows as the modem's own
// "NO CARRIER" or a hang-up of the line.
#include "modem.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <thread>

#include "wire.h"

namespace dialsvc {

namespace {

using vntwire::Clock;
using vntwire::Io;

constexpr auto kCommandTime = std::chrono::seconds(5);
constexpr auto kDialTime = std::chrono::seconds(60);
constexpr auto kAnswerTime = std::chrono::seconds(30);
// Silence before and after "+++", so that the modem takes it as the escape to command mode.
constexpr auto kGuardTime = std::chrono::seconds(1);

// The modem's answers to a dial that end the call before it starts: may be tried again.
constexpr std::array<std::string_view, 4> kNoConnection = {"NO CARRIER", "BUSY", "NO ANSWER",
                                                           "NO DIALTONE"};

bool StartsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

Delivery LineFault(std::string text) {
    return {4, std::move(text), true};
}

// The line opened and set raw, or the failure.
vntwire::UniqueFd OpenLine(const std::string& device, Delivery* failure) {
    vntwire::UniqueFd fd(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!fd) {
        *failure =
            LineFault("the modem line " + device + " cannot be opened: " + std::strerror(errno));
        return {};
    }
    termios tio{};
    if (tcgetattr(fd.get(), &tio) != 0) {
        *failure = LineFault(device + " is not a serial line: " + std::strerror(errno));
        return {};
    }
    cfmakeraw(&tio);
    tio.c_cflag |= CLOCAL | CREAD;
    tio.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
    cfsetispeed(&tio, B115200);
    cfsetospeed(&tio, B115200);
    if (tcsetattr(fd.get(), TCSANOW, &tio) != 0) {
        *failure =
            LineFault("the modem line " + device + " cannot be set up: " + std::strerror(errno));
        return {};
    }
    tcflush(fd.get(), TCIOFLUSH);
    return fd;
}

class Modem {
  public:
    Modem(int fd, std::string device) : fd_(fd), reader_(fd), device_(std::move(device)) {}
    ~Modem() {
        if (connected_)
            hangUp();
    }
    Modem(const Modem&) = delete;
    Modem& operator=(const Modem&) = delete;

    // Sends a command that the modem answers with "OK": empty on success, else why not.
    std::string command(const std::string& text) {
        if (vntwire::WriteAll(fd_, text + "\r", Clock::now() + kCommandTime) != Io::Ok)
            return "the modem on " + device_ + " does not take commands";
        return awaitOk(text);
    }

    Delivery dial(bool pulse, const std::string& digits) {
        const std::string command = std::string(pulse ? "ATDP" : "ATDT") + digits;
        if (vntwire::WriteAll(fd_, command + "\r", Clock::now() + kCommandTime) != Io::Ok)
            return {1, "the modem on " + device_ + " does not take commands"};
        const auto deadline = Clock::now() + kDialTime;
        for (std::string line; reader_.next(&line, deadline) == Io::Ok;) {
            if (StartsWith(line, "CONNECT")) {
                connected_ = true;
                return {0, {}};
            }
            for (std::string_view reason : kNoConnection) {
                if (line == reason)
                    return {1, "no connection to " + digits + " (" + line + ")"};
            }
            if (line == "ERROR")
                return {4, "the modem on " + device_ + " refused to dial " + digits};
        }
        return {1, "no connection to " + digits + " (no answer from the modem in time)"};
    }

    Delivery send(const std::string& frame, const std::string& kind);

  private:
    // Reads the modem's answer to what was sent (text names it): empty on "OK", else why not.
    std::string awaitOk(const std::string& text) {
        const auto deadline = Clock::now() + kCommandTime;
        for (std::string line; reader_.next(&line, deadline) == Io::Ok;) {
            if (line == "OK")
                return {};
            if (line == "ERROR")
                return "the modem on " + device_ + " refused " + text;
        }
        return "the modem on " + device_ + " does not answer";
    }

    // The escape to command mode between two guard times, answered "OK", then "ATH".
    void hangUp() {
        connected_ = false;
        std::this_thread::sleep_for(kGuardTime);
        std::string why = "the modem on " + device_ + " does not take commands";
        if (vntwire::WriteAll(fd_, "+++", Clock::now() + kCommandTime) == Io::Ok) {
            std::this_thread::sleep_for(kGuardTime);
            why = awaitOk("+++");
        }
        if (why.empty())
            why = command("ATH");
        if (!why.empty())
            ZOL_TRACE(TRACE_LEVEL_ERROR, "hang-up: %s", why.c_str());
    }

    int fd_;
    vntwire::LineReader reader_;
    std::string device_;
    bool connected_ = false;
};

Delivery Modem::send(const std::string& frame, const std::string& kind) {
    if (vntwire::WriteAll(fd_, frame, Clock::now() + kAnswerTime) != Io::Ok)
        return {1, "the call broke while the report was being sent"};
    std::string line;
    const Io io = reader_.next(&line, Clock::now() + kAnswerTime);
    if (io == Io::TimedOut)
        return {1, "the service centre did not acknowledge the report in time"};
    if (io != Io::Ok || line == "NO CARRIER") {
        connected_ = false;
        return {1, "the call broke before the service centre acknowledged the report"};
    }
    const vntwire::Answer answer = vntwire::ParseAnswer(line);
    if (answer.kind == vntwire::Answer::Kind::Ack && answer.detail == kind)
        return {0, {}};
    if (answer.kind == vntwire::Answer::Kind::Nak)
        return {4, "the service centre refused the report: " + answer.detail.substr(0, 80)};
    return {4,
            "the service centre gave an answer this system does not know: " + line.substr(0, 80)};
}

}  // namespace

std::string DialString(const std::string& number) {
    std::string digits;
    for (const char c : number) {
        if ((c >= '0' && c <= '9') || c == '*' || c == '#' || c == ',')
            digits += c;
    }
    return digits;
}

Delivery DialAndSend(const DialPlan& plan, const std::string& frame, const std::string& kind) {
    const std::string digits = DialString(plan.number);
    if (digits.empty())
        return {4, "the number \"" + plan.number + "\" has nothing a modem can dial"};
    Delivery failure;
    const vntwire::UniqueFd fd = OpenLine(plan.device, &failure);
    if (!fd)
        return failure;
    Modem modem(fd.get(), plan.device);
    for (const char* setup : {"ATZ", "ATE0"}) {
        if (std::string why = modem.command(setup); !why.empty())
            return {1, std::move(why), true};
    }
    if (Delivery dialled = modem.dial(plan.pulse, digits); dialled.result != 0)
        return dialled;
    return modem.send(frame, kind);
}

}  // namespace dialsvc
