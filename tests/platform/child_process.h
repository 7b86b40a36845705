// A child process for the platform tests: started with pipes on its standard input and output,
// followed line by line with a time-out, stopped by closing its input or by a signal.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

extern char** environ;

namespace platformtest {

class ChildProcess {
  public:
    explicit ChildProcess(std::vector<std::string> args) {
        std::vector<char*> argv;
        for (auto& a : args)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        int in[2], out[2];
        if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) {
            throw std::runtime_error("pipe failed");
        }
        pid_ = fork();
        if (pid_ < 0)
            throw std::runtime_error("fork failed");
        if (pid_ == 0) {
            dup2(in[0], 0);
            dup2(out[1], 1);
            execve(argv[0], argv.data(), environ);
            _exit(127);
        }
        close(in[0]);
        close(out[1]);
        in_ = in[1];
        out_ = out[0];
    }
    ~ChildProcess() {
        closeInput();
        if (out_ >= 0)
            close(out_);
        if (pid_ > 0 && !reaped_) {
            kill(pid_, SIGKILL);
            wait();
        }
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }

    // The next line the child prints, without its line feed; nullopt after the time-out or at
    // the end of its output.
    std::optional<std::string> readLine(std::chrono::milliseconds timeout) {
        const auto until = std::chrono::steady_clock::now() + timeout;
        for (;;) {
            auto nl = buffer_.find('\n');
            if (nl != std::string::npos) {
                std::string line = buffer_.substr(0, nl);
                buffer_.erase(0, nl + 1);
                return line;
            }
            auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                until - std::chrono::steady_clock::now());
            if (left.count() <= 0)
                return std::nullopt;
            pollfd p{out_, POLLIN, 0};
            int r = poll(&p, 1, static_cast<int>(left.count()));
            if (r < 0 && errno == EINTR)
                continue;
            if (r <= 0)
                return std::nullopt;
            char buf[256];
            ssize_t got = read(out_, buf, sizeof buf);
            if (got <= 0)
                return std::nullopt;
            buffer_.append(buf, static_cast<size_t>(got));
        }
    }

    void closeInput() {
        if (in_ >= 0)
            close(in_);
        in_ = -1;
    }

    void killHard() {
        if (pid_ > 0 && !reaped_)
            kill(pid_, SIGKILL);
    }

    // Exit status, or 128 + signal; waits at most `timeout` (polling), -1 if still running.
    int wait(std::chrono::milliseconds timeout = std::chrono::seconds(10)) {
        const auto until = std::chrono::steady_clock::now() + timeout;
        while (!reaped_) {
            int status = 0;
            pid_t r = waitpid(pid_, &status, WNOHANG);
            if (r == pid_) {
                reaped_ = true;
                status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
                break;
            }
            if (r < 0 && errno != EINTR)
                return -1;
            if (std::chrono::steady_clock::now() >= until)
                return -1;
            usleep(2000);
        }
        return status_;
    }

  private:
    pid_t pid_ = -1;
    int in_ = -1;
    int out_ = -1;
    bool reaped_ = false;
    int status_ = -1;
    std::string buffer_;
};

}  // namespace platformtest
