// The dialog owner: button rows, the wrapped window with the standard hot key, and the run loop
// that dispatches to a screen's handlers.
#include "ui/dialog.h"

#include <slang.h>

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

void Dialog::open(const Grid& grid, std::string_view title) {
    window_.openWrapped(grid, title);
    form_.addHotKey(kCloseKey, kCancelId);
}

int Dialog::run(const Handlers& handlers) {
    for (;;) {
        if (beforeRun_)
            beforeRun_();
        const RunResult result = form_.run();
        // A terminal that is gone (read error) would otherwise spin here for ever.
        if (result.reason == RunResult::Reason::Error)
            return kCancelId;
        if (result.reason == RunResult::Reason::HotKey) {
            if (result.key == kCloseKey)
                return kCancelId;
            continue;
        }
        if (result.reason != RunResult::Reason::Component)
            continue;
        const auto handler = handlers.find(result.id);
        if (handler != handlers.end()) {
            if (handler->second() == Next::Close)
                return result.id;
            continue;
        }
        if (result.id == kCancelId || result.id == kOkId)
            return result.id;
    }
}

void redrawAll() {
    SLsmg_touch_lines(0, static_cast<unsigned>(SLtt_Screen_Rows));
    newtRefresh();
}

}  // namespace zolui
