// Entry filters, the range-enable callbacks that screens attach to their fields, and the owner of
// the range-enable records.
#include <newt.h>

#include <utility>

#include "ui/toolkit.h"

RangeEnableRecord CheckStruct = {nullptr, 0, -1, nullptr};
RangeEnableRecord CheckboxStruct = {nullptr, 0, -1, nullptr};

namespace {

// Keys that move or edit inside an entry; every filter lets them through.
bool isEditingKey(int ch) {
    switch (ch) {
        case NEWT_KEY_UP:
        case NEWT_KEY_DOWN:
        case NEWT_KEY_LEFT:
        case NEWT_KEY_RIGHT:
        case NEWT_KEY_BKSPC:
        case NEWT_KEY_DELETE:
        case NEWT_KEY_HOME:
        case NEWT_KEY_END:
            return true;
        default:
            return false;
    }
}

// Digits are tested on the key code itself: newt's special keys lie above 255, where a
// character-class test (isdigit) would be undefined.
int accept(int ch, const char* extra) {
    if ((ch >= '0' && ch <= '9') || isEditingKey(ch)) {
        return ch;
    }
    for (const char* p = extra; *p; ++p) {
        if (ch == static_cast<unsigned char>(*p)) {
            return ch;
        }
    }
    // Refused: newt leaves the key to the form, so Tab and Enter still work.
    return 0;
}

void setRange(const RangeEnableRecord& rec, void (*setFlags)(newtComponent, int, newtFlagsSense)) {
    if (!rec.components || !rec.result) {
        return;
    }
    const newtFlagsSense sense = *rec.result != ' ' ? NEWT_FLAGS_RESET : NEWT_FLAGS_SET;
    for (std::int32_t i = rec.first; i <= rec.last; ++i) {
        setFlags(rec.components[i], NEWT_FLAG_DISABLED, sense);
    }
}

}  // namespace

int EntryNumricFilter(newtComponent, void*, int ch, int) {
    return accept(ch, "");
}
int EntryTelFilter(newtComponent, void*, int ch, int) {
    return accept(ch, " -()");
}
int EntryNumFilter(newtComponent, void*, int ch, int) {
    return accept(ch, "-()");
}
int EntryIPFilter(newtComponent, void*, int ch, int) {
    return accept(ch, ".");
}
int EntryScheduleFilter(newtComponent, void*, int ch, int) {
    return accept(ch, "-,.");
}

// The checkbox's result character decides: checked (not blank) enables the governed fields,
// unchecked disables them.
void CheckButtonFunc(newtComponent, void*) {
    setRange(CheckStruct, newtEntrySetFlags);
}
void CheckBoxFunc(newtComponent, void*) {
    setRange(CheckboxStruct, newtCheckboxSetFlags);
}

namespace zolui {

namespace {

RangeEnableRecord& recordOf(RangeKind kind) {
    return kind == RangeKind::Entries ? CheckStruct : CheckboxStruct;
}

}  // namespace

RangeEnable::RangeEnable(RangeKind kind, char* mark, std::vector<newtComponent> fields)
    : kind_(kind), fields_(std::move(fields)), outer_(recordOf(kind)) {
    recordOf(kind_) = {fields_.data(), 0, static_cast<std::int32_t>(fields_.size()) - 1, mark};
}

RangeEnable::~RangeEnable() {
    // A screen opened from another that governs fields of the same kind hands the record back.
    recordOf(kind_) = outer_;
}

void RangeEnable::apply() const {
    if (kind_ == RangeKind::Entries) {
        CheckButtonFunc(nullptr, nullptr);
    } else {
        CheckBoxFunc(nullptr, nullptr);
    }
}

}  // namespace zolui
