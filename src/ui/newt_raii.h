// Owners for newt resources and typed form results: every screen builds its dialog from these,
// so that leaving any scope destroys the form and pops the window, on every return path.
#pragma once

#include <newt.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zolui {

inline constexpr int kNoId = -1;

// Why a form run ended, as a value a screen can switch on. `id` is the id given when the
// component or hot key was registered with Form::add / Form::addHotKey (kNoId when none was).
struct RunResult {
    enum class Reason { Component, HotKey, Timer, FdReady, Error };
    Reason reason = Reason::Error;
    int id = kNoId;
    int key = 0;                        // the key code when reason == HotKey
    newtComponent component = nullptr;  // for the toolkit itself; screens switch on `id`

    bool isComponent(int wantId) const { return reason == Reason::Component && id == wantId; }
    bool isHotKey(int wantKey) const { return reason == Reason::HotKey && key == wantKey; }
};

// Owns a newt form. Components added to it belong to it: destroying the form frees them.
// Declare it after the screen's Window so that it is destroyed before the window is popped.
class Form {
  public:
    explicit Form(int flags = 0, newtComponent vertBar = nullptr);
    ~Form();
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    newtComponent get() const { return form_; }

    // Adds a component (in focus order) and returns it, so creating and adding can be one step.
    newtComponent add(newtComponent co, int id = kNoId);
    void addHotKey(int key, int id = kNoId);
    void setCurrent(newtComponent co);
    void setTimer(int millisecs);

    RunResult run();

    // Typed callbacks: the form keeps the state and detaches every callback and filter before
    // it destroys its components.
    void onActivate(newtComponent co, std::function<void()> fn);
    void setFilter(newtComponent entry, std::function<int(int ch, int cursor)> fn);

  private:
    struct CallbackSlot;
    struct FilterSlot;

    newtComponent form_ = nullptr;
    std::vector<std::pair<newtComponent, int>> ids_;
    std::vector<std::pair<int, int>> hotKeys_;
    int timerMs_ = 0;  // the screen's own timer, 0 for none
    // How often a form run looks at the terminal (new size, SIGTERM, SIGHUP).
    static constexpr int kTerminalLookMs = 100;
    std::vector<std::unique_ptr<CallbackSlot>> callbacks_;
    std::vector<std::unique_ptr<FilterSlot>> filters_;
};

struct Pad {
    int left = 0, top = 0, right = 0, bottom = 0;
};

// Owns a newt grid. newtGridFree(grid, 1) frees its sub-grids but never its components, which
// belong to the form they were added to.
class Grid {
  public:
    Grid(int cols, int rows);
    explicit Grid(newtGrid adopt) : grid_(adopt) {}
    ~Grid();
    Grid(Grid&& other) noexcept : grid_(std::exchange(other.grid_, nullptr)) {}
    Grid& operator=(Grid&& other) noexcept;
    Grid(const Grid&) = delete;
    Grid& operator=(const Grid&) = delete;

    newtGrid get() const { return grid_; }
    newtGrid release() { return std::exchange(grid_, nullptr); }

    Grid& set(int col, int row, newtComponent co, Pad pad = {}, int anchor = 0, int flags = 0);
    // The parent grid takes the sub-grid over and frees it with itself.
    Grid& set(int col, int row, Grid&& sub, Pad pad = {}, int anchor = 0, int flags = 0);
    void size(int& width, int& height) const;

  private:
    newtGrid grid_ = nullptr;
};

