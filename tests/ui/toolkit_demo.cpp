// A test program, not part of the product: sets up the screen as the program does, runs the
// toolkit operations named on the command line in turn, and prints their outcomes after newt has
// finished.
#include <newt.h>
#include <zolwin.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>

#include "ui/toolkit.h"

namespace {

// A second form after a box: a label and an entry that ends the form on Enter, so that a test
// can tell whether keys sent to the box reached the box or leaked past it.
std::string askEntry(const char* prompt) {
    zolui::Window window;
    zolui::Form form;
    newtComponent text = form.add(zolui::label(-1, -1, prompt));
    newtComponent field = form.add(zolui::entry(-1, -1, "", 20, NEWT_FLAG_RETURNEXIT));
    zolui::Grid grid(1, 2);
    grid.set(0, 0, text).set(0, 1, field, {0, 1, 0, 0});
    window.openWrapped(grid, "Stage 2");
    form.run();
    return zolui::entryText(field);
}

std::string choose(const char* text) {
    newtComponent buttons[2] = {zolui::button(-1, -1, " Yes "), zolui::button(-1, -1, " No ")};
    const newtComponent yes = buttons[0], no = buttons[1];
    const newtComponent pressed = SelectFromButtons("Choose", text, buttons, 2);
    return std::string("result=") + (pressed == yes ? "Yes" : pressed == no ? "No" : "null");
}

// A checkbox governing two entries (CheckButtonFunc) or two checkboxes (CheckBoxFunc).
std::string rangeEnable(bool governsCheckboxes) {
    char checked = ' ';  // newt writes the checkbox's state here; it outlives the form
    char subResults[2] = {' ', ' '};
    newtComponent fields[2] = {};
    const zolui::RangeKind kind =
        governsCheckboxes ? zolui::RangeKind::Checkboxes : zolui::RangeKind::Entries;
    newtCallback callback = governsCheckboxes ? CheckBoxFunc : CheckButtonFunc;
    std::string outcome;
    {
        zolui::Window window;
        zolui::Form form;
        newtComponent box = form.add(zolui::checkbox(-1, -1, "Enable", ' ', nullptr, &checked));
        for (int i = 0; i < 2; ++i) {
            fields[i] =
                form.add(governsCheckboxes ? zolui::checkbox(-1, -1, i == 0 ? "Sub one" : "Sub two",
                                                             ' ', nullptr, &subResults[i])
                                           : zolui::entry(-1, -1, "", 10));
        }
        newtComponent ok = form.add(zolui::button(-1, -1, "Done"), 1);
        zolui::Grid grid(1, 4);
        grid.set(0, 0, box, {}, NEWT_ANCHOR_LEFT)
            .set(0, 1, fields[0], {0, 1, 0, 0}, NEWT_ANCHOR_LEFT)
            .set(0, 2, fields[1], {}, NEWT_ANCHOR_LEFT)
            .set(0, 3, ok, {0, 1, 0, 0});
        window.openWrapped(grid, "Range");
        const zolui::RangeEnable range(kind, &checked, {fields[0], fields[1]});
        newtComponentAddCallback(box, callback, nullptr);
        range.apply();  // start with the fields matching the unchecked box
        while (!form.run().isComponent(1)) {
        }
        if (governsCheckboxes) {
            outcome = std::string("s1=") + subResults[0] + " s2=" + subResults[1];
        } else {
            outcome = "e1=" + zolui::entryText(fields[0]) + " e2=" + zolui::entryText(fields[1]);
        }
        outcome += std::string(" check=") + checked;
    }
    return outcome;
}

std::string ipEntry() {
    zolui::Window window;
    zolui::Form form;
    newtComponent field = form.add(zolui::entry(-1, -1, "", 16, NEWT_FLAG_RETURNEXIT));
    newtEntrySetFilter(field, EntryIPFilter, nullptr);
    newtComponent ok = form.add(zolui::button(-1, -1, "Done"), 1);
    zolui::Grid grid(1, 2);
    grid.set(0, 0, field).set(0, 1, ok, {0, 1, 0, 0});
    window.openWrapped(grid, "Address");
    // The filter refuses Enter, so the entry never ends the form: only the button does.
    while (!form.run().isComponent(1)) {
    }
    return "ip=" + zolui::entryText(field);
}

// EUC-JP texts, as the message file holds them in Japanese mode.
const char* const kJapaneseTitle = "\xB3\xCE\xC7\xA7";  // 確認
const char* const kJapaneseText =
    "\xC6\xFC\xCB\xDC\xB8\xEC\xA4\xCE\xA5\xC6\xA5\xB9\xA5\xC8";  // 日本語のテスト

const std::map<std::string, std::function<std::string()>> kScenarios = {
    {"msg",
     [] {
         msgWindow("Notice", " ok ", "First line\nSecond line");
         return "msg closed; entry=" + askEntry("typed:");
     }},
    {"select", [] { return choose("Pick one"); }},
    {"check", [] { return rangeEnable(false); }},
    {"checkboxes", [] { return rangeEnable(true); }},
    {"ip", ipEntry},
    {"japanese",
     [] {
         msgWindow(kJapaneseTitle, " OK ", kJapaneseText);
         std::string hex = "entry=";
         for (unsigned char c : askEntry(kJapaneseText)) {
             hex += "0123456789ABCDEF"[c >> 4];
             hex += "0123456789ABCDEF"[c & 15];
         }
         return hex;
     }},
};

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (!kScenarios.count(argv[i])) {
            std::fprintf(stderr, "usage: toolkit_demo <scenario>...\n");
            return 2;
        }
    }
    std::setlocale(LC_ALL, "");
    zolui::SetJapaneseText(GetSystemDefaultLangID() == 1041);
    std::string outcome;
    // The screen as the program sets it up: locale first (above), then newt and the palette.
    newtInit();
    newtCls();
    newtSetColors(myColors);
    for (int i = 1; i < argc; ++i) {
        outcome += kScenarios.at(argv[i])() + "\n";
    }
    newtFinished();
    std::printf("%s", outcome.c_str());
    return 0;
}
