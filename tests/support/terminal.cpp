// The pseudo-terminal test harness: forkpty, a non-blocking read of the master side fed into
// libvterm, and the screen read back cell by cell.
#include "terminal.h"

#include <vterm.h>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <thread>

extern char** environ;

namespace zoltest {

struct Terminal::Emulator {
    struct Free {
        void operator()(VTerm* term) const { vterm_free(term); }
    };
    std::unique_ptr<VTerm, Free> vt;
    VTermScreen* screen = nullptr;
    std::string answers;  // replies to the program's queries (device attributes, cursor report)

    Emulator(int rows, int cols) : vt(vterm_new(rows, cols)) {
        if (!vt) {
            throw std::runtime_error("vterm_new failed");
        }
        vterm_set_utf8(vt.get(), 1);
        vterm_output_set_callback(
            vt.get(),
            [](const char* s, size_t len, void* user) {
                static_cast<Emulator*>(user)->answers.append(s, len);
            },
            this);
        screen = vterm_obtain_screen(vt.get());
        // newt switches to the alternate screen and back, as on a real xterm; what the program
        // prints after newtFinished then lands on the normal screen.
        vterm_screen_enable_altscreen(screen, 1);
        vterm_screen_reset(screen, 1);
    }
};

namespace {

using Clock = std::chrono::steady_clock;

void appendUtf8(std::string& out, uint32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x110000) {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// A cell's text: its character with any combining characters, or a blank.
void appendCell(std::string& out, const VTermScreenCell& cell) {
    if (cell.chars[0] == 0) {
        out += ' ';
        return;
    }
    for (int i = 0; i < VTERM_MAX_CHARS_PER_CELL && cell.chars[i] != 0; ++i) {
        appendUtf8(out, cell.chars[i]);
    }
}

// Box drawing and block elements (what the terminal's line-drawing set maps to).
bool isLineDrawing(uint32_t cp) {
    return cp >= 0x2500 && cp <= 0x259F;
}

std::string rstrip(std::string s) {
    s.erase(s.find_last_not_of(' ') + 1);
    return s;
}

std::string trim(const std::string& s) {
    const auto first = s.find_first_not_of(' ');
    return first == std::string::npos ? std::string() : rstrip(s.substr(first));
}

// Length of the UTF-8 sequence that starts with byte c (1 for a stray byte).
size_t utf8Length(unsigned char c) {
    if (c >= 0xF0 && c < 0xF8) {
        return 4;
    }
    if (c >= 0xE0) {
        return c < 0xF0 ? 3 : 1;
    }
    return c >= 0xC0 ? 2 : 1;
}

int decodeStatus(int status) {
    if (WIFEXITED(status)) {
        return WEXITSTATUS(status);
    }
    if (WIFSIGNALED(status)) {
        return 128 + WTERMSIG(status);
    }
    return -1;
}

int remainingMs(Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, 50));
}

}  // namespace

