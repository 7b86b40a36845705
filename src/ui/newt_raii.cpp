// Owners for newt forms, grids and windows, typed form results, and the component factories
// that carry every text across the encoding boundary.
#include "ui/newt_raii.h"

#include <wchar.h>

#include <algorithm>
#include <cstdint>
#include <cwchar>

#include "ui/encoding.h"
#include "ui/terminal_events.h"
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
        WindowStack::formDies(form_);
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
    timerMs_ = millisecs;
    newtFormSetTimer(form_, millisecs);
}

RunResult Form::run() {
    newtExitStruct es{};
    WindowStack::formRuns(form_);
    for (;;) {
        // The program is ending (SIGTERM, SIGHUP): every form run ends as on a lost terminal.
        if (!handleTerminalEvents())
            return RunResult{};
        // A form without a timer of its own wakes now and then to look for a new terminal size
        // or a signal. (Not by watching the handlers' pipe: newt never frees a form's list of
        // watched descriptors.)
        const bool watching = terminalEventFd() >= 0;
        if (timerMs_ == 0)
            newtFormSetTimer(form_, watching ? kTerminalLookMs : 0);
        newtFormRun(form_, &es);
        if (es.reason == newtExitStruct::NEWT_EXIT_TIMER && timerMs_ == 0)
            continue;
        break;
    }
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

namespace {

std::vector<Window*>& openWindows() {
    static std::vector<Window*> windows;
    return windows;
}

struct RootText {
    int col, row;
    std::string text;
};
std::vector<RootText>& rootTexts() {
    static std::vector<RootText> texts;
    return texts;
}

// Screen columns of a text in newt's encoding, as newt measures a window title.
int displayWidth(const std::string& text) {
    std::mbstate_t state{};
    const char* in = text.c_str();
    int width = 0;
    wchar_t wc = 0;
    for (std::size_t left = text.size(); left > 0;) {
        const std::size_t n = std::mbrtowc(&wc, in, left, &state);
        if (n == 0 || n == static_cast<std::size_t>(-1) || n == static_cast<std::size_t>(-2))
            return width + static_cast<int>(left);
        const int w = ::wcwidth(wc);
        width += w > 0 ? w : 0;
        in += n;
        left -= n;
    }
    return width;
}

}  // namespace

void Window::open(Place place, int left, int top, int width, int height, std::string_view title) {
    close();
    title_ = toNewt(title);
    place_ = place;
    left_ = left;
    top_ = top;
    width_ = width;
    height_ = height;
    form_ = nullptr;
    map();
    open_ = true;
    openWindows().push_back(this);
}

void Window::map() {
    const char* title = title_.empty() ? nullptr : title_.c_str();
    if (place_ == Place::Centered) {
        newtCenteredWindow(width_, height_, title);
    } else {
        newtOpenWindow(left_, top_, width_, height_, title);
    }
    mapped_ = true;
}

// As newtGridWrappedWindow places it, but with the window's size known to the toolkit: the grid
// one column and row in, the window two wider and higher, and at least as wide as its title and
// two columns either side, the grid then centred in it.
void Window::openWrapped(const Grid& grid, std::string_view title) {
    int width = 0, height = 0;
    grid.size(width, height);
    int inner = width + 2;
    if (!title.empty())
        inner = std::max(inner, displayWidth(toNewt(title)) + 4);
    open(Place::Centered, 0, 0, inner, height + 2, title);
    newtGridPlace(grid.get(), 1 + (inner - (width + 2)) / 2, 1);
}

void Window::openCentered(int width, int height, std::string_view title) {
    open(Place::Centered, 0, 0, width, height, title);
}

void Window::openAt(int left, int top, int width, int height, std::string_view title) {
    open(Place::At, left, top, width, height, title);
}

void Window::close() {
    if (!open_)
        return;
    if (mapped_)
        newtPopWindow();
    open_ = mapped_ = false;
    auto& windows = openWindows();
    windows.erase(std::remove(windows.begin(), windows.end(), this), windows.end());
}

void WindowStack::unmapAll() {
    auto& windows = openWindows();
    for (auto it = windows.rbegin(); it != windows.rend(); ++it) {
        if ((*it)->mapped_) {
            newtPopWindowNoRefresh();
            (*it)->mapped_ = false;
        }
    }
}

void WindowStack::mapAll() {
    newtCls();
    newtRedrawHelpLine();
    for (const RootText& t : rootTexts())
        newtDrawRootText(t.col, t.row, t.text.c_str());
    for (Window* w : openWindows()) {
        w->map();
        if (w->form_ != nullptr)
            newtDrawForm(w->form_);
    }
    newtRefresh();
}

void WindowStack::formRuns(newtComponent form) {
    if (!openWindows().empty())
        openWindows().back()->form_ = form;
}

void WindowStack::formDies(newtComponent form) {
    for (Window* w : openWindows()) {
        if (w->form_ == form)
            w->form_ = nullptr;
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
    std::string converted = toNewt(text);
    newtDrawRootText(col, row, converted.c_str());
    // Kept to be drawn again after a resize; a text drawn again at its place replaces the old.
    auto& texts = rootTexts();
    std::erase_if(texts, [&](const RootText& t) { return t.col == col && t.row == row; });
    texts.push_back({col, row, std::move(converted)});
}

}  // namespace zolui
