// The main menu as the administrator sees it: its rows with and without the remote report
// service, cut labels, the ways to close it, Japanese, and the failures that end it.
#include <gtest/gtest.h>

#include <filesystem>

#include "frame/textformat.h"
#include "frame_test_util.h"

namespace fs = std::filesystem;
namespace keys = zoltest::keys;
using frametest::english;
using frametest::traceCount;
using frametest::traceDump;
using zoltest::ProductRoot;

namespace {

const char* const kRowIds[] = {"MAIN_BASESET_ID", "MAIN_DESTSET_ID", "MAIN_AGENTS_ID",
                               "MAIN_SYSLOG_ID", "MAIN_VANTREL_ID"};

// Rows from the first menu row to the Close button.
int rowsToClose(const ProductRoot& root, const zoltest::Terminal& t) {
    return t.findRow(english(root, "BUTTON_CLOSE_ID")) - t.findRow(english(root, kRowIds[0]));
}

// Replaces the root's library file with a test-built one.
void replaceLibrary(const ProductRoot& root, const char* built, const char* file) {
    fs::copy_file(built, root.path() / "lib" / file, fs::copy_options::overwrite_existing);
}

}  // namespace

TEST(FrameMenu, RowsFollowTheRemoteReportInstallation) {
    int closeDistance[2] = {};
    for (const bool installed : {true, false}) {
        ProductRoot root;
        frametest::setVantrelInstalled(root, installed);
        auto t = frametest::startMenu(root);
        ASSERT_TRUE(t->waitForText(english(root, "BUTTON_CLOSE_ID"))) << t->dump();
        EXPECT_TRUE(t->contains(english(root, "TITTLE_MAIN_ID"))) << t->dump();
        const int first = t->findRow(english(root, kRowIds[0]));
        for (int i = 1; i < 4; ++i)
            EXPECT_EQ(t->findRow(english(root, kRowIds[i])), first + i);
        EXPECT_EQ(t->findRow(english(root, kRowIds[4])), installed ? first + 4 : -1) << t->dump();
        // The first row has the focus.
        EXPECT_NE(t->reverseText().find(english(root, kRowIds[0])), std::string::npos);
        closeDistance[installed ? 0 : 1] = rowsToClose(root, *t);
        frametest::closeMenu(*t);
        EXPECT_EQ(traceCount(root, 3,
                             std::string("CheckVntInstalled() return ") + (installed ? "1" : "0")),
                  1)
            << traceDump(root);
        // The package libraries are not part of this product root: only traced.
        EXPECT_EQ(traceCount(root, 1, "LoadVantrelPkgDLL failed!"), installed ? 1 : 0);
    }
    // Without the fifth row the listbox is one row lower.
    EXPECT_EQ(closeDistance[0], closeDistance[1] + 1);
}

TEST(FrameMenu, LongLabelIsCutToFortyColumns) {
    ProductRoot root;
    const std::string label = "Base-report-settings-in-a-label-too-long-for-its-row";
    const fs::path rc = root.path() / "data" / "E_report.rc";
    // The first entry of an ID wins.
    zoltest::writeFile(rc, "[MAIN_BASESET_ID]\ntext=\"" + label + "\"\n" + zoltest::readFile(rc));
    auto t = frametest::start(root);
    ASSERT_TRUE(t->waitForText(label.substr(0, 40))) << t->dump();
    EXPECT_FALSE(t->contains(label.substr(0, 41))) << t->dump();
    frametest::closeMenu(*t);
}

// newt reads Ctrl-A as Home, so of the two hot keys 1 and 15 only Ctrl-O reaches the menu; F12 is
// newt's own hot key of every form.
TEST(FrameMenu, CloseButtonAndHotKeysEndTheMenu) {
    for (const std::string_view key : {keys::CtrlO, keys::F12, keys::Tab}) {
        ProductRoot root;
        auto t = frametest::startMenu(root);
        t->send(key);
        if (key == keys::Tab) {
            ASSERT_TRUE(t->waitFor([&](const zoltest::Terminal& term) {
                return term.reverseText().find(english(root, "BUTTON_CLOSE_ID")) !=
                       std::string::npos;
            })) << t->dump();
            t->send(keys::Enter);
        }
        ASSERT_TRUE(t->waitForExit()) << t->dump();
        EXPECT_EQ(t->exitStatus(), 1);
        EXPECT_EQ(traceCount(root, 0, "<return 1.", "main"), 1) << traceDump(root);
    }
}

TEST(FrameMenu, PendingScreensShowTheirLabelAndComeBack) {
    ProductRoot root;
    frametest::setVantrelInstalled(root, true);
    auto t = frametest::startMenu(root);
    const std::string notBuilt = english(root, "SCREEN_NOT_BUILT_ID");
    for (const int row : {0, 4}) {
        for (int i = 0; i < row; ++i)
            t->send(keys::Down);
        t->send(keys::Enter);
        ASSERT_TRUE(t->waitForText(notBuilt)) << t->dump();
        // The box is titled with the row's label.
        EXPECT_TRUE(t->contains("┤ " + english(root, kRowIds[row]) + " ├")) << t->dump();
        t->send(keys::Enter);
        ASSERT_TRUE(t->waitForNoText(notBuilt)) << t->dump();
        t->send(keys::Home);
    }
    frametest::closeMenu(*t);
}

