// The main menu as the administrator sees it: its rows with and without the remote report
// service, cut labels, the ways to close it, Japanese, and the failures that end it.
#include <gtest/gtest.h>

#include <filesystem>

#include "frame/textformat.h"
#include "frame_test_util.h"
#include "regpaths.h"
#include "store_reader.h"

namespace fs = std::filesystem;
namespace keys = zoltest::keys;
using frametest::english;
using frametest::traceCount;
using frametest::traceDump;
using zoltest::ProductRoot;

namespace {

const char* const kRowIds[] = {"MAIN_BASESET_ID", "MAIN_DESTSET_ID", "MAIN_AGENTS_ID",
                               "MAIN_SYSLOG_ID", "MAIN_VANTREL_ID"};

}  // namespace

// Installed: five rows, the last of which opens the remote report service and comes back, and F12
// (newt's own hot key of every form) ends the menu. Not installed: four rows, the listbox one row
// lower, and the Close button ends it.
TEST(FrameMenu, RowsFollowTheRemoteReportInstallation) {
    int closeDistance[2] = {};
    for (const bool installed : {true, false}) {
        ProductRoot root;
        ASSERT_EQ(zoltest::StoreReader(root).setDword(ZOL_KEY_VNT_SETUP, "Installed",
                                                      installed ? 1u : 0u),
                  ERROR_SUCCESS);
        auto t = frametest::startMenu(root);
        const std::string close = english(root, "BUTTON_CLOSE_ID");
        ASSERT_TRUE(t->waitForText(close)) << t->dump();
        EXPECT_TRUE(t->contains(english(root, "TITTLE_MAIN_ID"))) << t->dump();
        const int first = t->findRow(english(root, kRowIds[0]));
        for (int i = 1; i < 4; ++i)
            EXPECT_EQ(t->findRow(english(root, kRowIds[i])), first + i);
        EXPECT_EQ(t->findRow(english(root, kRowIds[4])), installed ? first + 4 : -1) << t->dump();
        // The first row has the focus.
        EXPECT_NE(t->reverseText().find(english(root, kRowIds[0])), std::string::npos);
        closeDistance[installed ? 0 : 1] = t->findRow(close) - first;
        if (installed) {
            // The service's row asks for the key floppy of a service never set up; Ctrl-O ends
            // the question and the menu comes back.
            const std::string pathTitle = english(root, "INPUT_OPENINGFILE_PATH_TITLE_ID");
            frametest::sendTimes(*t, 4, keys::Down);
            t->send(keys::Enter);
            ASSERT_TRUE(t->waitForText("┤ " + pathTitle + " ├")) << t->dump();
            t->send(keys::CtrlO);
            ASSERT_TRUE(t->waitForNoText(pathTitle)) << t->dump();
            t->send(keys::Home);
            // Ctrl-Z does not reach the suspend handler: the menu goes on.
            t->send("\x1a");
            t->send(keys::Down);
            ASSERT_TRUE(frametest::waitFocus(*t, english(root, kRowIds[1]))) << t->dump();
            EXPECT_FALSE(t->contains("Press a key to continue")) << t->dump();
            t->send(keys::F12);
        } else {
            t->send(keys::Tab);
            ASSERT_TRUE(frametest::waitFocus(*t, close)) << t->dump();
            t->send(keys::Enter);
        }
        ASSERT_TRUE(t->waitForExit()) << t->dump();
        EXPECT_EQ(t->exitStatus(), 1);
        EXPECT_EQ(traceCount(root, 0, "<return 1.", "main"), 1) << traceDump(root);
        EXPECT_EQ(traceCount(root, 3,
                             std::string("CheckVntInstalled() return ") + (installed ? "1" : "0")),
                  1)
            << traceDump(root);
        // The product root holds the whole package: it loads and binds.
        EXPECT_EQ(traceCount(root, 1, "LoadVantrelPkgDLL failed!"), 0) << traceDump(root);
    }
    // Without the fifth row the listbox is one row lower.
    EXPECT_EQ(closeDistance[0], closeDistance[1] + 1);
}

