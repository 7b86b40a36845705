// A helper process the test talks to while it runs: a program, or a function in a fork of this
// process. Its output is read line by line with a time-out; closing its input tells it to
// finish, SIGKILL ends it at once.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

extern char** environ;

namespace platformtest {

class ChildProcess {
  public:
    // Runs body in a fork, with the pipes as its standard input and output; its result is the
    // exit status.
    explicit ChildProcess(const std::function<int()>& body) { start(body); }
    explicit ChildProcess(std::vector<std::string> args) : args_(std::move(args)) {
        for (auto& a : args_)
            argv_.push_back(a.data());
        argv_.push_back(nullptr);
        start([this] { return execve(argv_[0], argv_.data(), environ), 127; });
    }
    ~ChildProcess() {
        closeInput();
        close(out_);
        killNow();
        wait();
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The next line of output, or nullopt after timeoutMs or at its end.
    std::optional<std::string> readLine(int timeoutMs = 10000) {
        std::string line;
        for (char c = 0; c != '\n'; line.push_back(c)) {
            pollfd p{out_, POLLIN, 0};
            if (poll(&p, 1, timeoutMs) != 1 || read(out_, &c, 1) != 1)
                return std::nullopt;
        }
        line.pop_back();
        return line;
    }
    void closeInput() {
        if (in_ >= 0)
            close(in_);
        in_ = -1;
    }
    // Waits for the end: exit status, or 128 + signal.
    int wait() {
        int status = 0;
        if (pid_ > 0 && waitpid(pid_, &status, 0) == pid_)
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        pid_ = -1;
        return status_;
    }
    void killNow() {
        if (pid_ > 0)
            kill(pid_, SIGKILL);
    }

  private:
    void start(const std::function<int()>& body) {
        int in[2] = {-1, -1}, out[2] = {-1, -1};
        if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0)
            return;
        std::fflush(nullptr);
        pid_ = fork();
        if (pid_ == 0) {
            dup2(in[0], 0);
            dup2(out[1], 1);
            for (int fd : {in[0], in[1], out[0], out[1]})
                close(fd);
            _exit(body());
        }
        close(in[0]);
        close(out[1]);
        in_ = in[1];
        out_ = out[0];
    }

    std::vector<std::string> args_;
    std::vector<char*> argv_;
    pid_t pid_ = -1;
    int in_ = -1, out_ = -1, status_ = -1;
};

}  // namespace platformtest
