// The remote report service's destination as the destination list reaches it: its address line
// by delivery method, the key-floppy rule, the via-manager screen and the internet-mail screen,
// each checked in the store afterwards.
#include <gtest/gtest.h>

#include <string>

#include "dest_screen_util.h"
#include "frame/textformat.h"
#include "regpaths.h"
#include "servers.h"

namespace keys = zoltest::keys;
using frametest::english;
using frametest::sendTimes;
using frametest::waitFocus;
using namespace desttest;

namespace {

const std::string kService = ZOL_KEY_VNTSERVICE;
const std::string kAddress = kIDList + "\\VantrelReport\\Address";

// Selects VantrelReport and presses Change; waits for the editor.
void changeVantrelReport(Terminal& t, const ProductRoot& root) {
    selectID(t, "VantrelReport");
    pressListButton(t, 2);
    ASSERT_TRUE(titled(t, root, "TITTLE_IDSET_ID")) << t.dump();
    ASSERT_TRUE(waitFocus(t, english(root, "IDSET_BUTTON_ADD_ID"))) << t.dump();
}

}  // namespace

// Via the manager with no manager stored: "0.0.0.0" in the list and the editor; without the key
// floppy the editor stays shut; the via-manager screen refuses an empty address and a port out
// of its range, then stores a host name as its address with the port; the schedule is written.
TEST(RemoteDestination, ViaManagerAddressAndSchedule) {
    ProductRoot root;
    addDword(root, kService, "MethodType", 2);
    auto t = openList(root);
    selectID(*t, "VantrelReport");
    const std::string unknown = FormatText(english(root, "DEST_IDLIST_ADD2_ID"), {"0.0.0.0"});
    ASSERT_TRUE(t->waitForText(unknown)) << t->dump();
    pressListButton(*t, 2);
    dismiss(*t, english(root, "IMAIL_INSERT_FD_ID").substr(0, 40));
    closeListAndMenu(*t, root);

    addDword(root, kService, "InstVantrelKeyFD", 1);
    t = openList(root);
    changeVantrelReport(*t, root);
    EXPECT_TRUE(t->contains(unknown)) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(titled(*t, root, "FWMANAGERL_DEST_TITLE_ID")) << t->dump();
    sendTimes(*t, 3);  // port, Default, OK
    t->send(keys::Enter);
    dismiss(*t, english(root, "FWMANAGER_IP_EMPTY_ID"));
    sendTimes(*t, 2);  // Cancel, address
    t->type("localhost");
    t->send(keys::Tab);
    retype(*t, "80", 8);
    sendTimes(*t, 2);
    t->send(keys::Enter);
    dismiss(*t, english(root, "IDS_ERR_NOT_LANGE_PORTNUMBER"));
    sendTimes(*t, 3);  // Cancel, address, port
    retype(*t, "7000", 8);
    sendTimes(*t, 2);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(FormatText(english(root, "DEST_IDLIST_ADD2_ID"), {"127.0.0.1"})))
        << t->dump();
    EXPECT_EQ(storedText(root, kAddress, "ManagerIP"), "127.0.0.1");
    EXPECT_EQ(storedDword(root, kAddress, "ManagerPort"), 7000u);

    t->send(keys::Tab);  // Schedule
    t->send(keys::Enter);
    ASSERT_TRUE(titled(*t, root, "TITTLE_SCHEDULE_ID")) << t->dump();
    sendTimes(*t, 2);
    retype(*t, "9-17");
    sendTimes(*t, 1);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(frametest::frameTitle(root, "TITTLE_SCHEDULE_ID"))) << t->dump();
    closeWindow(*t, root, "TITTLE_IDSET_ID");
    closeListAndMenu(*t, root);
    EXPECT_EQ(storedDword(root, kIDList + "\\VantrelReport", "HourMask"), 0x03FE00u);
}

