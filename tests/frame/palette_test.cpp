// The administrator's colours over the product's palette: NEWT_COLORS (and NEWT_COLORS_FILE) read
// as newt reads them, seen in the cells of the drawn main menu, and NEWT_MONO.
#include <gtest/gtest.h>

#include "frame_test_util.h"
#include "ui/palette.h"
#include "ui/toolkit.h"

namespace {

using zoltest::ProductRoot;

std::string str(const char* colour) {
    return colour == nullptr ? "(null)" : colour;
}

// Parsing as newt parses: entries and separators, empty colours, the scales' single colour, and
// what is skipped.
TEST(Palette, AppliesNewtColoursEntries) {
    struct Case {
        const char* overrides;
        int applied;
        std::string rootFg, rootBg, titleFg, emptyScale;
    };
    const newtColors& base = myColors;
    const std::string fg = str(base.rootFg), bg = str(base.rootBg), title = str(base.titleFg),
                      scale = str(base.emptyScale);
    const Case cases[] = {
        {"", 0, fg, bg, title, scale},
        {"root=,red", 1, fg, "red", title, scale},
        {"root=green,", 1, "green", bg, title, scale},
        {"root=green,red;title=white,blue", 2, "green", "red", "white", scale},
        {"root=a,b:title=c,d root=e,f\ttitle=g,\n", 4, "e", "f", "g", scale},
        {"emptyscale=white,cyan", 1, fg, bg, title, "cyan"},
        {"emptyscale=white,", 1, fg, bg, title, scale},
        {"nosuch=red,red;root=red;=red,red;root;ROOT=red,red", 0, fg, bg, title, scale},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.overrides);
        zolui::Palette palette(myColors);
        EXPECT_EQ(palette.apply(c.overrides), c.applied);
        const newtColors& out = palette.colors();
        EXPECT_EQ(str(out.rootFg), c.rootFg);
        EXPECT_EQ(str(out.rootBg), c.rootBg);
        EXPECT_EQ(str(out.titleFg), c.titleFg);
        EXPECT_EQ(str(out.emptyScale), c.emptyScale);
        EXPECT_EQ(str(out.listboxBg), str(base.listboxBg));  // never named: the product's
    }
}

constexpr int kDefault = -1, kBlack = 0, kRed = 1, kGreen = 2;

// The drawn main menu under each setting: the root's background (a cell left of the window) and
// the focused first row's background, which only actsellistbox changes.
TEST(Palette, EnvironmentColoursTheDrawnScreen) {
    struct Case {
        std::optional<std::string> colours, file, mono;
        int root;
        bool rowAsProduct;  // the first row keeps the product's colour
        int row;            // else this one
    };
    const Case cases[] = {
        {std::nullopt, std::nullopt, std::nullopt, kBlack, true, 0},
        {"root=,red", std::nullopt, std::nullopt, kRed, true, 0},
        {"root=,green;actsellistbox=white,red bogus=red,red", std::nullopt, std::nullopt, kGreen,
         false, kRed},
        {std::nullopt, "root=,red", std::nullopt, kRed, true, 0},
        {"root=,green", "root=,red", std::nullopt, kGreen, true, 0},
        {"root=,red", std::nullopt, "1", kDefault, false, kDefault},
    };
    ProductRoot root;
    const std::string firstRow = frametest::english(root, "MAIN_BASESET_ID");
    const std::filesystem::path colourFile = root.path() / "colours";
    int productRow = -2;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.colours.value_or("-") + " file " + c.file.value_or("-") + " mono " +
                     c.mono.value_or("-"));
        zoltest::TerminalOptions opts;
        opts.env = frametest::runEnv(root, false);
        opts.mono = false;
        opts.env["NEWT_COLORS"] = c.colours;
        opts.env["NEWT_MONO"] = c.mono;
        opts.env["NEWT_COLORS_FILE"] = std::nullopt;
        if (c.file) {
            zoltest::writeFile(colourFile, *c.file);
            opts.env["NEWT_COLORS_FILE"] = colourFile.string();
        }
        zoltest::Terminal t({root.bin("ZOLamsadm").string()}, opts);
        ASSERT_TRUE(t.waitForText(firstRow)) << t.dump();
        const auto [row, col] = t.position(firstRow);
        EXPECT_EQ(t.background(row, 0), c.root) << t.dump();
        if (productRow == -2)
            productRow = t.background(row, col);
        EXPECT_EQ(t.background(row, col), c.rowAsProduct ? productRow : c.row) << t.dump();
        // Without colours the focus is shown in reverse video.
        EXPECT_EQ(t.isReverse(row, col), c.mono.has_value()) << t.dump();
        frametest::closeMenu(t);
    }
}

}  // namespace
