// The destination list and the ID editor as an administrator meets them: adding an ID with its
// address, the refusals of the editor and the schedule, deleting, an empty table, each checked
// in the store afterwards. Every form opened is closed with Ctrl-O.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "dest_screen_util.h"
#include "frame/textformat.h"
#include "regpaths.h"

namespace keys = zoltest::keys;
using frametest::english;
using frametest::sendTimes;
using frametest::waitFocus;
using namespace desttest;

namespace {

std::string existText(const ProductRoot& root, const std::string& id) {
    return FormatText(english(root, "ERR_DEST_EXIST_ID"), {id});
}

// In the create dialog (focus on the ID entry): the method list's second method, in band.
void chooseInBand(Terminal& t) {
    t.send(keys::Tab);
    t.send(keys::Down);
    ASSERT_TRUE(waitFocus(t, "MANAGER (TCP_IP In-Band)")) << t.dump();
}

// A range message as the program fills it.
std::string bounded(const ProductRoot& root, const char* id, const char* low, const char* high) {
    std::string text = english(root, id);
    for (const char* bound : {low, high}) {
        const auto at = text.find("%d");
        if (at != std::string::npos)
            text.replace(at, 2, bound);
    }
    return text;
}

// In the schedule screen, with the focus on the interval: types the three values and presses OK.
void fillSchedule(Terminal& t, const char* interval, const char* time, const char* hours) {
    retype(t, interval, 3);
    t.send(keys::Tab);
    retype(t, time, 4);
    t.send(keys::Tab);
    retype(t, hours, 40);
    t.send(keys::Tab);
    t.send(keys::Enter);
}

}  // namespace

// A new in-band ID: the empty ID refused at each button, a host name stored as its address, an
// ID with a backslash and an ID that exists in another case refused naming them, then saved.
TEST(DestinationEditor, AddInBandIDWithItsRefusals) {
    ProductRoot root;
    auto t = openList(root);
    pressListButton(*t, 1);
    ASSERT_TRUE(titled(*t, root, "TITTLE_IDSET_ID")) << t->dump();
    const std::string noName = english(root, "WARN_NOIDNAME_ID");
    // OK (four stops after the entry), Address (two) and Schedule (three) need a name.
    for (const int stops : {4, 2, 3}) {
        sendTimes(*t, stops);
        t->send(keys::Enter);
        dismiss(*t, noName);
        sendTimes(*t, 6 - stops);  // back round to the ID entry
    }
    t->type("Ops\\Center");
    chooseInBand(*t);
    sendTimes(*t, 1);  // Address
    t->send(keys::Enter);
    ASSERT_TRUE(titled(*t, root, "TITTLE_INBAND_ID")) << t->dump();
    t->type("localhost");
    sendTimes(*t, 3);  // port, Default, OK
    t->send(keys::Enter);
    const std::string line = FormatText(english(root, "DEST_IDLIST_ADD2_ID"), {"127.0.0.1"});
    ASSERT_TRUE(t->waitForText(line)) << t->dump();
    sendTimes(*t, 2);  // OK
    t->send(keys::Enter);
    dismiss(*t, existText(root, "Ops\\Center"));
    // The dialog keeps what was typed: the focus is back on OK.
    sendTimes(*t, 2);
    retype(*t, "snmp");
    sendTimes(*t, 4);
    t->send(keys::Enter);
    dismiss(*t, existText(root, "snmp"));
    sendTimes(*t, 2);
    retype(*t, "Ops");
    sendTimes(*t, 4);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(frametest::frameTitle(root, "TITTLE_IDSET_ID"))) << t->dump();
    EXPECT_TRUE(t->waitForText("Ops")) << t->dump();
    closeListAndMenu(*t, root);

    const std::string key = kIDList + "\\Ops";
    EXPECT_EQ(storedText(root, key, "Address"), "127.0.0.1");
    EXPECT_EQ(storedText(root, key, "Method"), "MANAGER (TCP_IP In-Band)");
    EXPECT_EQ(storedDword(root, key, "Port"), 31134u);
    EXPECT_FALSE(keyExists(root, kIDList + "\\Ops\\Center"));
    EXPECT_EQ(storedText(root, kIDList + "\\SNMP", "Method"), "MANAGER (SNMP)");
}

