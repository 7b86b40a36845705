// How long the remote report service's dial-up and HTTPS method screens and the HTTPS proxy
// dialog take to open on the seeded store (the key floppy marked as read), from the key that
// opens them to the drawn screen, in a pseudo-terminal. The method screens open from the base
// screen's OK, a full button that newt animates for a fixed 300 ms (drawn pushed, 150 ms, drawn
// released, 150 ms) before the form returns; that time is what an administrator waits and is
// reported with the screen's own time beside it. The proxy dialog opens from a compact button.
// Usage: vantrel_methods_bench [rounds] (default 30); it makes and removes its own product root.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "../common/screen_timing.h"
#include "frame/msgfile.h"
#include "product_root.h"
#include "regpaths.h"
#include "terminal.h"
#include "zolwin.h"

namespace {

using zolbench::messageText;
using zolbench::report;
using zolbench::timeUntil;

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// Newt's animation of a pressed full button.
constexpr double kButtonAnimationMs = 300.0;

bool markKeyFloppyRead(const zoltest::ProductRoot& root) {
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    HKEY key = nullptr;
    const DWORD one = 1;
    bool ok = RegCreateKey(HKEY_LOCAL_MACHINE, ZOL_KEY_VNTSERVICE, &key) == ERROR_SUCCESS &&
              RegSetValueEx(key, "InstVantrelKeyFD", 0, REG_DWORD,
                            reinterpret_cast<const BYTE*>(&one), sizeof one) == ERROR_SUCCESS;
    RegCloseKey(key);
    ZolRegCloseStore();
    return ok;
}

void tabs(zoltest::Terminal& t, int count) {
    for (int i = 0; i < count; ++i)
        t.send("\t");
}

// Times `rounds` openings of the screen that the focused OK opens, each closed with Ctrl-O back
// to the base screen's OK.
bool timeMethod(zoltest::Terminal& t, int rounds, const std::vector<std::string>& drawn,
                std::vector<double>& out) {
    for (int i = 0; i < rounds; ++i) {
        const double ms = timeUntil(t, "\r", drawn);
        if (ms < 0)
            return false;
        out.push_back(ms);
        t.send("\x0f");
        if (!t.waitForNoText(drawn.front()))
            return false;
    }
    return true;
}

}  // namespace

int main(int argc, char* argv[]) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
    zoltest::ProductRoot root;
    if (!markKeyFloppyRead(root)) {
        std::fprintf(stderr, "could not mark the key floppy as read\n");
        return 1;
    }
    const std::unique_ptr<zoltest::Terminal> started = zolbench::startAtMainMenu(root);
    if (!started)
        return 1;
    zoltest::Terminal& t = *started;
    // The base-setting menu, its remote report row, then the service's base screen.
    t.send("\r");
    t.waitForText(messageText(root, "BASE_REPORT_SNMP_ID"));
    t.send("\x1b[B\x1b[B\x1b[B");
    t.send("\r");
    if (!t.waitForText(messageText(root, "VNT_SUB_ENABLE_ID")))
        return 1;
    // Switch on, dial-up, OK.
    t.send(" ");
    tabs(t, 2);
    t.send(" ");
    tabs(t, 4);
    std::vector<double> dial, https, proxy;
    const std::string dialTitle = "┤ " + messageText(root, "DIAL_DEST_SET_TITLE") + " ├";
    if (!timeMethod(t, rounds, {dialTitle, messageText(root, "DIAL_UP_INTVAL")}, dial))
        return 1;
    // From OK: Cancel, the switch, four methods: HTTPS, then Suppression and OK.
    tabs(t, 6);
    t.send(" ");
    tabs(t, 2);
    const std::string httpsTitle = "┤ " + messageText(root, "TITLE_HTTPS_BASE_SETTING_ID") + " ├";
    if (!timeMethod(t, rounds, {httpsTitle, messageText(root, "LABEL_HTTPS_SECOND_ID")}, https))
        return 1;
    // The proxy dialog from the HTTPS screen's Proxy button.
    if (timeUntil(t, "\r", {httpsTitle}) < 0)
        return 1;
    tabs(t, 3);
    const std::string proxyTitle = "┤ " + messageText(root, "TITLE_PROXY_SETTING_ID") + " ├";
    for (int i = 0; i < rounds; ++i) {
        const double ms =
            timeUntil(t, "\r", {proxyTitle, messageText(root, "LABEL_PROXY_HOST_ID")});
        if (ms < 0)
            return 1;
        proxy.push_back(ms);
        t.send("\x0f");
        if (!t.waitForNoText(proxyTitle))
            return 1;
    }
    for (int i = 0; i < 5 && t.running(); ++i) {
        const std::string before = t.screenText();
        t.send("\x0f");
        t.waitFor(
            [&](const zoltest::Terminal& s) { return !s.running() || s.screenText() != before; });
    }
    t.waitForExit(10s);
    report("dial-up screen from OK of the base screen to drawn", dial, kButtonAnimationMs);
    report("HTTPS screen from OK of the base screen to drawn", https, kButtonAnimationMs);
    report("proxy dialog from the Proxy button to drawn", proxy, 0);
    return 0;
}
