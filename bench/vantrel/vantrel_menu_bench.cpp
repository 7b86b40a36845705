// How long the remote report service's screens take to open on the seeded store, from the Enter
// that opens them to the drawn screen, in a pseudo-terminal: the key-floppy question of a service
// never set up, then (with the set-up marked read) the service menu and the two customer pages.
// Each round opens the screen and closes it with Ctrl-O.
// Usage: vantrel_menu_bench [rounds] (default 30); it makes and removes its own product root.
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
#include "store_reader.h"
#include "terminal.h"
#include "zolwin.h"

namespace {

using zolbench::measure;
using zolbench::messageText;
using zolbench::report;
using zolbench::timeUntil;
using zolbench::title;

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

}  // namespace

int main(int argc, char* argv[]) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
    zoltest::ProductRoot root;
    const std::unique_ptr<zoltest::Terminal> started = zolbench::startAtMainMenu(root);
    if (!started)
        return 1;
    zoltest::Terminal& t = *started;
    for (int i = 0; i < 4; ++i)
        t.send("\x1b[B");  // the service's row

    std::vector<double> question, menu, page1, page2;
    const std::string questionTitle = title(root, "INPUT_OPENINGFILE_PATH_TITLE_ID");
    if (!measure(t, rounds, {questionTitle, "/tmp/vntfd", messageText(root, "BUTTON_CANCEL_ID")},
                 questionTitle, &question))
        return 1;

    // From here the key floppy counts as read, with a customer to show.
    const zoltest::StoreReader store(root);
    store.setDword(ZOL_KEY_VNTSERVICE, "InstVantrelKeyFD", 1);
    store.setText(ZOL_KEY_VNT_SETTING, "USERCODE", "C0012345");
    store.setText(ZOL_KEY_VNT_SETTING, "TOKUINMA", "Example Co");
    store.setText(ZOL_KEY_VNT_SETTING, "ZIPNO", "1234567");
    store.setText(ZOL_KEY_VNT_SETTING, "ADRSNMA", "1 Main Street");
    store.setText(ZOL_KEY_VNT_SETTING, "BUTEL", "03-1234-5678");
    store.setText(ZOL_KEY_VNT_SETTING, "MAIL", "info@example.com");
    const std::string menuTitle = title(root, "VANTREL_MAIN_ID");
    if (!measure(t, rounds,
                 {menuTitle, messageText(root, "VANTREL_REOPEN_ID"),
                  messageText(root, "BUTTON_CLOSE_ID")},
                 menuTitle, &menu))
        return 1;

    // The pages, from the menu's first and second rows; the menu stays open between rounds.
    if (timeUntil(t, "\r", {menuTitle, messageText(root, "BUTTON_CLOSE_ID")}) < 0)
        return 1;
    const std::string page1Title = title(root, "VANTREL_USERINFO_ID1");
    if (!measure(t, rounds, {page1Title, "C0012345", messageText(root, "BUTTON_CANCEL_ID")},
                 page1Title, &page1))
        return 1;
    t.send("\x1b[B");
    const std::string page2Title = title(root, "VANTREL_USERINFO_ID2");
    if (!measure(t, rounds, {page2Title, "1234567", messageText(root, "BUTTON_CANCEL_ID")},
                 page2Title, &page2))
        return 1;
    t.send("\x0f");
    t.send("\x0f");
    t.waitForExit(10s);
    report("key-floppy question (no floppy read) from Enter to drawn", question);
    report("service menu from Enter to drawn", menu);
    report("customer page 1 from Enter to drawn", page1);
    report("customer page 2 from Enter to drawn", page2);
    return 0;
}
