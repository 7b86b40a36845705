// A small newt form for testing the terminal harness itself: an entry, a listbox, a checkbox and
// two buttons in a centred window. After newt has finished it prints what was entered, e.g.
// "entry=abc list=1 check=* button=OK", and exits 0 for OK, 3 for Cancel, 4 otherwise.
// Usage: newt_form_demo [--item <extra listbox text>]
#include <newt.h>

#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "");
    std::vector<std::string> items = {"Apple", "Banana", "Cherry"};
    if (argc == 3 && std::strcmp(argv[1], "--item") == 0) {
        items.emplace_back(argv[2]);
    }

    // Layout from the top: entry, bordered listbox (the border is inside its height),
    // checkbox, then the two buttons (three rows each).
    const int listHeight = static_cast<int>(items.size()) + 2;
    const int checkRow = 3 + listHeight + 1;
    const int buttonRow = checkRow + 2;
    newtInit();
    newtCls();
    newtCenteredWindow(50, buttonRow + 4, "Harness demo");
    newtComponent label = newtLabel(2, 1, "Name:");
    newtComponent entry = newtEntry(10, 1, "", 30, nullptr, NEWT_FLAG_SCROLL);
    newtComponent list = newtListbox(10, 3, listHeight, NEWT_FLAG_BORDER);
    newtListboxSetWidth(list, 30);
    for (size_t i = 0; i < items.size(); ++i) {
        newtListboxAppendEntry(list, items[i].c_str(),
                               reinterpret_cast<void*>(static_cast<intptr_t>(i)));
    }
    newtComponent check = newtCheckbox(10, checkRow, "Enabled", ' ', nullptr, nullptr);
    newtComponent ok = newtButton(12, buttonRow, "OK");
    newtComponent cancel = newtButton(28, buttonRow, "Cancel");
    newtComponent form = newtForm(nullptr, nullptr, 0);
    newtFormAddComponents(form, label, entry, list, check, ok, cancel, nullptr);

    newtExitStruct es{};
    newtFormRun(form, &es);

    // Copy everything out before the form (and the entry's buffer) is destroyed.
    const std::string text = newtEntryGetValue(entry);
    const auto selected = reinterpret_cast<intptr_t>(newtListboxGetCurrent(list));
    const char state = newtCheckboxGetValue(check);
    std::string button = "none";
    int status = 4;
    if (es.reason == newtExitStruct::NEWT_EXIT_COMPONENT && es.u.co == ok) {
        button = "OK";
        status = 0;
    } else if (es.reason == newtExitStruct::NEWT_EXIT_COMPONENT && es.u.co == cancel) {
        button = "Cancel";
        status = 3;
    } else if (es.reason == newtExitStruct::NEWT_EXIT_HOTKEY) {
        button = "key" + std::to_string(es.u.key);
    }
    newtFormDestroy(form);
    newtPopWindow();
    newtFinished();

    std::printf("entry=%s list=%ld check=%c button=%s\n", text.c_str(), static_cast<long>(selected),
                state, button.c_str());
    return status;
}
