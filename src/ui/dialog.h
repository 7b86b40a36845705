// The one owner of a screen's newt window and form. A screen builds its components through it,
// lays them out in grids, opens it, and runs it with a table of handlers keyed by component id:
// every form of the program closes the same way (Cancel, Close, Ctrl-O) and frees everything on
// every return path.
#pragma once

#include <newt.h>

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ui/newt_raii.h"
#include "ui/toolkit.h"

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

// How a dialog may be left without a handler: by Cancel/Close and Ctrl-O (every screen), or only
// through its handlers (the message boxes, which close by their button alone).
enum class Closing { CancelOrCtrlO, HandlersOnly };

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
    // Adds an entry for digits (or another filter's characters), `width` columns wide, that
    // takes at most width - 1 characters. newt keeps the cursor on the last character of a full
    // entry that does not scroll, so that erasing from the end leaves the first character and
    // typing goes in front of it (a 5-column entry holding 12345, erased and retyped with 60,
    // would hold 605). One column to spare, and scrolling for a longer stored value, keep what is
    // shown what is read.
    newtComponent numberEntry(std::string_view initial, int width,
                              newtEntryFilter filter = EntryNumricFilter, int flags = 0,
                              int id = kNoId);
    // The fields are enabled while the checkbox (result character *mark) is checked and disabled
    // while it is not, from now on (see RangeEnable).
    void enableWhileChecked(newtComponent checkbox, char* mark, std::vector<newtComponent> fields,
                            RangeKind kind = RangeKind::Entries);
    // A row of buttons added to the form in order: the first `lead` columns in, each next one
    // `gap` columns after the one before.
    Grid buttonRow(std::initializer_list<ButtonSpec> buttons, int gap = 3, int lead = 0);

    // Opens the window wrapped around the grid and, unless closing says otherwise, adds the
    // standard hot key Ctrl-O.
    void open(const Grid& grid, std::string_view title, Closing closing = Closing::CancelOrCtrlO);
    // A key the form catches so that it does nothing (the run goes on).
    void ignoreKey(int key) { form_.addHotKey(key); }

    // Runs before every run of the form: a screen that hands the terminal to sub-screens
    // repaints it here.
    void beforeEachRun(std::function<void()> fn) { beforeRun_ = std::move(fn); }
    // The usual case of that: every line of the terminal is drawn again before each run.
    void redrawBeforeEachRun() { beforeRun_ = redrawAll; }

    // Runs the form until a handler answers Close, or until the form is left by kCancelId,
    // Ctrl-O, newt's own F12 or a lost terminal. A component goes to the handler of its id;
    // without one it runs the form again, but OK and Cancel close. Other hot keys run the form
    // again. With Closing::HandlersOnly only a handler (or a lost terminal) closes. Returns the id
    // that closed the dialog (kCancelId for Ctrl-O, F12 or a lost terminal).
    int run(const Handlers& handlers = {});

  private:
    bool closesOnHotKey(int key) const;
    // What one run of the form means: the id that closes the dialog, or nothing to run again.
    std::optional<int> dispatch(const RunResult& result, const Handlers& handlers) const;

    // Declared first, destroyed last: the form dies before its window is popped, and the
    // range-enable records let go of the components before the form frees them.
    Window window_;
    Form form_;
    std::vector<std::unique_ptr<RangeEnable>> ranges_;
    std::function<void()> beforeRun_;
    Closing closing_ = Closing::CancelOrCtrlO;
};

}  // namespace zolui
