// How long the destination list and the ID editor take to open with a full destination table
// (100 IDs: the ten seeded, the rest out-of-band IDs with addresses and dial-in data), from the
// key that opens them to the drawn screen, in a pseudo-terminal. Each round opens the list from
// the main menu, opens the editor on it, and closes both with Ctrl-O.
// The list opens from the main menu's list box; the editor from the list's Change button, and
// newt animates every pressed (non-compact) button before the form returns: it draws it pushed,
// waits 150 ms, draws it released and waits 150 ms again. That fixed 300 ms is part of what an
// administrator sees and is reported as part of the editor's time.
// Usage: screens_bench [rounds] (default 30); it makes and removes its own product root.
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

constexpr int kStoreLimit = 100;
constexpr int kSeeded = 10;

void setText(HKEY key, const char* name, const std::string& text) {
    RegSetValueEx(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                  static_cast<DWORD>(text.size() + 1));
}

// Fills the store up to the library's limit in one transaction.
bool fillDestinations(const zoltest::ProductRoot& root) {
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    if (ZolRegBeginTransaction() != ERROR_SUCCESS)
        return false;
    for (int d = 0; d < kStoreLimit - kSeeded; ++d) {
        char id[32];
        std::snprintf(id, sizeof id, "Site%02d Console", d);
        HKEY key = nullptr;
        const std::string path = std::string(ZOL_KEY_ID_LIST "\\") + id;
        if (RegCreateKey(HKEY_LOCAL_MACHINE, path.c_str(), &key) != ERROR_SUCCESS)
            return false;
        setText(key, "Method", "MANAGER (TCP_IP OUT-OF-BAND)");
        setText(key, "Address", "192.0.2." + std::to_string(d + 1));
        setText(key, "Phone", "031234" + std::to_string(1000 + d));
        setText(key, "User", "operator" + std::to_string(d));
        RegCloseKey(key);
    }
    const bool ok = ZolRegCommitTransaction() == ERROR_SUCCESS;
    ZolRegCloseStore();
    return ok;
}

}  // namespace

int main(int argc, char* argv[]) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
    zoltest::ProductRoot root;
    if (!fillDestinations(root)) {
        std::fprintf(stderr, "could not fill the store\n");
        return 1;
    }
    const std::unique_ptr<zoltest::Terminal> started = zolbench::startAtMainMenu(root);
    if (!started)
        return 1;
    zoltest::Terminal& t = *started;

    const std::string listTitle = "┤ " + messageText(root, "TITTLE_DESTSET_ID") + " ├";
    const std::string editorTitle = "┤ " + messageText(root, "TITTLE_IDSET_ID") + " ├";
    const std::string method = messageText(root, "DEST_IDLIST_METHOD_ID");
    const std::string close = messageText(root, "BUTTON_CLOSE_ID");
    const std::string schedule = messageText(root, "IDSET_BUTTON_SCH_ID");
    const std::string change = messageText(root, "DEST_BUTTON_MODITY_ID");
    std::vector<double> list, editor;
    t.send("\x1b[B");  // the destination row
    for (int i = 0; i < rounds; ++i) {
        const double l = timeUntil(t, "\r", {listTitle, method, close});
        // The first ID, then Change: the editor shows its address line and its buttons.
        if (l < 0)
            return 1;
        t.send("\t");
        t.send("\t");
        if (!t.waitFor([&](const zoltest::Terminal& s) {
                return s.reverseText().find(change) != std::string::npos;
            }))
            return 1;
        const double e = timeUntil(t, "\r", {editorTitle, "192.0.2.1 (dial-in)", schedule});
        if (e < 0)
            return 1;
        list.push_back(l);
        editor.push_back(e);
        t.send("\x0f");
        t.waitForNoText(editorTitle);
        t.send("\x0f");
        t.waitForNoText(listTitle);
    }
    t.send("\x0f");
    t.waitForExit(10s);
    report("destination list (100 IDs) from Enter to drawn", list);
    report("ID editor (out-of-band ID) from Enter on Change to drawn", editor);
    return 0;
}
