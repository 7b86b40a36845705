// The screen's colours: the product's palette with the administrator's choices over it. newt
// reads NEWT_COLORS_FILE and NEWT_COLORS in newtInit, but the product sets its own palette after
// that, which would undo them; so the same overrides are applied again on top of myColors.
// NEWT_MONO needs nothing here: newt then ignores every palette and shows focus in reverse video.
#pragma once

#include <newt.h>

#include <deque>
#include <string>
#include <string_view>

namespace zolui {

class Palette {
  public:
    explicit Palette(const newtColors& base) : colors_(base) {}
    Palette(const Palette&) = delete;  // colors() points into this object
    Palette& operator=(const Palette&) = delete;

    // Applies overrides in newt's form: entries "element=foreground,background" separated by
    // ';', ':' or white space. An empty colour keeps the current one; an unknown element or an
    // entry without '=' and ',' is skipped, as newt skips it. The scales take the background.
    // Returns how many entries were applied.
    int apply(std::string_view overrides);

    const newtColors& colors() const { return colors_; }

  private:
    newtColors colors_;
    std::deque<std::string> names_;  // the colour names applied; a deque keeps them in place
};

// myColors with NEWT_COLORS_FILE's and then NEWT_COLORS's overrides: what start-up gives
// newtSetColors. Built once and kept for the whole run, since newt may keep the names.
const newtColors& StartupPalette();

}  // namespace zolui