Terminal::Terminal(std::vector<std::string> argv, TerminalOptions opts)
    : rows_(opts.rows), cols_(opts.cols) {
    if (argv.empty() || rows_ <= 0 || cols_ <= 0) {
        throw std::invalid_argument("Terminal: need a program and a positive size");
    }
    emu_ = std::make_unique<Emulator>(rows_, cols_);

    // Everything the child needs is prepared here: between fork and exec only async-signal-safe
    // calls are allowed.
    std::map<std::string, std::string> env;
    for (char** e = environ; *e; ++e) {
        std::string_view kv(*e);
        const auto eq = kv.find('=');
        if (eq != std::string_view::npos) {
            env.emplace(std::string(kv.substr(0, eq)), std::string(kv.substr(eq + 1)));
        }
    }
    env["TERM"] = opts.term;
    // The window size comes from the terminal itself; stale LINES/COLUMNS would override it.
    env.erase("LINES");
    env.erase("COLUMNS");
    if (opts.mono) {
        env["NEWT_MONO"] = "1";
    } else {
        env.erase("NEWT_MONO");
    }
    for (const auto& [name, value] : opts.env) {
        if (value) {
            env[name] = *value;
        } else {
            env.erase(name);
        }
    }
    std::vector<std::string> envStrings;
    for (const auto& [name, value] : env) {
        envStrings.push_back(name + "=" + value);
    }
    std::vector<char*> envp;
    for (auto& s : envStrings) {
        envp.push_back(s.data());
    }
    envp.push_back(nullptr);
    std::vector<char*> args;
    for (auto& a : argv) {
        args.push_back(a.data());
    }
    args.push_back(nullptr);
    const std::string cwd = opts.cwd.string();
    const std::string execFailed = "Terminal: cannot execute " + argv[0] + "\r\n";
    const std::string chdirFailed = "Terminal: cannot enter " + cwd + "\r\n";

    winsize ws{};
    ws.ws_row = static_cast<unsigned short>(rows_);
    ws.ws_col = static_cast<unsigned short>(cols_);
    pid_ = forkpty(&master_, nullptr, nullptr, &ws);
    if (pid_ < 0) {
        throw std::system_error(errno, std::generic_category(), "forkpty");
    }
    if (pid_ == 0) {
        if (!cwd.empty() && chdir(cwd.c_str()) != 0) {
            [[maybe_unused]] auto n = write(STDERR_FILENO, chdirFailed.data(), chdirFailed.size());
            _exit(127);
        }
        execve(args[0], args.data(), envp.data());
        [[maybe_unused]] auto n = write(STDERR_FILENO, execFailed.data(), execFailed.size());
        _exit(127);
    }
    // Other terminals started later must not inherit this master side.
    fcntl(master_, F_SETFD, FD_CLOEXEC);
    fcntl(master_, F_SETFL, fcntl(master_, F_GETFL) | O_NONBLOCK);
}

Terminal::~Terminal() {
    if (pid_ > 0 && status_ < 0) {
        // The child leads its own session and process group (forkpty): take whatever it started
        // in the foreground with it, so that no test leaves processes behind.
        kill(-pid_, SIGKILL);
        kill(pid_, SIGKILL);
        int status = 0;
        while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
    }
    if (master_ >= 0) {
        close(master_);
    }
}

void Terminal::resize(int rows, int cols) {
    update();
    winsize ws{};
    ws.ws_row = static_cast<unsigned short>(rows);
    ws.ws_col = static_cast<unsigned short>(cols);
    if (ioctl(master_, TIOCSWINSZ, &ws) != 0) {
        throw std::system_error(errno, std::generic_category(), "TIOCSWINSZ");
    }
    rows_ = rows;
    cols_ = cols;
    vterm_set_size(emu_->vt.get(), rows, cols);
    // The kernel signals the foreground group on a change; say it once more for a child that
    // has moved to a group of its own.
    if (status_ < 0) {
        kill(pid_, SIGWINCH);
    }
}

void Terminal::signal(int sig) {
    if (status_ < 0) {
        kill(pid_, sig);
    }
}

bool Terminal::cookedMode() const {
    termios modes{};
    if (tcgetattr(master_, &modes) != 0) {
        return false;
    }
    return (modes.c_lflag & ICANON) != 0 && (modes.c_lflag & ECHO) != 0;
}

bool Terminal::readOutput(int timeoutMs) {
    if (eof_) {
        return false;
    }
    pollfd pfd{master_, POLLIN, 0};
    if (poll(&pfd, 1, timeoutMs) <= 0) {
        return true;
    }
    std::array<char, 4096> buf{};
    for (;;) {
        const ssize_t n = read(master_, buf.data(), buf.size());
        if (n > 0) {
            raw_.append(buf.data(), static_cast<size_t>(n));
            vterm_input_write(emu_->vt.get(), buf.data(), static_cast<size_t>(n));
            continue;
        }
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            break;
        }
        // EIO (or 0): every process has closed its side of the terminal.
        eof_ = true;
        break;
    }
    if (!emu_->answers.empty() && !eof_) {
        std::string answers;
        answers.swap(emu_->answers);
        // Best effort: a program that stopped reading does not get its answer.
        [[maybe_unused]] auto n = write(master_, answers.data(), answers.size());
    }
    return !eof_;
}

