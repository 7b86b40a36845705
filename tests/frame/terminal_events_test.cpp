// The terminal as a person changes it under the running program: a larger or smaller window
// redraws the open screens centred for the new size, a window smaller than 80x24 shows one line
// asking for more room until it grows, and SIGTERM or SIGHUP close the program through newt, so
// that the terminal is left as it was found.
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "frame_test_util.h"

namespace {

namespace keys = zoltest::keys;
using frametest::english;
using zoltest::ProductRoot;
using zoltest::Terminal;

const std::string kTooSmall = "Please make the terminal at least 80 columns wide and 24 rows high.";

// The {row, column} of `title`'s framed text.
std::pair<int, int> framedTitle(const Terminal& t, const std::string& title) {
    return t.position("┤ " + title + " ├");
}

// The character in a screen cell (every text of these screens is one cell wide).
std::string cellAt(const Terminal& t, int row, int col) {
    const std::string text = t.row(row);
    int c = 0;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t n = 1;
        const auto lead = static_cast<unsigned char>(text[i]);
        n = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
        if (c == col)
            return text.substr(i, n);
        i += n;
        ++c;
    }
    return " ";
}

// The window framed around `title` stands centred on the whole terminal: as much room left as
// right (newt's shadow takes one column) and above as below (its help line one row, and newt
// moves odd rows by one).
::testing::AssertionResult centred(const Terminal& t, const std::string& title) {
    const auto [top, titleCol] = framedTitle(t, title);
    if (top < 0)
        return ::testing::AssertionFailure() << title << " not on the screen";
    int left = titleCol, right = titleCol, bottom = top;
    while (left > 0 && cellAt(t, top, left) != "┌")
        --left;
    while (right < t.cols() - 1 && cellAt(t, top, right) != "┐")
        ++right;
    while (bottom < t.rows() - 1 && cellAt(t, bottom, left) != "└")
        ++bottom;
    const int leftRoom = left, rightRoom = t.cols() - 1 - right;
    const int topRoom = top, bottomRoom = t.rows() - 1 - bottom;
    if (std::abs(leftRoom - rightRoom) > 2 || std::abs(topRoom - bottomRoom) > 3)
        return ::testing::AssertionFailure()
               << title << " framed at rows " << top << ".." << bottom << ", columns " << left
               << ".." << right << " of " << t.rows() << "x" << t.cols();
    return ::testing::AssertionSuccess();
}

TEST(TerminalResize, GrowingRedrawsTheMenuAndItsSubScreenCentredForTheNewSize) {
    ProductRoot root;
    auto t = frametest::startMenu(root);
    const std::string mainTitle = english(root, "TITTLE_MAIN_ID");
    const std::string close = english(root, "BUTTON_CLOSE_ID");
    ASSERT_TRUE(centred(*t, mainTitle)) << t->dump();

    t->resize(43, 132);
    ASSERT_TRUE(t->waitFor([&](const Terminal& s) {
        return s.position(mainTitle).second > 80 / 2 && centred(s, mainTitle);
    })) << t->dump();
    EXPECT_TRUE(t->contains(close)) << t->dump();
    EXPECT_TRUE(t->contains(english(root, "MAIN_BASESET_ID"))) << t->dump();

    // A screen opened now is centred for the new size, buttons and all.
    t->send(keys::Enter);
    const std::string baseTitle = english(root, "TITTLE_BASE_ID");
    ASSERT_TRUE(t->waitForText("┤ " + baseTitle + " ├")) << t->dump();
    EXPECT_TRUE(centred(*t, baseTitle)) << "centred in 132 columns, not in 80\n" << t->dump();

    // Shrinking back with both screens open draws both again, centred for 80x25 once more.
    t->resize(25, 80);
    ASSERT_TRUE(t->waitFor([&](const Terminal& s) { return centred(s, baseTitle); })) << t->dump();
    EXPECT_TRUE(t->contains(english(root, "BASE_REPORT_ID"))) << t->dump();

    // Both still work: Ctrl-O closes the base menu, then the main menu with the usual status.
    t->send(keys::CtrlO);
    ASSERT_TRUE(t->waitForNoText("┤ " + baseTitle + " ├")) << t->dump();
    ASSERT_TRUE(t->waitForText(english(root, "MAIN_BASESET_ID"))) << t->dump();
    frametest::closeMenu(*t);
}

TEST(TerminalResize, TooSmallShowsOneLineUntilItGrows) {
    ProductRoot root;
    auto t = frametest::startMenu(root);
    const std::string row = english(root, "MAIN_BASESET_ID");

    t->resize(20, 70);
    ASSERT_TRUE(t->waitForText(kTooSmall.substr(0, 60))) << t->dump();
    EXPECT_FALSE(t->contains(row)) << "no half-drawn menu\n" << t->dump();
    // Keys typed meanwhile reach no screen.
    t->send(keys::Enter);

    t->resize(25, 80);
    ASSERT_TRUE(t->waitForText(row)) << t->dump();
    EXPECT_FALSE(t->contains(kTooSmall.substr(0, 40))) << t->dump();
    EXPECT_FALSE(t->contains(frametest::frameTitle(root, "TITTLE_BASE_ID"))) << t->dump();
    frametest::closeMenu(*t);
}

TEST(TerminalResize, StartedInATooSmallTerminalWaitsForRoom) {
    ProductRoot root;
    std::vector<std::string> argv{root.bin("ZOLamsadm").string()};
    zoltest::TerminalOptions opts;
    opts.env = frametest::runEnv(root);
    opts.rows = 12;
    opts.cols = 60;
    Terminal t(argv, opts);
    ASSERT_TRUE(t.waitForText(kTooSmall.substr(0, 50))) << t.dump();
    t.resize(25, 80);
    ASSERT_TRUE(t.waitForText(english(root, "MAIN_BASESET_ID"))) << t.dump();
    frametest::closeMenu(t);
}

struct EndCase {
    const char* name;
    int signal;
    bool inSubScreen;
};

const EndCase kEnds[] = {
    {"SIGTERM at the main menu", SIGTERM, false},
    {"SIGHUP at the main menu", SIGHUP, false},
    {"SIGTERM in a sub-screen", SIGTERM, true},
    {"SIGHUP in a sub-screen", SIGHUP, true},
};

TEST(TerminalEnd, SignalsCloseTheProgramThroughNewt) {
    for (const EndCase& c : kEnds) {
        SCOPED_TRACE(c.name);
        ProductRoot root;
        auto t = frametest::startMenu(root);
        if (c.inSubScreen) {
            t->send(keys::Enter);
            ASSERT_TRUE(t->waitForText(frametest::frameTitle(root, "TITTLE_BASE_ID"))) << t->dump();
        }
        EXPECT_FALSE(t->cookedMode()) << "newt runs the terminal raw";
        const std::size_t seen = t->rawOutput().size();
        t->signal(c.signal);
        ASSERT_TRUE(t->waitForExit()) << t->dump();
        EXPECT_EQ(t->exitStatus(), 128 + c.signal) << t->dump();
        // newtFinished left the alternate screen and gave the line discipline back.
        const std::string after = t->rawOutput().substr(seen);
        EXPECT_NE(after.find("\x1b[?1049l"), std::string::npos)
            << "no exit from the alternate screen";
        EXPECT_TRUE(t->cookedMode()) << "the terminal is still raw";
        EXPECT_GE(
            frametest::traceCount(root, 3, "<ended by signal " + std::to_string(c.signal) + "."), 1)
            << frametest::traceDump(root);
    }
}

}  // namespace