// Changing an out-of-band ID: its address screen writes the dial-in data at once (the password
// stored encoded, never traced); the schedule refuses each limit in turn, keeps the old hours
// for text it cannot read, and stores good hours.
TEST(DestinationEditor, ChangeThroughAddressAndSchedule) {
    ProductRoot root;
    const std::string key = kIDList + "\\Ops";
    addText(root, key, "Method", "MANAGER (TCP_IP OUT-OF-BAND)");
    addText(root, key, "Address", "192.0.2.1");
    auto t = openList(root);
    selectID(*t, "Ops");
    EXPECT_TRUE(t->waitForText(FormatText(english(root, "DEST_IDLIST_ADD3_ID"), {"192.0.2.1"})))
        << t->dump();
    pressListButton(*t, 2);
    ASSERT_TRUE(titled(*t, root, "TITTLE_IDSET_ID")) << t->dump();
    ASSERT_TRUE(waitFocus(*t, english(root, "IDSET_BUTTON_ADD_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(titled(*t, root, "TITTLE_OUTBAND_ID")) << t->dump();
    retype(*t, "127.0.0.1", 12);
    t->send(keys::Tab);
    t->type("0312345678");
    t->send(keys::Tab);
    t->type("operator");
    t->send(keys::Tab);
    t->type("s3cret");
    EXPECT_FALSE(t->contains("s3cret")) << t->dump();
    sendTimes(*t, 3);  // port, Default, OK
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(FormatText(english(root, "DEST_IDLIST_ADD3_ID"), {"127.0.0.1"})))
        << t->dump();
    EXPECT_EQ(storedText(root, key, "Address"), "127.0.0.1");
    EXPECT_EQ(storedText(root, key, "Phone") + "|" + storedText(root, key, "User"),
              "0312345678|operator");
    const std::string password = storedText(root, key, "Password");
    EXPECT_EQ(password.size(), 6u);
    EXPECT_NE(password, "s3cret");

    t->send(keys::Tab);  // Schedule
    t->send(keys::Enter);
    ASSERT_TRUE(titled(*t, root, "TITTLE_SCHEDULE_ID")) << t->dump();
    EXPECT_TRUE(t->contains("0-23")) << t->dump();
    struct Try {
        const char *interval, *time, *hours;
        std::string refusal;  // empty: accepted
    };
    const Try tries[] = {
        {"0", "72", "0-23", bounded(root, "ERR_RINTER_ID", "1", "30")},
        {"31", "72", "0-23", bounded(root, "ERR_RINTER_ID", "1", "30")},
        {"1", "241", "0-23", bounded(root, "ERR_SCHE_RINTER_ID", "0", "240")},
        {"30", "240", "8,9-10", english(root, "ERR_RETRYTIME_ID")},
        // Accepted, but no hour the library can read: the old hours stay.
        {"30", "240", "25-26", ""},
    };
    for (const Try& attempt : tries) {
        fillSchedule(*t, attempt.interval, attempt.time, attempt.hours);
        if (attempt.refusal.empty())
            break;
        dismiss(*t, attempt.refusal);
        sendTimes(*t, 2);  // from OK round to the interval
    }
    ASSERT_TRUE(t->waitForNoText(frametest::frameTitle(root, "TITTLE_SCHEDULE_ID"))) << t->dump();
    EXPECT_EQ(storedDword(root, key, "RetryInterval"), 30u);
    EXPECT_EQ(storedDword(root, key, "RetryTime"), 240u);
    EXPECT_EQ(storedDword(root, key, "HourMask"), 0xFFFFFFu);

    ASSERT_TRUE(waitFocus(*t, english(root, "IDSET_BUTTON_SCH_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(titled(*t, root, "TITTLE_SCHEDULE_ID")) << t->dump();
    fillSchedule(*t, "1", "0", "8-17");
    ASSERT_TRUE(t->waitForNoText(frametest::frameTitle(root, "TITTLE_SCHEDULE_ID"))) << t->dump();
    EXPECT_EQ(storedDword(root, key, "RetryInterval"), 1u);
    EXPECT_EQ(storedDword(root, key, "RetryTime"), 0u);
    EXPECT_EQ(storedDword(root, key, "HourMask"), 0x03FF00u);
    // Cancel writes nothing.
    t->send(keys::Enter);
    ASSERT_TRUE(titled(*t, root, "TITTLE_SCHEDULE_ID")) << t->dump();
    EXPECT_TRUE(t->waitForText("8-17")) << t->dump();
    retype(*t, "9", 3);
    closeWindow(*t, root, "TITTLE_SCHEDULE_ID");
    closeWindow(*t, root, "TITTLE_IDSET_ID");
    closeListAndMenu(*t, root);
    EXPECT_EQ(storedDword(root, key, "RetryInterval"), 1u);
    EXPECT_EQ(frametest::traceDump(root).find("s3cret"), std::string::npos);
}

// A built-in ID is refused; another is deleted after the question (Cancel first keeps it), and
// leaves the store, every event and syslog binding and every alert log, while the others stay.
TEST(DestinationList, DeleteRemovesTheIDEverywhereButNeverABuiltInOne) {
    ProductRoot root;
    addText(root, kIDList + "\\Ops", "Method", "MANAGER (SNMP)");
    const std::string events = ZOL_KEY_AGENTEVENT "\\ZolDisk\\80000001\\Dest";
    const std::string items = ZOL_KEY_SYSLOG "\\kernel\\5\\Dest";
    for (const std::string& dest : {events, items}) {
        addDword(root, dest, "Ops", 1);
        addDword(root, dest, "SNMP", 1);
    }
    const std::filesystem::path log = root.path() / "log" / "alert" / "alert-20260101.log";
    std::filesystem::create_directories(log.parent_path());
    zoltest::writeFile(log,
                       "2026-01-01 10:00:00\tZolDisk\t80000001\tOps\t\t0\n"
                       "2026-01-01 10:00:01\tZolDisk\t80000001\tSNMP\t\t0\n"
                       "2026-01-01 10:00:02\tkernel\t5\tops\t\t3\n");

    auto t = openList(root);
    selectID(*t, "SNMP");
    pressListButton(*t, 3);
    dismiss(*t, english(root, "WARN_CANNOTDEL_ID"));
    const std::string sure = english(root, "WARN_SUREDEL_ID");
    for (const bool confirm : {false, true}) {
        t->send(keys::Tab);  // from Delete back round to the list
        t->send(keys::Tab);
        selectID(*t, "Ops");
        pressListButton(*t, 3);
        ASSERT_TRUE(t->waitForText(sure)) << t->dump();
        ASSERT_TRUE(waitFocus(*t, english(root, "BUTTON_OK_ID"))) << t->dump();
        if (!confirm)
            t->send(keys::Tab);
        t->send(keys::Enter);
        ASSERT_TRUE(t->waitForNoText(sure)) << t->dump();
        // Deleted, the list is read again without it.
        ASSERT_TRUE(t->waitFor([&](const Terminal& s) { return s.contains("Ops") != confirm; }))
            << t->dump();
        EXPECT_EQ(keyExists(root, kIDList + "\\Ops"), !confirm);
    }
    closeListAndMenu(*t, root);

    for (const std::string& dest : {events, items}) {
        EXPECT_EQ(storedDword(root, dest, "Ops"), 0xFFFFFFFFu) << dest;
        EXPECT_EQ(storedDword(root, dest, "SNMP"), 1u) << dest;
    }
    EXPECT_EQ(zoltest::readFile(log), "2026-01-01 10:00:01\tZolDisk\t80000001\tSNMP\t\t0\n");
    EXPECT_TRUE(keyExists(root, kIDList + "\\SNMP"));
}

// Only a hidden ID in the table: "<none>", Change and Delete warn; a new ID has no method to
// choose, so its address button finds none. Ctrl-O leaves each form.
TEST(DestinationList, EmptyTableShowsNoneAndWarns) {
    ProductRoot root;
    frametest::zolreg(root, {"delete", "HKLM\\" + kIDList, "/f"});
    addText(root, kIDList + "\\SYSLOG", "Method", "SYSLOG");
    // Without the remote report service the list needs nothing of its destination.
    addDword(root, ZOL_KEY_VNT_SETUP, "Installed", 0);
    auto t = openList(root);
    ASSERT_TRUE(t->waitForText("<none>")) << t->dump();
    EXPECT_FALSE(t->contains("SYSLOG")) << t->dump();
    const std::string invalid = english(root, "WARN_INVALID_ID");
    pressListButton(*t, 2);
    dismiss(*t, invalid);
    t->send(keys::Tab);
    t->send(keys::Enter);
    dismiss(*t, invalid);
    sendTimes(*t, 3);  // Close, list, Add
    t->send(keys::Enter);
    ASSERT_TRUE(titled(*t, root, "TITTLE_IDSET_ID")) << t->dump();
    t->type("Lonely");
    sendTimes(*t, 2);  // the empty method list, Address
    ASSERT_TRUE(waitFocus(*t, english(root, "IDSET_BUTTON_ADD_ID"))) << t->dump();
    t->send(keys::Enter);
    dismiss(*t, invalid);
    closeWindow(*t, root, "TITTLE_IDSET_ID");
    ASSERT_TRUE(t->waitForText("<none>")) << t->dump();
    closeListAndMenu(*t, root);
    EXPECT_FALSE(keyExists(root, kIDList + "\\Lonely"));
}
