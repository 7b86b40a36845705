// Owners for newt forms, grids and windows, typed form results, and the component factories
// that carry every text across the encoding boundary.
#include "ui/newt_raii.h"

#include <cstdint>

#include "ui/encoding.h"
#include "ui/toolkit.h"

namespace zolui {

struct Form::CallbackSlot {
    newtComponent co;
    std::function<void()> fn;

    static void trampoline(newtComponent, void* self) {
        auto* slot = static_cast<CallbackSlot*>(self);
        if (slot->fn) {
            slot->fn();
        }
    }
};

struct Form::FilterSlot {
    newtComponent co;
    std::function<int(int, int)> fn;

    static int trampoline(newtComponent, void* self, int ch, int cursor) {
        auto* slot = static_cast<FilterSlot*>(self);
        return slot->fn ? slot->fn(ch, cursor) : ch;
    }
};

Form::Form(int flags, newtComponent vertBar) : form_(newtForm(vertBar, nullptr, flags)) {}

Form::~Form() {
    // Detach first: newt must never call into state that is about to go away.
    for (const auto& slot : callbacks_) {
        newtComponentAddCallback(slot->co, nullptr, nullptr);
    }
    for (const auto& slot : filters_) {
        newtEntrySetFilter(slot->co, nullptr, nullptr);
    }
    if (form_) {
        newtFormDestroy(form_);
    }
}

newtComponent Form::add(newtComponent co, int id) {
    if (!co) {
        return co;
    }
    newtFormAddComponent(form_, co);
    if (id != kNoId) {
        ids_.emplace_back(co, id);
    }
    return co;
}

void Form::addHotKey(int key, int id) {
    newtFormAddHotKey(form_, key);
    if (id != kNoId) {
        hotKeys_.emplace_back(key, id);
    }
}

void Form::setCurrent(newtComponent co) {
    newtFormSetCurrent(form_, co);
}

void Form::setTimer(int millisecs) {
    newtFormSetTimer(form_, millisecs);
}

RunResult Form::run() {
    newtExitStruct es{};
    newtFormRun(form_, &es);
    RunResult result;
    switch (es.reason) {
        case newtExitStruct::NEWT_EXIT_HOTKEY:
            result.reason = RunResult::Reason::HotKey;
            result.key = es.u.key;
            for (const auto& [key, id] : hotKeys_) {
                if (key == es.u.key) {
                    result.id = id;
                }
            }
            break;
        case newtExitStruct::NEWT_EXIT_COMPONENT:
            result.reason = RunResult::Reason::Component;
            result.component = es.u.co;
            for (const auto& [co, id] : ids_) {
                if (co == es.u.co) {
                    result.id = id;
                }
            }
            break;
        case newtExitStruct::NEWT_EXIT_TIMER:
            result.reason = RunResult::Reason::Timer;
            break;
        case newtExitStruct::NEWT_EXIT_FDREADY:
            result.reason = RunResult::Reason::FdReady;
            break;
        default:
            result.reason = RunResult::Reason::Error;
            break;
    }
    return result;
}

void Form::onActivate(newtComponent co, std::function<void()> fn) {
    auto slot = std::make_unique<CallbackSlot>(CallbackSlot{co, std::move(fn)});
    newtComponentAddCallback(co, &CallbackSlot::trampoline, slot.get());
    callbacks_.push_back(std::move(slot));
}

void Form::setFilter(newtComponent entry, std::function<int(int, int)> fn) {
    auto slot = std::make_unique<FilterSlot>(FilterSlot{entry, std::move(fn)});
    newtEntrySetFilter(entry, &FilterSlot::trampoline, slot.get());
    filters_.push_back(std::move(slot));
}

Grid::Grid(int cols, int rows) : grid_(newtCreateGrid(cols, rows)) {}

Grid::~Grid() {
    if (grid_) {
        newtGridFree(grid_, 1);
    }
}

Grid& Grid::operator=(Grid&& other) noexcept {
    if (this != &other) {
        if (grid_) {
            newtGridFree(grid_, 1);
        }
        grid_ = std::exchange(other.grid_, nullptr);
    }
    return *this;
}

Grid& Grid::set(int col, int row, newtComponent co, Pad pad, int anchor, int flags) {
    newtGridSetField(grid_, col, row, NEWT_GRID_COMPONENT, co, pad.left, pad.top, pad.right,
                     pad.bottom, anchor, flags);
    return *this;
}

Grid& Grid::set(int col, int row, Grid&& sub, Pad pad, int anchor, int flags) {
    newtGridSetField(grid_, col, row, NEWT_GRID_SUBGRID, sub.release(), pad.left, pad.top,
                     pad.right, pad.bottom, anchor, flags);
    return *this;
}

void Grid::size(int& width, int& height) const {
    newtGridGetSize(grid_, &width, &height);
}

void Window::opened() {
    open_ = true;
}

void Window::openWrapped(const Grid& grid, std::string_view title) {
    close();
    title_ = toNewt(title);
    newtGridWrappedWindow(grid.get(), title.empty() ? nullptr : title_.data());
    opened();
}

void Window::openCentered(int width, int height, std::string_view title) {
    close();
    title_ = toNewt(title);
    newtCenteredWindow(width, height, title.empty() ? nullptr : title_.c_str());
    opened();
}

void Window::openAt(int left, int top, int width, int height, std::string_view title) {
    close();
    title_ = toNewt(title);
    newtOpenWindow(left, top, width, height, title.empty() ? nullptr : title_.c_str());
    opened();
}

void Window::close() {
    if (open_) {
        newtPopWindow();
        open_ = false;
    }
}

Suspended::Suspended() {
    newtSuspend();
}
Suspended::~Suspended() {
    newtResume();
}

newtComponent label(int left, int top, std::string_view text) {
    return newtLabel(left, top, toNewt(text).c_str());
}

newtComponent multiLineLabel(int left, int top, std::string_view text) {
    if (text.find('\n') == std::string_view::npos) {
        return label(left, top, text);
    }
    const TextSize size = measureText(text);
    newtComponent tb = textbox(left, top, size.width, size.height, 0, text);
    newtTextboxSetColors(tb, NEWT_COLORSET_LABEL, NEWT_COLORSET_LABEL);
    return tb;
}

void setLabelText(newtComponent label, std::string_view text) {
    newtLabelSetText(label, toNewt(text).c_str());
}

newtComponent button(int left, int top, std::string_view text) {
    return newtButton(left, top, toNewt(text).c_str());
}

newtComponent compactButton(int left, int top, std::string_view text) {
    return newtCompactButton(left, top, toNewt(text).c_str());
}

newtComponent checkbox(int left, int top, std::string_view text, char defValue, const char* seq,
                       char* result) {
    return newtCheckbox(left, top, toNewt(text).c_str(), defValue, seq, result);
}

newtComponent radioButton(int left, int top, std::string_view text, bool isDefault,
                          newtComponent prevButton) {
    return newtRadiobutton(left, top, toNewt(text).c_str(), isDefault ? 1 : 0, prevButton);
}

newtComponent RadioGroup::add(std::string_view text, bool isDefault) {
    newtComponent button =
        radioButton(-1, -1, text, isDefault, buttons_.empty() ? nullptr : buttons_.back());
    buttons_.push_back(button);
    return button;
}

int RadioGroup::currentIndex() const {
    if (buttons_.empty()) {
        return -1;
    }
    const newtComponent chosen = newtRadioGetCurrent(buttons_.front());
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        if (buttons_[i] == chosen) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

newtComponent entry(int left, int top, std::string_view initial, int width, int flags) {
    return newtEntry(left, top, toNewt(initial).c_str(), width, nullptr, flags);
}

void setEntryText(newtComponent entry, std::string_view text, bool cursorAtEnd) {
    newtEntrySet(entry, toNewt(text).c_str(), cursorAtEnd ? 1 : 0);
}

std::string entryText(newtComponent entry) {
    const char* value = newtEntryGetValue(entry);
    return fromNewt(value ? value : "");
}

newtComponent textbox(int left, int top, int width, int height, int flags, std::string_view text) {
    newtComponent tb = newtTextbox(left, top, width, height, flags);
    setTextboxText(tb, text);
    return tb;
}

void setTextboxText(newtComponent textbox, std::string_view text) {
    newtTextboxSetText(textbox, toNewt(text).c_str());
}

newtComponent listbox(int rows, int flags, int width) {
    newtComponent co = newtListbox(-1, -1, rows, flags);
    if (width > 0) {
        newtListboxSetWidth(co, width);
    }
    return co;
}

int listboxAppend(newtComponent listbox, std::string_view text, const void* key) {
    return newtListboxAppendEntry(listbox, toNewt(text).c_str(), key);
}

int listboxAppendIndex(newtComponent listbox, std::string_view text, int index) {
    return listboxAppend(listbox, text, reinterpret_cast<const void*>(std::intptr_t{index}));
}

int listboxCurrentIndex(newtComponent listbox) {
    // An empty listbox answers null, the same as the key of row 0: ask for the count first.
    if (newtListboxItemCount(listbox) <= 0) {
        return -1;
    }
    return static_cast<int>(reinterpret_cast<std::intptr_t>(newtListboxGetCurrent(listbox)));
}

void listboxSetCurrentIndex(newtComponent listbox, int index) {
    newtListboxSetCurrentByKey(listbox, reinterpret_cast<void*>(std::intptr_t{index}));
}

void listboxClear(newtComponent listbox) {
    newtListboxClear(listbox);
}

void listboxSetEntry(newtComponent listbox, int num, std::string_view text) {
    newtListboxSetEntry(listbox, num, toNewt(text).c_str());
}

void drawRootText(int col, int row, std::string_view text) {
    newtDrawRootText(col, row, toNewt(text).c_str());
}

}  // namespace zolui