void Terminal::reap() {
    if (status_ >= 0 || pid_ <= 0) {
        return;
    }
    int status = 0;
    pid_t r;
    do {
        r = waitpid(pid_, &status, WNOHANG);
    } while (r < 0 && errno == EINTR);
    if (r == pid_) {
        status_ = decodeStatus(status);
        if (status_ < 0) {
            status_ = 255;
        }
    }
}

void Terminal::update() {
    readOutput(0);
    reap();
}

void Terminal::send(std::string_view keySequence) {
    update();
    const auto deadline = Clock::now() + 5s;
    size_t done = 0;
    while (done < keySequence.size()) {
        const ssize_t n = write(master_, keySequence.data() + done, keySequence.size() - done);
        if (n > 0) {
            done += static_cast<size_t>(n);
        } else if (n < 0 && errno == EINTR) {
            continue;
        } else if (n < 0 && errno == EAGAIN && Clock::now() < deadline) {
            // The program's input queue is full: let it run (and drain its output) first.
            readOutput(10);
        } else {
            return;  // the program is gone; the waits that follow report it
        }
    }
}

void Terminal::type(std::string_view text) {
    size_t i = 0;
    while (i < text.size()) {
        const size_t len =
            std::min(utf8Length(static_cast<unsigned char>(text[i])), text.size() - i);
        send(text.substr(i, len));
        i += len;
    }
}

bool Terminal::waitFor(const std::function<bool(const Terminal&)>& cond,
                       std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        update();
        if (cond(*this)) {
            return true;
        }
        if (eof_ && status_ >= 0) {
            return false;  // nothing on the screen can change any more
        }
        if (Clock::now() >= deadline) {
            return false;
        }
        if (eof_) {
            // Output is over but the child is not reaped yet: poll for its end.
            std::this_thread::sleep_for(2ms);
        } else {
            readOutput(remainingMs(deadline));
        }
    }
}

bool Terminal::waitForText(std::string_view text, std::chrono::milliseconds timeout) {
    return waitFor([text](const Terminal& t) { return t.contains(text); }, timeout);
}

bool Terminal::waitForNoText(std::string_view text, std::chrono::milliseconds timeout) {
    return waitFor([text](const Terminal& t) { return !t.contains(text); }, timeout);
}

bool Terminal::waitForExit(std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        update();
        if (status_ >= 0) {
            break;
        }
        if (Clock::now() >= deadline) {
            return false;
        }
        if (eof_) {
            std::this_thread::sleep_for(2ms);
        } else {
            readOutput(remainingMs(deadline));
        }
    }
    // The child is gone; read the rest of what it wrote. Its side of the terminal closes with it
    // unless something it started still holds the terminal, so this normally ends at once.
    const auto drainEnd = std::min(deadline, Clock::now() + 1s);
    while (!eof_ && Clock::now() < drainEnd) {
        readOutput(remainingMs(drainEnd));
    }
    return true;
}

std::string Terminal::rowText(int r, bool padded, std::vector<int>* columns) const {
    std::string out;
    if (r < 0 || r >= rows_) {
        return out;
    }
    for (int c = 0; c < cols_; ++c) {
        VTermScreenCell cell{};
        if (!vterm_screen_get_cell(emu_->screen, VTermPos{r, c}, &cell)) {
            continue;
        }
        if (cell.chars[0] == static_cast<uint32_t>(-1)) {
            continue;  // right half of a double-width character
        }
        appendCell(out, cell);
        if (columns) {
            columns->resize(out.size(), c);
        }
        if (cell.width == 2) {
            ++c;
        }
    }
    return padded ? out : rstrip(std::move(out));
}

std::string Terminal::row(int r) const {
    return rowText(r, false);
}

std::string Terminal::screenText() const {
    std::string out;
    for (int r = 0; r < rows_; ++r) {
        if (r > 0) {
            out += '\n';
        }
        out += rowText(r, false);
    }
    return out;
}

bool Terminal::contains(std::string_view text) const {
    return screenText().find(text) != std::string::npos;
}

int Terminal::findRow(std::string_view text) const {
    for (int r = 0; r < rows_; ++r) {
        if (rowText(r, false).find(text) != std::string::npos) {
            return r;
        }
    }
    return -1;
}

