// The dialog toolkit every screen uses: palette, message boxes, button choice, entry filters,
// range-enable callbacks and text fitting (Japanese EUC-JP included).
#pragma once

#include <newt.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "ui/encoding.h"
#include "ui/newt_raii.h"

// The product's palette, given to newtSetColors at start-up. The two selected-listbox slots are
// null: newt passes them on to S-Lang, which then uses the terminal's default colours.
extern struct newtColors myColors;

// A checkbox that enables or disables a range of components: components[first..last]
// (inclusive), governed by the checkbox whose result character is *result (blank = unchecked).
struct RangeEnableRecord {
    newtComponent* components;
    std::int32_t first;
    std::int32_t last;
    char* result;
};
static_assert(std::is_standard_layout_v<RangeEnableRecord>);
static_assert(offsetof(RangeEnableRecord, components) < offsetof(RangeEnableRecord, first) &&
              offsetof(RangeEnableRecord, first) < offsetof(RangeEnableRecord, last) &&
              offsetof(RangeEnableRecord, last) < offsetof(RangeEnableRecord, result));

// One record per kind for the whole process. Screens never fill them by hand: zolui::RangeEnable
// (below, and Dialog::enableWhileChecked) owns a record for a screen's life.
extern RangeEnableRecord CheckStruct;     // entries, for CheckButtonFunc
extern RangeEnableRecord CheckboxStruct;  // checkboxes, for CheckBoxFunc

// Modal boxes. Texts are in the program's encoding (EUC-JP in Japanese mode).
void msgWindow(const char* title, const char* buttonText, const char* text);
void msgWindowEx(const char* title, const char* buttonText, const char* text);

// Modal choice among the caller's buttons. Returns the pressed button, or null when the form
// ended otherwise (hot key 15). The form destroys the buttons: compare the result with the
// handles, never use them after the call.
newtComponent SelectFromButtons(const char* title, const char* text, newtComponent* buttons,
                                int count);
newtComponent SelectFromButtonsEx(const char* title, const char* text, newtComponent* buttons,
                                  int count);

// Entry filters for newtEntrySetFilter: return the key to accept it, 0 to refuse it.
int EntryNumricFilter(newtComponent entry, void* data, int ch, int cursor);
int EntryTelFilter(newtComponent entry, void* data, int ch, int cursor);
int EntryNumFilter(newtComponent entry, void* data, int ch, int cursor);
int EntryIPFilter(newtComponent entry, void* data, int ch, int cursor);
int EntryScheduleFilter(newtComponent entry, void* data, int ch, int cursor);

// Component callbacks for newtComponentAddCallback on the governing checkbox.
void CheckButtonFunc(newtComponent co, void* data);
void CheckBoxFunc(newtComponent co, void* data);

// A wrapped textbox sized to the formatted text.
newtComponent properTextbox(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Text fitting over malloc'd buffers. smartTextDimensions and breakLines take over `text`
// (which must come from malloc) and return the text to use, which the caller frees.
char* smartTextDimensions(char* text, int* width, int* height);
void textDimensions(const char* text, int* width, int* height);
char* breakLines(char* text, int width, int* lines);
// Writes one line of `text` (at most `width` bytes, plus a line feed when cut) at `out`,
// NUL-terminated, and returns how many bytes of `text` it used. `marks[i]` is non-zero when a
// line may be broken after text[i].
int addALine(char* out, const char* text, int width, const char* marks);

namespace zolui {

// What a range-enabling checkbox governs: entries (CheckStruct, CheckButtonFunc) or checkboxes
// and radio buttons (CheckboxStruct, CheckBoxFunc).
enum class RangeKind { Entries, Checkboxes };

// The owner of one of the two range-enable records: it points the record at `fields`, governed by
// the checkbox whose result character is *mark, for its own life, and gives the record back as it
// found it when it ends, so that no record outlives the components it names. A modal screen
// opened from one that owns the record of the same kind borrows it while it runs.
class RangeEnable {
  public:
    RangeEnable(RangeKind kind, char* mark, std::vector<newtComponent> fields);
    ~RangeEnable();
    RangeEnable(const RangeEnable&) = delete;
    RangeEnable& operator=(const RangeEnable&) = delete;

    // Enables the fields while the checkbox is checked and disables them while it is not.
    void apply() const;

  private:
    RangeKind kind_;
    std::vector<newtComponent> fields_;
    RangeEnableRecord outer_;
};

// A menu row: the label padded with blanks and cut to 40 columns on a whole character, as every
// menu of the program shows its rows.
inline constexpr std::size_t kMenuRowWidth = 40;
std::string menuRowText(std::string_view label);

struct TextSize {
    int width = 1;
    int height = 1;
};

// The same fitting for screens, over std::string: no raw buffers outside the toolkit.
TextSize measureText(std::string_view text);
// One mark per byte: non-zero when a line may be broken after that byte.
std::string breakMarks(std::string_view text);
std::string wrapText(std::string_view text, int width, int* lines = nullptr);
// Keeps the text when it is narrower than 90 % of `screenCols`, else wraps it at that width.
std::string fitText(std::string_view text, int screenCols, TextSize& size);
std::string fitTextToScreen(std::string_view text, TextSize& size);  // newtGetScreenSize

}  // namespace zolui