// A newt window, popped when the guard dies. Declared before the form, opened once the grid is
// built: the form then dies first, the window last.
// Every open window is on the toolkit's stack with its size, so that a new terminal size can take
// them all down and open them again centred for it (see terminal_events.h); components sit
// relative to their window, so they move with it.
class Window {
  public:
    Window() = default;
    ~Window() { close(); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void openWrapped(const Grid& grid, std::string_view title);
    void openCentered(int width, int height, std::string_view title);
    void openAt(int left, int top, int width, int height, std::string_view title);
    bool isOpen() const { return open_; }
    void close();

  private:
    friend struct WindowStack;
    enum class Place { Centered, At };
    void open(Place place, int left, int top, int width, int height, std::string_view title);
    void map();  // opens the newt window at the recorded place

    bool open_ = false;
    bool mapped_ = false;  // a newt window stands for it now (not while taken down for a resize)
    Place place_ = Place::Centered;
    int left_ = 0, top_ = 0, width_ = 0, height_ = 0;
    std::string title_;             // kept for the window's life: newt may keep the pointer
    newtComponent form_ = nullptr;  // the form last run in it, drawn again with it
};

// The toolkit's open windows, bottom first: what a new terminal size redraws.
struct WindowStack {
    // Takes every window down (newest first), leaving the root screen.
    static void unmapAll();
    // Draws the root again (help line, root texts) and opens every window again, oldest first,
    // each with the form last run in it.
    static void mapAll();
    // The form that runs in the newest window, and the form that died.
    static void formRuns(newtComponent form);
    static void formDies(newtComponent form);
};

// Gives the terminal back to the shell for the guard's life (newtSuspend / newtResume).
class Suspended {
  public:
    Suspended();
    ~Suspended();
    Suspended(const Suspended&) = delete;
    Suspended& operator=(const Suspended&) = delete;
};

// Component factories: every text goes through toNewt, so screens never hand EUC-JP to newt.
newtComponent label(int left, int top, std::string_view text);
void setLabelText(newtComponent label, std::string_view text);
// A label of one line per text line: newt labels draw one line only, so a text with line feeds
// becomes a textbox in the label's colours, sized to the text.
newtComponent multiLineLabel(int left, int top, std::string_view text);
newtComponent button(int left, int top, std::string_view text);
newtComponent compactButton(int left, int top, std::string_view text);
newtComponent checkbox(int left, int top, std::string_view text, char defValue = ' ',
                       const char* seq = nullptr, char* result = nullptr);
newtComponent radioButton(int left, int top, std::string_view text, bool isDefault,
                          newtComponent prevButton);

// A group of radio buttons that answers which of them is chosen by position, so that no screen
// compares newt's component pointers. Each button still has to be added to the form.
class RadioGroup {
  public:
    // A new button after the others; at most one of them should be the default.
    newtComponent add(std::string_view text, bool isDefault);
    const std::vector<newtComponent>& buttons() const { return buttons_; }
    // The position of the chosen button, or -1 while none is chosen.
    int currentIndex() const;

  private:
    std::vector<newtComponent> buttons_;
};

newtComponent entry(int left, int top, std::string_view initial, int width, int flags = 0);
void setEntryText(newtComponent entry, std::string_view text, bool cursorAtEnd = true);
// The entry's current text, copied out and converted back to the program's encoding.
std::string entryText(newtComponent entry);
newtComponent textbox(int left, int top, int width, int height, int flags, std::string_view text);
void setTextboxText(newtComponent textbox, std::string_view text);
// Listboxes keyed by row index, as every list screen uses them: `rows` high, `width` columns wide
// (0: as wide as its widest row), with newt's listbox flags (NEWT_FLAG_RETURNEXIT for menus).
newtComponent listbox(int rows, int flags = 0, int width = 0);
int listboxAppend(newtComponent listbox, std::string_view text, const void* key);
int listboxAppendIndex(newtComponent listbox, std::string_view text, int index);
// The index (key) of the current row; -1 when the listbox is empty.
int listboxCurrentIndex(newtComponent listbox);
// Makes the row with that index (key) current; nothing happens when no row has it.
void listboxSetCurrentIndex(newtComponent listbox, int index);
void listboxClear(newtComponent listbox);
void listboxSetEntry(newtComponent listbox, int num, std::string_view text);
void drawRootText(int col, int row, std::string_view text);

}  // namespace zolui