// One root, two runs: the English file's first entry of an ID wins and is cut to 40 columns;
// the Japanese file is read under ja_JP.UTF-8 and legible.
TEST(FrameMenu, LongLabelIsCutToFortyColumnsAndJapaneseIsLegible) {
    ProductRoot root;
    const std::string label = "Base-report-settings-in-a-label-too-long-for-its-row";
    const fs::path rc = root.path() / "data" / "E_report.rc";
    zoltest::writeFile(rc, "[MAIN_BASESET_ID]\ntext=\"" + label + "\"\n" + zoltest::readFile(rc));
    auto t = frametest::start(root);
    ASSERT_TRUE(t->waitForText(label.substr(0, 40))) << t->dump();
    EXPECT_FALSE(t->contains(label.substr(0, 41))) << t->dump();
    frametest::closeMenu(*t);

    t = frametest::start(root, {}, true);
    for (const char* id : {"MAIN_BASESET_ID", "MAIN_SYSLOG_ID", "TITTLE_MAIN_ID"}) {
        EXPECT_TRUE(t->waitForText(frametest::messageText(root, "J_report.rc", id))) << id << "\n"
                                                                                     << t->dump();
    }
    frametest::closeMenu(*t);
    EXPECT_EQ(traceCount(root, 3, "rc file=/data/J_report.rc"), 1) << traceDump(root);
}

// One root, broken further before each run: an empty destination list, then a report-settings
// library without CheckInstVantrel, then one without the destination loader.
TEST(FrameMenu, FailuresBehindTheRows) {
    ProductRoot root;
    const std::string idList = "HKLM\\" ZOL_KEY_ID_LIST;
    frametest::zolreg(root, {"delete", idList, "/f"});
    frametest::zolreg(root, {"add", idList, "/f"});
    for (const int row : {2, 3}) {
        auto t = frametest::startMenu(root);
        frametest::sendTimes(*t, row, keys::Down);
        t->send(keys::Enter);
        // No message: the program simply ends as after Close.
        ASSERT_TRUE(t->waitForExit()) << t->dump();
        EXPECT_EQ(t->exitStatus(), 1);
        EXPECT_EQ(traceCount(root, 1, "GetReportIDformReg initialize for IDList failed."), row - 1)
            << traceDump(root);
        EXPECT_EQ(traceCount(root, 0, "<return 1.", "main"), row - 1) << traceDump(root);
    }

    const fs::path rptset = root.path() / "lib" / "rptset.dll";
    fs::copy_file(PARTIAL_RPTSET_EMPTY, rptset, fs::copy_options::overwrite_existing);
    auto t = frametest::start(root);
    const std::string error = english(root, "FUNC_CALL_ERR");
    const std::string unbound = FormatText(error, {"GetProcAddress for CheckInstVantrel"});
    ASSERT_TRUE(t->waitForText(unbound.substr(0, 40))) << t->dump();
    t->send(keys::Enter);
    // Taken as not installed: four rows.
    ASSERT_TRUE(t->waitForText(english(root, kRowIds[3]))) << t->dump();
    EXPECT_FALSE(t->contains(english(root, kRowIds[4]))) << t->dump();
    frametest::closeMenu(*t);
    EXPECT_EQ(traceCount(root, 1, "<GetProcAddress for CheckInstVantrel failed.return FALSE."), 1)
        << traceDump(root);

    // The destination loader reports its own failure first; then the menu's box follows.
    fs::copy_file(PARTIAL_RPTSET_NO_DEST, rptset, fs::copy_options::overwrite_existing);
    t = frametest::startMenu(root);
    t->send(keys::Down);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(FormatText(error, {"InitAllDestSetting"}))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(FormatText(error, {"InitialDS"}))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForExit()) << t->dump();
    EXPECT_EQ(t->exitStatus(), 1);
    EXPECT_EQ(traceCount(root, 1, "InitialDS(hLibRPTSET) == -1"), 1) << traceDump(root);
}
