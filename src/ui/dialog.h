// The one owner of a screen's newt window and form. A screen builds its components through it,
// lays them out in grids, opens it, and runs it with a table of handlers keyed by component id:
// every form of the program closes the same way (Cancel, Close, Ctrl-O) and frees everything on
// every return path.
#pragma once

#include <newt.h>

#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>

#include "ui/newt_raii.h"

namespace zolui {

// The hot key every form takes, as the help line promises: it closes the form as Cancel would.
inline constexpr int kCloseKey = 15;

// Ids that the dialog itself understands. Screens number their own components from 1.
inline constexpr int kOkId = 1000;
inline constexpr int kCancelId = 1001;  // also Close: both leave without saving

// Draws every line of the terminal again from newt's picture of it, without leaving the full
// screen: repairs what a sub-screen or another program left on the terminal.
void redrawAll();

// What a handler tells the loop.
enum class Next { Stay, Close };

using Handler = std::function<Next()>;
using Handlers = std::map<int, Handler>;

struct ButtonSpec {
    std::string text;
    int id = kNoId;
};

class Dialog {
  public:
    Dialog() = default;
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    Form& form() { return form_; }

    // Adds a component in focus order (see Form::add).
    newtComponent add(newtComponent co, int id = kNoId) { return form_.add(co, id); }
    // A row of buttons added to the form in order: the first `lead` columns in, each next one
    // `gap` columns after the one before.
    Grid buttonRow(std::initializer_list<ButtonSpec> buttons, int gap = 3, int lead = 0);

    // Opens the window wrapped around the grid and adds the standard hot key.
    void open(const Grid& grid, std::string_view title);

    // Runs before every run of the form: a screen that hands the terminal to sub-screens
    // repaints it here.
    void beforeEachRun(std::function<void()> fn) { beforeRun_ = std::move(fn); }
    // The usual case of that: every line of the terminal is drawn again before each run.
    void redrawBeforeEachRun() { beforeRun_ = redrawAll; }

    // Runs the form until a handler answers Close, or until the form is left by kCancelId,
    // Ctrl-O or a lost terminal. A component without a handler runs the form again; OK without
    // a handler closes. Returns the id that closed the dialog (kCancelId for a hot key).
    int run(const Handlers& handlers = {});

  private:
    // Declared first, destroyed last: the form dies before its window is popped.
    Window window_;
    Form form_;
    std::function<void()> beforeRun_;
};

}  // namespace zolui
