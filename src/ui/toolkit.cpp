// The product's palette, modal message boxes, the button choice and sized textboxes, all built
// on the owners of newt_raii.h so that every box frees its form and pops its window.
#include "ui/toolkit.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "ui/dialog.h"

namespace {

// newtColors holds non-const pointers but newt only reads the names.
constexpr char* name(const char* colour) {
    return const_cast<char*>(colour);
}

}  // namespace

struct newtColors myColors = {
    name("white"),
    name("black"),  // root
    name("black"),
    name("lightgray"),  // border
    name("yellow"),
    name("lightgray"),  // window
    name("yellow"),
    name("black"),  // shadow
    name("yellow"),
    name("blue"),  // title
    name("yellow"),
    name("blue"),  // button
    name("black"),
    name("brown"),  // active button
    name("blue"),
    name("lightgray"),  // checkbox
    name("black"),
    name("brown"),  // active checkbox
    name("lightgray"),
    name("blue"),  // entry
    name("black"),
    name("lightgray"),  // label
    name("white"),
    name("blue"),  // listbox
    // newt draws the current row of a list that does not have the focus in the "active listbox"
    // colours and the current row of the focused list in the "active selected" ones. The focus
    // bar is black on brown; the current row of any other list only stands out in yellow, so
    // that one screen never shows two bars (the base-setting menu has two lists).
    name("yellow"),
    name("blue"),  // active listbox: current row of an unfocused list
    name("blue"),
    name("lightgray"),  // textbox
    name("yellow"),
    name("blue"),  // active textbox
    name("gray"),
    name("lightgray"),  // help line
    name("yellow"),
    name("black"),  // root text
    name("white"),
    name("blue"),  // empty scale, full scale
    name("gray"),
    name("lightgray"),  // disabled entry
    // newt draws a compact button in this slot while it does NOT have the focus, and in the
    // button colours while it has: black on light gray reads as text of the window, so the
    // focused one (yellow on blue) is the only one that looks pressable.
    name("black"),
    name("lightgray"),  // compact button
    name("black"),
    name("brown"),  // active selected listbox: current row of the focused list
    // Rows marked in a multiple-choice list; no screen has one: the terminal's default colours.
    nullptr,
    nullptr,
};

namespace {

constexpr int kButtonId = 1;

std::string_view orEmpty(const char* text) {
    return text ? std::string_view(text) : "";
}

// The message box: text above, one button below; only the button closes it.
void messageBox(const char* title, const char* buttonText, newtComponent body) {
    zolui::Dialog dialog;
    dialog.add(body);
    newtComponent ok = dialog.add(zolui::button(-1, -1, orEmpty(buttonText)), kButtonId);

    zolui::Grid textCell(1, 1);
    textCell.set(0, 0, body, {}, NEWT_ANCHOR_TOP);
    zolui::Grid buttonCell(1, 1);
    buttonCell.set(0, 0, ok, {}, NEWT_ANCHOR_TOP);
    zolui::Grid outer(1, 2);
    outer.set(0, 0, std::move(textCell), {}, NEWT_ANCHOR_TOP);
    outer.set(0, 1, std::move(buttonCell), {0, 1, 0, 0}, NEWT_ANCHOR_TOP);
    dialog.open(outer, orEmpty(title), zolui::Closing::HandlersOnly);
    // Ctrl-A and Ctrl-O end other forms; here they are caught so that they do nothing. (newt
    // reads the byte Ctrl-A as the Home key, so that one never arrives as itself anyway.)
    dialog.ignoreKey(1);
    dialog.ignoreKey(zolui::kCloseKey);
    dialog.run({{kButtonId, [] { return zolui::Next::Close; }}});
}

newtComponent chooseButton(const char* title, newtComponent body, newtComponent* buttons,
                           int count) {
    zolui::Dialog dialog;
    dialog.add(body);
    zolui::Grid grid(std::max(count, 1), 2);
    grid.set(0, 0, body, {}, NEWT_ANCHOR_LEFT);
    zolui::Handlers handlers;
    for (int i = 0; i < count; ++i) {
        if (buttons[i]) {
            grid.set(i, 1, buttons[i], {0, 1, 0, 0}, NEWT_ANCHOR_LEFT);
            dialog.add(buttons[i], i);
            handlers[i] = [] { return zolui::Next::Close; };
        }
    }
    dialog.open(grid, title ? title : " ");
    // The form runs once: whatever ends it (a button, Ctrl-O) ends the choice.
    const int pressed = dialog.run(handlers);
    // The handle is compared by the caller only; the form destroys the buttons on return.
    return pressed >= 0 && pressed < count ? buttons[pressed] : nullptr;
}

}  // namespace

void msgWindow(const char* title, const char* buttonText, const char* text) {
    messageBox(title, buttonText, zolui::multiLineLabel(-1, -1, orEmpty(text)));
}

void msgWindowEx(const char* title, const char* buttonText, const char* text) {
    const std::string_view body = orEmpty(text);
    const int height = static_cast<int>(body.size() / 72) + 2;
    messageBox(title, buttonText, zolui::textbox(-1, -1, 72, height, NEWT_FLAG_WRAP, body));
}

newtComponent SelectFromButtons(const char* title, const char* text, newtComponent* buttons,
                                int count) {
    return chooseButton(title, zolui::label(-1, -1, text ? text : "  "), buttons, count);
}

newtComponent SelectFromButtonsEx(const char* title, const char* text, newtComponent* buttons,
                                  int count) {
    newtComponent body =
        text ? zolui::textbox(-1, -1, 60, 3, NEWT_FLAG_WRAP, text) : zolui::label(-1, -1, "  ");
    return chooseButton(title, body, buttons, count);
}

newtComponent properTextbox(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    std::string text;
    std::size_t size = 10000;
    for (;;) {
        text.assign(size, '\0');
        std::va_list attempt;
        va_copy(attempt, args);
        const int n = std::vsnprintf(text.data(), size, format, attempt);
        va_end(attempt);
        if (n < 0) {
            text.clear();
            break;
        }
        // Only a text of exactly the buffer's size is retried in a larger buffer; a longer one
        // is shown cut at the buffer's size, as boxes have always shown it.
        if (static_cast<std::size_t>(n) == size) {
            size += 1000;
            continue;
        }
        text.resize(std::min(static_cast<std::size_t>(n), size - 1));
        break;
    }
    va_end(args);

    zolui::TextSize fitted;
    const std::string shown = zolui::fitTextToScreen(text, fitted);
    return zolui::textbox(0, 0, fitted.width + 1, fitted.height, NEWT_FLAG_WRAP, shown);
}

namespace zolui {

std::string menuRowText(std::string_view label) {
    std::string row(CutEuc(label, kMenuRowWidth));
    row.resize(kMenuRowWidth, ' ');
    return row;
}

}  // namespace zolui