// By internet mail: the mail screen refuses a bad To list, stores the list and subject with the
// destination, and its test button shows what the mail library answered.
TEST(RemoteDestination, InternetMailDestination) {
    ProductRoot root;
    addDword(root, kService, "InstVantrelKeyFD", 1);
    auto t = openList(root);
    changeVantrelReport(*t, root);
    t->send(keys::Enter);
    ASSERT_TRUE(titled(*t, root, "IMAIL_DEST_TITLE_ID")) << t->dump();
    t->type("ops@example.com,,desk");
    sendTimes(*t, 5);  // subject, Test, Critical test, Opening report, OK
    t->send(keys::Enter);
    dismiss(*t, english(root, "IMAIL_DEST_MLTO_ERR4"));
    sendTimes(*t, 2);  // Cancel, To
    retype(*t, "ops@example.com, desk@example.com", 30);
    t->send(keys::Tab);
    t->type("Server trouble");
    t->send(keys::Tab);  // Test
    t->send(keys::Enter);
    // No SMTP server is set: the mail library says so.
    dismiss(*t, "no SMTP server is set");
    sendTimes(*t, 3);  // Critical test, Opening report, OK
    t->send(keys::Enter);
    const std::string line =
        FormatText(english(root, "DEST_IDLIST_ADD5_ID"), {"ops@example.com, desk@example.com"});
    ASSERT_TRUE(t->waitForText(line)) << t->dump();
    EXPECT_EQ(storedText(root, kAddress, "ETo"), "ops@example.com, desk@example.com");
    EXPECT_EQ(storedText(root, kAddress, "ESubject"), "Server trouble");
    closeWindow(*t, root, "TITTLE_IDSET_ID");
    // The list is read again, its first row current; then from Change round to the list, whose
    // details tell the new address too.
    ASSERT_TRUE(t->waitFor([](const Terminal& s) {
        return s.reverseText().find("SNMP") != std::string::npos;
    })) << t->dump();
    sendTimes(*t, 3);
    selectID(*t, "VantrelReport");
    EXPECT_TRUE(t->waitForText("desk@example.com")) << t->dump();
    closeListAndMenu(*t, root);
}

// The opening report from the internet-mail screen, through the real mail library and a real
// SMTP server: asked first, then sent; the screen says so and the store marks the opening as
// done. With the server gone the library's text is shown and the opening stays undone.
TEST(RemoteDestination, OpeningReportByMail) {
    ProductRoot root;
    deliverytest::SmtpServer smtp;
    ASSERT_TRUE(smtp.ready());
    const std::string mailKey = ZOL_KEY_MAIL_SETTING;
    addDword(root, kService, "InstVantrelKeyFD", 1);
    addText(root, mailKey, "SMTPServer", "127.0.0.1");
    addDword(root, mailKey, "SMTPPort", smtp.port());
    addText(root, mailKey, "MailFrom", "zol@example.com");
    addText(root, kAddress, "ETo", "centre@example.com");
    addDword(root, kAddress, "EOpening", 0);
    for (const bool serverUp : {false, true}) {
        SCOPED_TRACE(serverUp ? "server up" : "server down");
        addDword(root, mailKey, "SMTPPort", serverUp ? smtp.port() : deliverytest::FreePort());
        auto t = openList(root);
        changeVantrelReport(*t, root);
        t->send(keys::Enter);
        ASSERT_TRUE(titled(*t, root, "IMAIL_DEST_TITLE_ID")) << t->dump();
        sendTimes(*t, 4);  // subject, Test, Critical test, Opening report
        t->send(keys::Enter);
        ASSERT_TRUE(t->waitForText(english(root, "IMAIL_QUE_OPEN_ID"))) << t->dump();
        t->send(keys::Enter);  // OK
        dismiss(*t, serverUp ? english(root, "IMAIL_OPEN_TEST_SUCC") : "cannot be reached now");
        EXPECT_EQ(storedDword(root, kAddress, "EOpening"), serverUp ? 1u : 0u);
        closeWindow(*t, root, "IMAIL_DEST_TITLE_ID");
        closeWindow(*t, root, "TITTLE_IDSET_ID");
        closeWindow(*t, root, "TITTLE_DESTSET_ID");
        frametest::closeMenu(*t);
    }
    ASSERT_EQ(smtp.Mails().size(), 1u);
    EXPECT_NE(deliverytest::MailBody(smtp.Mails()[0]).find("KIND=O\r\nTITLE=Opening report\r\n"),
              std::string::npos);
}
