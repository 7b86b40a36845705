// NEWT_COLORS and NEWT_COLORS_FILE over the product's palette.
#include "ui/palette.h"

#include <array>
#include <cstdlib>
#include <fstream>

#include "ui/toolkit.h"

namespace zolui {

namespace {

// newt's element names and the fields of newtColors each sets.
struct Element {
    std::string_view name;
    char* newtColors::*fg;  // null: the element has a background only
    char* newtColors::*bg;
};

constexpr std::array<Element, 23> kElements{{
    {"root", &newtColors::rootFg, &newtColors::rootBg},
    {"border", &newtColors::borderFg, &newtColors::borderBg},
    {"window", &newtColors::windowFg, &newtColors::windowBg},
    {"shadow", &newtColors::shadowFg, &newtColors::shadowBg},
    {"title", &newtColors::titleFg, &newtColors::titleBg},
    {"button", &newtColors::buttonFg, &newtColors::buttonBg},
    {"actbutton", &newtColors::actButtonFg, &newtColors::actButtonBg},
    {"checkbox", &newtColors::checkboxFg, &newtColors::checkboxBg},
    {"actcheckbox", &newtColors::actCheckboxFg, &newtColors::actCheckboxBg},
    {"entry", &newtColors::entryFg, &newtColors::entryBg},
    {"label", &newtColors::labelFg, &newtColors::labelBg},
    {"listbox", &newtColors::listboxFg, &newtColors::listboxBg},
    {"actlistbox", &newtColors::actListboxFg, &newtColors::actListboxBg},
    {"textbox", &newtColors::textboxFg, &newtColors::textboxBg},
    {"acttextbox", &newtColors::actTextboxFg, &newtColors::actTextboxBg},
    {"helpline", &newtColors::helpLineFg, &newtColors::helpLineBg},
    {"roottext", &newtColors::rootTextFg, &newtColors::rootTextBg},
    {"emptyscale", nullptr, &newtColors::emptyScale},
    {"fullscale", nullptr, &newtColors::fullScale},
    {"disentry", &newtColors::disabledEntryFg, &newtColors::disabledEntryBg},
    {"compactbutton", &newtColors::compactButtonFg, &newtColors::compactButtonBg},
    {"actsellistbox", &newtColors::actSelListboxFg, &newtColors::actSelListboxBg},
    {"sellistbox", &newtColors::selListboxFg, &newtColors::selListboxBg},
}};

const Element* findElement(std::string_view name) {
    for (const Element& element : kElements) {
        if (element.name == name)
            return &element;
    }
    return nullptr;
}

constexpr std::string_view kSeparators = ";:\n\r\t ";

std::string readSmallFile(const char* path) {
    std::ifstream in(path, std::ios::binary);
    std::string text;
    // A colour list is a few hundred bytes; anything past 16 KiB is no colour list.
    char c = 0;
    while (text.size() < 16384 && in.get(c))
        text += c;
    return text;
}

}  // namespace

int Palette::apply(std::string_view overrides) {
    int applied = 0;
    size_t pos = 0;
    while (pos < overrides.size()) {
        size_t end = overrides.find_first_of(kSeparators, pos);
        if (end == std::string_view::npos)
            end = overrides.size();
        const std::string_view entry = overrides.substr(pos, end - pos);
        pos = end + 1;
        const size_t eq = entry.find('=');
        const size_t comma = entry.find(',', eq == std::string_view::npos ? 0 : eq);
        if (eq == std::string_view::npos || comma == std::string_view::npos)
            continue;
        const Element* element = findElement(entry.substr(0, eq));
        if (element == nullptr)
            continue;
        const std::string_view fg = entry.substr(eq + 1, comma - eq - 1);
        const std::string_view bg = entry.substr(comma + 1);
        if (!fg.empty() && element->fg != nullptr)
            colors_.*(element->fg) = names_.emplace_back(fg).data();
        if (!bg.empty())
            colors_.*(element->bg) = names_.emplace_back(bg).data();
        ++applied;
    }
    return applied;
}

const newtColors& StartupPalette() {
    static Palette palette(myColors);
    static const bool applied = [] {
        if (const char* file = std::getenv("NEWT_COLORS_FILE"); file != nullptr && *file != '\0')
            palette.apply(readSmallFile(file));
        if (const char* colours = std::getenv("NEWT_COLORS"))
            palette.apply(colours);
        return true;
    }();
    static_cast<void>(applied);
    return palette.colors();
}

}  // namespace zolui
