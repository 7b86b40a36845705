// Test servers for the HTTPS, via-manager and dial-up deliveries, each started for one test and
// stopped on every exit path: a child process is killed in the destructor and dies with the test
// process anyway (PR_SET_PDEATHSIG). The HTTPS server is Python's http.server with a test CA made
// by openssl at test time; the proxy is tinyproxy with a generated configuration.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "test_process.h"

namespace nettest {

using deliverytest::ChildProcess;
using deliverytest::FreePort;
using deliverytest::TempDir;
using deliverytest::TestCa;
using deliverytest::WaitForPort;

// The HTTPS server of https_server.py, answering every POST with status.
class HttpsServer {
  public:
    HttpsServer(const TestCa& ca, int status = 200);
    int port() const { return port_; }
    std::string url(const std::string& path = "/report") const;
    // The bodies of the POSTs received so far, in order, and the headers of each.
    std::vector<std::string> bodies() const { return posts(".body"); }
    std::vector<std::string> headers() const { return posts(".headers"); }
    // Waits until count POSTs are recorded (the server records just after it answers).
    bool waitForPosts(std::size_t count, int timeoutMs = 5000) const;

  private:
    std::vector<std::string> posts(const char* suffix) const;
    TempDir dir_;
    std::unique_ptr<ChildProcess> process_;
    int port_ = 0;
};

// tinyproxy on 127.0.0.1, in the foreground, logging to a file.
class Tinyproxy {
  public:
    Tinyproxy();
    int port() const { return port_; }
    std::string log() const;

  private:
    TempDir dir_;
    uint16_t port_ = 0;
    std::unique_ptr<ChildProcess> process_;
};

// A manager of the via-manager method on 127.0.0.1: takes one framed report per connection and
// answers with the given line (none: closes without answering).
class ManagerListener {
  public:
    explicit ManagerListener(std::string answer);
    ~ManagerListener();
    ManagerListener(const ManagerListener&) = delete;
    ManagerListener& operator=(const ManagerListener&) = delete;
    int port() const { return port_; }
    // The frames received so far, whole (header line and payload).
    std::vector<std::string> frames() const;

  private:
    void serve();
    int listener_ = -1;
    int port_ = 0;
    std::string answer_;
    std::atomic<bool> stop_{false};
    mutable std::mutex mutex_;
    std::vector<std::string> frames_;
    std::thread thread_;
};

// A Hayes modem played on a pseudo-terminal: the program opens linePath(); the modem answers
// "ATZ", "ATE0" with OK, a dial with dialAnswer ("CONNECT 33600", "NO ANSWER", "BUSY", ...),
// after CONNECT reads one frame and answers "ACK <kind>", and takes "+++" and "ATH".
class FakeModem {
  public:
    explicit FakeModem(std::map<std::string, std::string> dialAnswers,
                       std::string defaultAnswer = "CONNECT 33600");
    ~FakeModem();
    FakeModem(const FakeModem&) = delete;
    FakeModem& operator=(const FakeModem&) = delete;
    std::string linePath() const { return linePath_; }
    // Every command received ("ATZ", "ATDT0312345678", "ATH", ...) and the frames sent.
    std::vector<std::string> commands() const;
    std::vector<std::string> frames() const;

  private:
    void serve();
    bool handleCommand(const std::string& command);
    void readFrame(std::string& pending);
    void say(const std::string& line);
    int master_ = -1;
    int slave_ = -1;  // kept open so that the line never reads as hung up between calls
    std::string linePath_;
    std::map<std::string, std::string> dialAnswers_;
    std::string defaultAnswer_;
    std::atomic<bool> stop_{false};
    mutable std::mutex mutex_;
    std::vector<std::string> commands_, frames_;
    bool online_ = false;
    std::thread thread_;
};

}  // namespace nettest
