// Terminal size changes and session ends, noted by signal handlers and handled by the form that
// runs (see terminal_events.h).
#include "ui/terminal_events.h"

#include <fcntl.h>
#include <newt.h>
#include <poll.h>
#include <slang.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include "ui/encoding.h"
#include "ui/newt_raii.h"

namespace zolui {

namespace {

constexpr int kWatched[] = {SIGWINCH, SIGTERM, SIGHUP};
// Seconds the screens get to close after a session end before the process ends regardless.
constexpr unsigned kGraceSeconds = 5;

int wakeRead = -1, wakeWrite = -1;
volatile sig_atomic_t endingSignal = 0;

// For the last resort only: the modes before newtInit and the sequence that leaves the
// alternate screen, both taken while nothing is in a hurry.
bool haveModes = false;
termios savedModes{};
char leaveScreen[64] = "";
std::size_t leaveScreenLength = 0;

std::string smallText = "Please make the terminal at least %d columns wide and %d rows high.";

void wake() {
    const char byte = 0;
    const ssize_t n = ::write(wakeWrite, &byte, 1);
    (void)n;  // a full pipe already wakes the form
}

extern "C" void onSignal(int sig) {
    const int savedErrno = errno;
    if (sig != SIGWINCH && endingSignal == 0) {
        endingSignal = sig;
        ::alarm(kGraceSeconds);
    }
    wake();
    errno = savedErrno;
}

// The screens did not close in time: put the terminal back as far as a handler can, and end.
extern "C" void onGraceOver(int) {
    if (leaveScreenLength > 0) {
        const ssize_t n = ::write(STDOUT_FILENO, leaveScreen, leaveScreenLength);
        (void)n;
    }
    if (haveModes)
        ::tcsetattr(STDIN_FILENO, TCSANOW, &savedModes);
    ::_exit(128 + (endingSignal != 0 ? endingSignal : SIGALRM));
}

void drain() {
    char buf[64];
    while (::read(wakeRead, buf, sizeof buf) > 0) {
    }
}

bool tooSmall() {
    return SLtt_Screen_Cols < kMinColumns || SLtt_Screen_Rows < kMinRows;
}

// One line on an empty screen, cut to the terminal's width.
void showTooSmall() {
    char text[256];
    std::snprintf(text, sizeof text, smallText.c_str(), kMinColumns, kMinRows);
    const std::string line = toNewt(text);
    SLsmg_set_color(0);
    SLsmg_cls();
    SLsmg_gotorc(0, 0);
    SLsmg_write_nstring(const_cast<char*>(line.c_str()), static_cast<unsigned>(SLtt_Screen_Cols));
    SLsmg_refresh();
}

// Waits for the next event while nothing can be drawn; keys typed meanwhile are dropped, so that
// none acts on a screen nobody saw. Looks at the size again now and then as well: a change while
// S-Lang had the handlers away sent no note.
void waitWhileTooSmall() {
    constexpr int kLookAgainMs = 500;
    pollfd fds[2] = {{wakeRead, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    for (;;) {
        const int ready = ::poll(fds, 2, kLookAgainMs);
        if (ready == 0)
            return;
        if (ready < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        if ((fds[1].revents & POLLIN) != 0) {
            while (SLang_input_pending(0) > 0)
                SLang_getkey();
        }
        if ((fds[1].revents & (POLLHUP | POLLERR)) != 0 && endingSignal == 0)
            endingSignal = SIGHUP;  // the terminal is gone
        if ((fds[0].revents & POLLIN) != 0 || endingSignal != 0)
            return;
    }
}

void installHandlers();

// Takes every window down, sizes the screen anew and, once the terminal is large enough, opens
// them again centred for the new size.
void resize() {
    WindowStack::unmapAll();
    int cols = -1, rows = -1;
    bool lineShown = false;
    for (;;) {
        SLtt_get_screen_size();
        if (SLtt_Screen_Cols != cols || SLtt_Screen_Rows != rows) {
            cols = SLtt_Screen_Cols;
            rows = SLtt_Screen_Rows;
            // S-Lang gives SIGWINCH back to its default action here: take it again, then look
            // once more for a change that came meanwhile.
            SLsmg_reinit_smg();
            installHandlers();
            lineShown = false;
            continue;
        }
        if (!tooSmall() || endingSignal != 0)
            break;
        if (!lineShown)
            showTooSmall();
        lineShown = true;
        waitWhileTooSmall();
        drain();
    }
    if (endingSignal == 0)
        WindowStack::mapAll();
}

void installHandlers() {
    struct sigaction sa {};
    sa.sa_handler = onSignal;
    sigemptyset(&sa.sa_mask);
    for (int sig : kWatched)
        sigaddset(&sa.sa_mask, sig);
    sa.sa_flags = 0;  // no SA_RESTART: a blocking read or wait returns to the form at once
    for (int sig : kWatched)
        ::sigaction(sig, &sa, nullptr);
}

}  // namespace

void rememberTerminal() {
    haveModes = ::tcgetattr(STDIN_FILENO, &savedModes) == 0;
}

void watchTerminal() {
    if (wakeRead < 0) {
        int fds[2];
        if (::pipe2(fds, O_CLOEXEC | O_NONBLOCK) != 0)
            return;
        wakeRead = fds[0];
        wakeWrite = fds[1];
    }
    // S-Lang has read the terminal description by now.
    const char* leave = SLtt_tgetstr(const_cast<char*>("te"));
    leaveScreenLength = 0;
    if (leave != nullptr && std::strlen(leave) < sizeof leaveScreen) {
        std::strcpy(leaveScreen, leave);
        leaveScreenLength = std::strlen(leave);
    }
    installHandlers();
    struct sigaction grace {};
    grace.sa_handler = onGraceOver;
    sigemptyset(&grace.sa_mask);
    ::sigaction(SIGALRM, &grace, nullptr);
    // A size change that came before the handler was there: the first form run looks.
    wake();
}

void stopWatchingTerminal() {
    for (int sig : kWatched)
        std::signal(sig, SIG_DFL);
    if (wakeRead >= 0) {
        ::close(wakeRead);
        ::close(wakeWrite);
        wakeRead = wakeWrite = -1;
    }
}

int terminalEventFd() {
    return wakeRead;
}

bool handleTerminalEvents() {
    if (wakeRead < 0)
        return true;
    // newt gives SIGWINCH and SIGTSTP back to their default actions whenever a form run ends:
    // take SIGWINCH again for the next run. A change while it was away sent no note, so the
    // size is compared every time rather than only after a note.
    installHandlers();
    drain();
    if (endingSignal == 0) {
        const int cols = SLtt_Screen_Cols, rows = SLtt_Screen_Rows;
        SLtt_get_screen_size();
        if (SLtt_Screen_Cols != cols || SLtt_Screen_Rows != rows || tooSmall())
            resize();
    }
    return endingSignal == 0;
}

int terminationSignal() {
    return endingSignal;
}

void finishBySignal() {
    const int sig = endingSignal;
    if (sig == 0)
        return;
    ::alarm(0);
    std::signal(sig, SIG_DFL);
    std::raise(sig);
}

void setSmallTerminalText(std::string text) {
    smallText = std::move(text);
}

}  // namespace zolui
