// How long the remote report service's machine, option and vendor data screens take to open on
// the seeded store, from the Enter on the service menu's row to the drawn screen, in a
// pseudo-terminal (the set-up marked read, a machine and a vendor stored). Each round opens the
// screen and closes it with Ctrl-O.
// Usage: vantrel_data_bench [rounds] (default 30); it makes and removes its own product root.
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
    const zoltest::StoreReader store(root);
    store.setDword(ZOL_KEY_VNTSERVICE, "InstVantrelKeyFD", 1);
    store.setText(ZOL_KEY_VNT_SETTING, "SYSNMN", "db-server-01");
    store.setText(ZOL_KEY_VNT_SETTING, "OSNMA", "Debian GNU/Linux");
    store.setText(ZOL_KEY_VNT_SETTING, "Comment", "Rack 4, room B");
    store.setText(ZOL_KEY_VNT_SETTING, "SYSSHOPNMN", "Kestrel Data Works");
    const std::unique_ptr<zoltest::Terminal> started = zolbench::startAtMainMenu(root);
    if (!started)
        return 1;
    zoltest::Terminal& t = *started;
    for (int i = 0; i < 4; ++i)
        t.send("\x1b[B");  // the service's row
    const std::string menuTitle = title(root, "VANTREL_MAIN_ID");
    if (timeUntil(t, "\r", {menuTitle, messageText(root, "BUTTON_CLOSE_ID")}) < 0)
        return 1;

    // The menu's rows 2 (machine), 3 (option) and 4 (vendor); the menu stays open between rounds.
    std::vector<double> machine, option, vendor;
    t.send("\x1b[B");
    t.send("\x1b[B");
    const std::string machineTitle = title(root, "VANTREL_MACHINE_ID");
    if (!measure(t, rounds, {machineTitle, "db-server-01", "Rack 4, room B"}, machineTitle,
                 &machine))
        return 1;
    t.send("\x1b[B");
    const std::string optionTitle = title(root, "VANTREL_OPTION_ID");
    if (!measure(t, rounds, {optionTitle, "Standard", messageText(root, "BUTTON_CLOSE_ID")},
                 optionTitle, &option))
        return 1;
    t.send("\x1b[B");
    const std::string vendorTitle = title(root, "VANTREL_SELLER_ID");
    if (!measure(t, rounds, {vendorTitle, "Kestrel Data Works", messageText(root, "VXVEND_SE_ID")},
                 vendorTitle, &vendor))
        return 1;
    t.send("\x0f");
    t.send("\x0f");
    t.waitForExit(10s);
    report("machine data from Enter to drawn", machine);
    report("option data from Enter to drawn", option);
    report("vendor data from Enter to drawn", vendor);
    return 0;
}