std::pair<int, int> Terminal::position(std::string_view text) const {
    for (int r = 0; r < rows_; ++r) {
        std::vector<int> columns;
        const std::string line = rowText(r, true, &columns);
        if (const auto at = line.find(text); at != std::string::npos) {
            return {r, columns[at]};
        }
    }
    return {-1, -1};
}

bool Terminal::isReverse(int row, int col) const {
    if (row < 0 || row >= rows_ || col < 0 || col >= cols_) {
        return false;
    }
    VTermScreenCell cell{};
    return vterm_screen_get_cell(emu_->screen, VTermPos{row, col}, &cell) && cell.attrs.reverse;
}

std::string Terminal::reverseText() const {
    std::vector<std::string> runs;
    std::string run;
    const auto endRun = [&] {
        if (auto text = trim(run); !text.empty()) {
            runs.push_back(std::move(text));
        }
        run.clear();
    };
    for (int r = 0; r < rows_; ++r) {
        for (int c = 0; c < cols_; ++c) {
            VTermScreenCell cell{};
            if (!vterm_screen_get_cell(emu_->screen, VTermPos{r, c}, &cell) ||
                !cell.attrs.reverse) {
                endRun();
                continue;
            }
            if (cell.width == 2) {
                ++c;  // the right half may not carry the attributes; skip it with its left half
            }
            // newt draws a focused listbox's border in reverse too; the border is not text.
            if (isLineDrawing(cell.chars[0])) {
                endRun();
                continue;
            }
            appendCell(run, cell);
        }
        endRun();
    }
    std::string out;
    for (const auto& text : runs) {
        if (!out.empty()) {
            out += '\n';
        }
        out += text;
    }
    return out;
}

bool Terminal::isBold(int row, int col) const {
    if (row < 0 || row >= rows_ || col < 0 || col >= cols_) {
        return false;
    }
    VTermScreenCell cell{};
    return vterm_screen_get_cell(emu_->screen, VTermPos{row, col}, &cell) && cell.attrs.bold;
}

namespace {

int colourIndex(const VTermColor& colour, bool isDefault) {
    if (isDefault || !VTERM_COLOR_IS_INDEXED(&colour))
        return -1;
    return colour.indexed.idx;
}

}  // namespace

int Terminal::foreground(int row, int col) const {
    VTermScreenCell cell{};
    if (row < 0 || row >= rows_ || col < 0 || col >= cols_ ||
        !vterm_screen_get_cell(emu_->screen, VTermPos{row, col}, &cell)) {
        return -1;
    }
    return colourIndex(cell.fg, VTERM_COLOR_IS_DEFAULT_FG(&cell.fg));
}

int Terminal::background(int row, int col) const {
    VTermScreenCell cell{};
    if (row < 0 || row >= rows_ || col < 0 || col >= cols_ ||
        !vterm_screen_get_cell(emu_->screen, VTermPos{row, col}, &cell)) {
        return -1;
    }
    return colourIndex(cell.bg, VTERM_COLOR_IS_DEFAULT_BG(&cell.bg));
}

std::pair<int, int> Terminal::cursor() const {
    VTermPos pos{};
    vterm_state_get_cursorpos(vterm_obtain_state(emu_->vt.get()), &pos);
    return {pos.row, pos.col};
}

std::string Terminal::dump() const {
    std::ostringstream out;
    const std::string rule = "    +" + std::string(static_cast<size_t>(cols_), '-') + "+\n";
    out << "\n" << rule;
    for (int r = 0; r < rows_; ++r) {
        out << (r < 10 ? "  " : " ") << r << " |" << rowText(r, true) << "|\n";
    }
    out << rule;
    const auto [cr, cc] = cursor();
    out << "cursor: row " << cr << ", column " << cc << "\n";
    out << "reverse: \"" << reverseText() << "\"\n";
    if (status_ >= 0) {
        out << "program: exited with status " << status_ << "\n";
    } else {
        out << "program: running (pid " << pid_ << ")" << (eof_ ? ", terminal closed" : "") << "\n";
    }
    return out.str();
}

}  // namespace zoltest
