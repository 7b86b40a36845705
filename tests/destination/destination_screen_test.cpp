// The destination list and the ID editor as an administrator meets them: adding an ID with its
// address, the refusals of the editor and the schedule, deleting, an empty table, each checked
// in the store afterwards. Every form opened is closed with Ctrl-O.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "dest_screen_util.h"
#include "frame/textformat.h"

namespace keys = zoltest::keys;
using frametest::english;
using namespace desttest;

namespace {

// Rows of the seeded list: SNMP, TCP_IP In-Band, TCP_IP Out-of-Band, VantrelReport.
constexpr int kSeededRows = 4;

std::string existText(const ProductRoot& root, const std::string& id) {
    return FormatText(english(root, "ERR_DEST_EXIST_ID"), {id});
}

// In the create dialog (focus on the ID entry): the method list's second method, in band.
void chooseInBand(Terminal& t) {
    t.send(keys::Tab);
    t.send(keys::Down);
    ASSERT_TRUE(t.waitFor([](const Terminal& s) {
        return s.reverseText().find("MANAGER (TCP_IP In-Band)") != std::string::npos;
    })) << t.dump();
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
        tabs(*t, stops);
        t->send(keys::Enter);
        dismiss(*t, noName);
        tabs(*t, 6 - stops);  // back round to the ID entry
    }
    t->type("Ops\\Center");
    chooseInBand(*t);
    tabs(*t, 1);  // Address
    t->send(keys::Enter);
    ASSERT_TRUE(titled(*t, root, "TITTLE_INBAND_ID")) << t->dump();
    t->type("localhost");
    tabs(*t, 3);  // port, Default, OK
    t->send(keys::Enter);
    const std::string line = FormatText(english(root, "DEST_IDLIST_ADD2_ID"), {"127.0.0.1"});
    ASSERT_TRUE(t->waitForText(line)) << t->dump();
    tabs(*t, 2);  // OK
    t->send(keys::Enter);
    dismiss(*t, existText(root, "Ops\\Center"));
    // The dialog keeps what was typed: the focus is back on OK.
    tabs(*t, 2);
    retype(*t, "snmp");
    tabs(*t, 4);
    t->send(keys::Enter);
    dismiss(*t, existText(root, "snmp"));
    tabs(*t, 2);
    retype(*t, "Ops");
    tabs(*t, 4);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText("┤ " + english(root, "TITTLE_IDSET_ID") + " ├")) << t->dump();
    EXPECT_TRUE(t->waitForText("Ops")) << t->dump();
    closeWindow(*t, root, "TITTLE_DESTSET_ID");
    frametest::closeMenu(*t);

    const std::string key = kIDList + "\\Ops";
    EXPECT_EQ(storedText(root, key, "Address"), "127.0.0.1");
    EXPECT_EQ(storedText(root, key, "Method"), "MANAGER (TCP_IP In-Band)");
    EXPECT_EQ(storedDword(root, key, "Port"), 31134u);
    EXPECT_FALSE(keyExists(root, kIDList + "\\Ops\\Center"));
    EXPECT_EQ(storedText(root, kIDList + "\\SNMP", "Method"), "MANAGER (SNMP)");
}