TEST(FrameMenu, JapaneseMenuIsLegible) {
    ProductRoot root;
    auto t = frametest::start(root, {}, true);
    for (const char* id : {"MAIN_BASESET_ID", "MAIN_SYSLOG_ID", "TITTLE_MAIN_ID"}) {
        EXPECT_TRUE(t->waitForText(frametest::messageText(root, "J_report.rc", id))) << id << "\n"
                                                                                     << t->dump();
    }
    frametest::closeMenu(*t);
    EXPECT_EQ(traceCount(root, 3, "rc file=/data/J_report.rc"), 1) << traceDump(root);
}

TEST(FrameMenu, UnboundInstallationQueryShowsAnErrorAndFourRows) {
    ProductRoot root;
    replaceLibrary(root, PARTIAL_RPTSET_EMPTY, "rptset.dll");
    auto t = frametest::start(root);
    const std::string error =
        FormatText(english(root, "FUNC_CALL_ERR"), {"GetProcAddress for CheckInstVantrel"});
    ASSERT_TRUE(t->waitForText(error.substr(0, 40))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(english(root, kRowIds[3]))) << t->dump();
    EXPECT_FALSE(t->contains(english(root, kRowIds[4]))) << t->dump();
    frametest::closeMenu(*t);
    EXPECT_EQ(traceCount(root, 1, "<GetProcAddress for CheckInstVantrel failed.return FALSE."), 1)
        << traceDump(root);
    EXPECT_EQ(traceCount(root, 3, "CheckVntInstalled() return 0"), 1) << traceDump(root);
}

TEST(FrameMenu, DestinationLoadFailureEndsTheMenuAfterItsMessage) {
    ProductRoot root;
    replaceLibrary(root, PARTIAL_RPTSET_NO_DEST, "rptset.dll");
    auto t = frametest::startMenu(root);
    t->send(keys::Down);
    t->send(keys::Enter);
    // The destination loader reports its own failure first; then the menu's box follows.
    const std::string menuError = FormatText(english(root, "FUNC_CALL_ERR"), {"InitialDS"});
    const std::string loaderError =
        FormatText(english(root, "FUNC_CALL_ERR"), {"InitAllDestSetting"});
    ASSERT_TRUE(t->waitForText(loaderError)) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(menuError)) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForExit()) << t->dump();
    EXPECT_EQ(t->exitStatus(), 1);
    EXPECT_EQ(traceCount(root, 1, "InitialDS(hLibRPTSET) == -1"), 1) << traceDump(root);
}

TEST(FrameMenu, EmptyDestinationListEndsTheMenuFromTheEventRows) {
    for (const int row : {2, 3}) {
        ProductRoot root;
        const std::string idList = "HKLM\\SOFTWARE\\Tavik\\ZolAlertMan\\Destination\\ID_LIST";
        frametest::zolreg(root, {"delete", idList, "/f"});
        frametest::zolreg(root, {"add", idList, "/f"});
        auto t = frametest::startMenu(root);
        for (int i = 0; i < row; ++i)
            t->send(keys::Down);
        t->send(keys::Enter);
        // No message: the program simply ends as after Close.
        ASSERT_TRUE(t->waitForExit()) << t->dump();
        EXPECT_EQ(t->exitStatus(), 1);
        EXPECT_EQ(traceCount(root, 1, "GetReportIDformReg initialize for IDList failed."), 1)
            << traceDump(root);
        EXPECT_EQ(traceCount(root, 0, "<return 1.", "main"), 1) << traceDump(root);
    }
}

TEST(FrameMenu, SuspendHandlerWaitsForAKeyButTheMenuNeverUsesIt) {
    auto demo = std::make_unique<zoltest::Terminal>(std::vector<std::string>{SUSPEND_DEMO});
    ASSERT_TRUE(demo->waitForText("Press a key to continue:")) << demo->dump();
    EXPECT_FALSE(demo->contains("resumed"));
    // The terminal is back in line mode while suspended: the key counts once Enter is pressed.
    demo->send(keys::Enter);
    ASSERT_TRUE(demo->waitForExit()) << demo->dump();
    EXPECT_EQ(demo->exitStatus(), 0);
    EXPECT_NE(demo->rawOutput().find("resumed"), std::string::npos);

    // Ctrl-Z in the menu does not reach the handler: the menu goes on.
    ProductRoot root;
    auto t = frametest::startMenu(root);
    t->send("\x1a");
    t->send(keys::Down);
    ASSERT_TRUE(t->waitFor([&](const zoltest::Terminal& term) {
        return term.reverseText().find(english(root, kRowIds[1])) != std::string::npos;
    })) << t->dump();
    EXPECT_FALSE(t->contains("Press a key to continue")) << t->dump();
    frametest::closeMenu(*t);
}
