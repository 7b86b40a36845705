// A program run in a pseudo-terminal whose output is rendered by a terminal emulator (libvterm),
// so that screen tests can send keys and read the screen the way a person at the terminal sees it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zoltest {

using namespace std::chrono_literals;

// Set the fields one by one (TerminalOptions o; o.env = ...;): a designated initializer that
// leaves fields out trips -Wmissing-field-initializers, which the build treats as an error.
struct TerminalOptions {
    int rows = 25, cols = 80;
    // Added to (a value) or removed from (std::nullopt) the child's environment; applied last.
    std::map<std::string, std::optional<std::string>> env;
    bool mono = true;            // NEWT_MONO=1: newt then shows the focused component in reverse
    std::string term = "xterm";  // TERM
    std::filesystem::path cwd;   // empty: the child starts in the current directory
};

// Runs argv[0] (a path) in a pseudo-terminal of the given size. Output is read and rendered
// whenever a wait function runs (or update() is called); the screen accessors show the state as
// of the last read. Every wait polls with a deadline and never blocks longer than its time-out.
class Terminal {
  public:
    explicit Terminal(std::vector<std::string> argv, TerminalOptions opts = {});
    // Kills (SIGKILL) the child and its process group if it is still running, and reaps it.
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void send(std::string_view keySequence);  // one write() per key sequence
    void type(std::string_view text);         // one send() per character (UTF-8 aware)

    // Gives the terminal a new size, as a person dragging the window does: the pseudo-terminal's
    // size (TIOCSWINSZ), SIGWINCH to the child's process group and the emulator's screen, which
    // keeps what fits. Whatever was on the screen before is read first.
    void resize(int rows, int cols);
    // Sends a signal to the child.
    void signal(int sig);
    // The terminal's line discipline as the child left it: true while it echoes and edits lines
    // (the state a shell expects), false in raw mode.
    bool cookedMode() const;

    // Each returns true as soon as the condition holds, false at the time-out, or earlier when
    // the child has exited and all of its output has been read (nothing can change any more).
    bool waitForText(std::string_view text, std::chrono::milliseconds timeout = 10s);
    bool waitForNoText(std::string_view text, std::chrono::milliseconds timeout = 10s);
    bool waitFor(const std::function<bool(const Terminal&)>& cond,
                 std::chrono::milliseconds timeout = 10s);
    // Waits for the child to end, reading the rest of its output.
    bool waitForExit(std::chrono::milliseconds timeout = 10s);
    // Reads whatever output is available now, without waiting.
    void update();

    int exitStatus() const { return status_; }  // exit code, 128+signal if killed, -1 while running
    bool running() const { return status_ < 0; }
    pid_t pid() const { return pid_; }

    int rows() const { return rows_; }
    int cols() const { return cols_; }
    std::string screenText() const;  // every row, right-trimmed, joined with '\n'
    std::string row(int r) const;    // one row, right-trimmed; a double-width character once
    bool contains(std::string_view text) const;
    int findRow(std::string_view text) const;  // first row containing text, -1 if none
    // {row, column} of the first cell of the first occurrence of text, {-1, -1} if none.
    // Columns count screen cells: a double-width character takes two.
    std::pair<int, int> position(std::string_view text) const;
    // Text of the reverse-video cells: each run of them on a row, trimmed, runs joined by '\n';
    // line-drawing characters end a run and are left out. Under NEWT_MONO=1 newt shows in
    // reverse: the focused button's label; the current item of every listbox (also in bold while
    // the listbox has the focus, when its border is reverse too); a focused checkbox's mark cell
    // only (so a blank mark adds no text: use isReverse or cursor()). A focused entry shows no
    // reverse video; the cursor stands in it.
    std::string reverseText() const;
    bool isReverse(int row, int col) const;
    bool isBold(int row, int col) const;
    // The cell's colours as indexes of the terminal's palette (0 black, 1 red, 2 green, 3 brown,
    // 4 blue, ..., 7 light gray, 8-15 the bright ones); -1 for the terminal's default colour.
    int foreground(int row, int col) const;
    int background(int row, int col) const;
    std::pair<int, int> cursor() const;  // {row, col}
    std::string rawOutput() const { return raw_; }
    // The whole screen framed with row numbers, plus cursor, reverse text and the child's state,
    // for failure messages: EXPECT_TRUE(t.waitForText("x")) << t.dump();
    std::string dump() const;

  private:
    struct Emulator;
    bool readOutput(int timeoutMs);  // false once the child's side of the terminal is closed
    void reap();
    // With columns, columns[i] is the screen column of the cell that byte i of the text came from.
    std::string rowText(int r, bool padded, std::vector<int>* columns = nullptr) const;

    int rows_, cols_;
    int master_ = -1;
    pid_t pid_ = -1;
    int status_ = -1;
    bool eof_ = false;
    std::string raw_;
    std::unique_ptr<Emulator> emu_;
};

// Key sequences as an xterm sends them.
namespace keys {
inline constexpr std::string_view Tab = "\t", Enter = "\r", Up = "\x1b[A", Down = "\x1b[B",
                                  Right = "\x1b[C", Left = "\x1b[D", Home = "\x1b[H",
                                  End = "\x1b[F", Backspace = "\x7f", Delete = "\x1b[3~",
                                  Escape = "\x1b", F12 = "\x1b[24~", CtrlA = "\x01", CtrlO = "\x0f",
                                  Space = " ", BackTab = "\x1b[Z";
}  // namespace keys

}  // namespace zoltest
