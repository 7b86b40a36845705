// What every delivery test server is made of: a temporary folder, a child process that dies with
// the test (PR_SET_PDEATHSIG) and is stopped and reaped when its object goes, loopback ports, and
// a test CA with a server certificate for 127.0.0.1 and localhost.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace deliverytest {

// A temporary folder, removed with everything in it.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

// A program run in its own process group, its output to a file: started by the constructor
// (argv[0] looked up on PATH when it has no '/'), terminated, then killed, with its group, by
// Stop or the destructor.
class ChildProcess {
  public:
    ChildProcess(const std::vector<std::string>& argv, const std::filesystem::path& output);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    bool running() const;
    void Stop();

  private:
    pid_t pid_ = -1;
};

// A TCP port on 127.0.0.1 nobody listens on now.
uint16_t FreePort();
// True once something accepts connections on 127.0.0.1:port.
bool WaitForPort(uint16_t port, std::chrono::milliseconds limit = std::chrono::seconds(15));

// A certificate authority and a server certificate it signed for 127.0.0.1 and localhost, made
// by openssl in a folder of their own.
class TestCa {
  public:
    TestCa();
    std::filesystem::path caCert() const { return dir_.path() / "ca.pem"; }
    std::filesystem::path serverCert() const { return dir_.path() / "server.pem"; }
    std::filesystem::path serverKey() const { return dir_.path() / "server.key"; }

  private:
    TempDir dir_;
};

}  // namespace deliverytest
