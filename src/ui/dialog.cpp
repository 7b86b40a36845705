// The dialog owner: button rows, the wrapped window with the standard hot key, and the run loop
// that dispatches to a screen's handlers.
#include "ui/dialog.h"

#include <slang.h>

#include <cstring>
#include <optional>

namespace zolui {

Grid Dialog::buttonRow(std::initializer_list<ButtonSpec> buttons, int gap, int lead) {
    Grid row(static_cast<int>(buttons.size()), 1);
    int col = 0;
    for (const ButtonSpec& spec : buttons) {
        newtComponent b = form_.add(button(-1, -1, spec.text), spec.id);
        row.set(col, 0, b, {.left = col == 0 ? lead : gap});
        ++col;
    }
    return row;
}

newtComponent Dialog::numberEntry(std::string_view initial, int width, newtEntryFilter filter,
                                  int flags, int id) {
    newtComponent co = form_.add(entry(-1, -1, initial, width, flags | NEWT_FLAG_SCROLL), id);
    const auto room = static_cast<std::size_t>(width > 1 ? width - 1 : 1);
    form_.setFilter(co, [co, filter, room](int ch, int cursor) {
        const int key = filter != nullptr ? filter(co, nullptr, ch, cursor) : ch;
        // Keys above 255 move or erase; only a character makes the text longer.
        if (key > 0 && key < 256) {
            const char* text = newtEntryGetValue(co);
            if (text != nullptr && std::strlen(text) >= room) {
                return 0;
            }
        }
        return key;
    });
    return co;
}

void Dialog::enableWhileChecked(newtComponent checkbox, char* mark,
                                std::vector<newtComponent> fields, RangeKind kind) {
    ranges_.push_back(std::make_unique<RangeEnable>(kind, mark, std::move(fields)));
    const RangeEnable* range = ranges_.back().get();
    form_.onActivate(checkbox, [range] { range->apply(); });
    range->apply();
}

void Dialog::open(const Grid& grid, std::string_view title, Closing closing) {
    window_.openWrapped(grid, title);
    closing_ = closing;
    if (closing_ == Closing::CancelOrCtrlO) {
        form_.addHotKey(kCloseKey, kCancelId);
    }
}

bool Dialog::closesOnHotKey(int key) const {
    // Ctrl-O as the help line promises, and newt's own F12, which every form takes unless told
    // not to.
    return closing_ == Closing::CancelOrCtrlO && (key == kCloseKey || key == NEWT_KEY_F12);
}

std::optional<int> Dialog::dispatch(const RunResult& result, const Handlers& handlers) const {
    switch (result.reason) {
        case RunResult::Reason::Error:
            return kCancelId;  // a terminal that is gone would otherwise spin here for ever
        case RunResult::Reason::Component:
        case RunResult::Reason::HotKey:
            break;
        default:
            return std::nullopt;
    }
    if (result.reason == RunResult::Reason::HotKey)
        return closesOnHotKey(result.key) ? std::optional<int>(kCancelId) : std::nullopt;
    if (const auto handler = handlers.find(result.id); handler != handlers.end())
        return handler->second() == Next::Close ? std::optional<int>(result.id) : std::nullopt;
    const bool closes =
        closing_ == Closing::CancelOrCtrlO && (result.id == kCancelId || result.id == kOkId);
    return closes ? std::optional<int>(result.id) : std::nullopt;
}

int Dialog::run(const Handlers& handlers) {
    for (;;) {
        if (beforeRun_)
            beforeRun_();
        if (const std::optional<int> closedBy = dispatch(form_.run(), handlers))
            return *closedBy;
    }
}

void redrawAll() {
    SLsmg_touch_lines(0, static_cast<unsigned>(SLtt_Screen_Rows));
    newtRefresh();
}

}  // namespace zolui
