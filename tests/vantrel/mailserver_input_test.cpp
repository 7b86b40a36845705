// The typed-field checks of the mail-server screens and of the suppression interval: which
// message the first refused field gives, in which box, and what a passing input stores.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "baseset/mailserver_input.h"
#include "remote/suppress.h"

using mailinput::Box;

namespace {

const std::string k256(256, 'a');
const std::string k257(257, 'a');

std::string describe(const std::optional<mailinput::Refusal>& r) {
    if (!r)
        return "accepted";
    return std::string(r->messageId ? r->messageId : "(shown)") + "/" +
           std::to_string(static_cast<int>(r->box));
}

}  // namespace

TEST(MailServerInput, NumbersAreDigitsOnlyAndFitThirtyTwoBits) {
    EXPECT_EQ(mailinput::ParseDecimal("0"), 0u);
    EXPECT_EQ(mailinput::ParseDecimal("0065535"), 65535u);
    EXPECT_EQ(mailinput::ParseDecimal("4294967295"), 4294967295u);
    for (const char* bad : {"", "4294967296", "-1", "+1", " 1", "1 ", "1a", "0x10"})
        EXPECT_EQ(mailinput::ParseDecimal(bad), std::nullopt) << '"' << bad << '"';
    EXPECT_EQ(mailinput::TrimBlanks("  a@b  "), "a@b");
    EXPECT_EQ(mailinput::TrimBlanks("   "), "");
}

// Each row breaks one field of a good login; the first broken field in check order answers.
TEST(MailServerInput, PopHalfRefusesTheFirstBadFieldInOrder) {
    const mailinput::PopInput good{"pop.example.com", "alice", "secret", "110", "0"};
    struct Row {
        const char* name;
        void (*change)(mailinput::PopInput&);
        int serverCheck;  // what CheckPortAndIP answers
        const char* expected;
        bool checkCalled;
    };
    const Row rows[] = {
        {"empty server", [](auto& in) { in.server.clear(); }, 0, "POP_MAILSRV_EMPTY/0", false},
        {"long server", [](auto& in) { in.server = k257; }, 0, "MAILSV_LENGTH_ERROR/0", false},
        {"unresolved server, empty account", [](auto& in) { in.user.clear(); }, -2,
         "IDS_ERR_INVALID_IPADDRESS/0", true},
        {"empty account", [](auto& in) { in.user.clear(); }, 0, "POP_ACCOUNT_EMPTY/0", true},
        {"long account", [](auto& in) { in.user = k257; }, 0, "ACCOUNT_LENGTH_ERROR/0", true},
        {"empty password", [](auto& in) { in.password.clear(); }, 0, "POP_PASSWORD_EMPTY/0", true},
        {"long password", [](auto& in) { in.password = k257; }, 0, "PASSWD_LENGTH_ERROR/0", true},
        {"empty port", [](auto& in) { in.port.clear(); }, 0, "POP_PORT_EMPTY/0", true},
        {"port 0", [](auto& in) { in.port = "0"; }, 0, "POP_PORT_ERR/1", true},
        {"port 65536", [](auto& in) { in.port = "65536"; }, 0, "POP_PORT_ERR/1", true},
        {"port -1 from the store", [](auto& in) { in.port = "-1"; }, 0, "POP_PORT_ERR/1", true},
        {"empty wait", [](auto& in) { in.wait.clear(); }, 0, "POP_LATENCY_EMPTY/2", true},
        {"wait 61", [](auto& in) { in.wait = "61"; }, 0, "LATENCY_TIME_ERR/2", true},
        {"longest fields, port 65535, wait 60",
         [](auto& in) {
             in.server = in.user = in.password = k256, in.port = "65535", in.wait = "60";
         },
         0, "accepted", true},
    };
    for (const Row& row : rows) {
        mailinput::PopInput in = good;
        row.change(in);
        bool called = false;
        POPParam record;
        std::memset(&record, 'x', sizeof record);
        std::uint32_t wait = 99;
        const auto refusal = mailinput::CheckPopInput(
            in,
            [&](const std::string& server) {
                called = true;
                EXPECT_EQ(server, in.server);
                return row.serverCheck;
            },
            &record, &wait);
        EXPECT_EQ(describe(refusal), row.expected) << row.name;
        EXPECT_EQ(called, row.checkCalled) << row.name;
        if (!refusal) {
            EXPECT_EQ(record.Server, k256);
            EXPECT_EQ(record.Password, k256);
            EXPECT_EQ(record.Port, 65535u);
            EXPECT_EQ(wait, 60u);
        } else {
            EXPECT_EQ(wait, 99u) << row.name << ": nothing is filled on a refusal";
        }
    }
}

TEST(MailServerInput, SmtpHalfRefusesInOrderWithTheShortButton) {
    struct Row {
        std::string user, password;
        const char* expected;
    } rows[] = {
        {"", "", "SMTP_ACNT_EMPTY/2"},    {k257, "", "SMTP_ACNT_LENGTH/2"},
        {"bob", "", "SMTP_PASS_EMPTY/2"}, {"bob", k257, "SMTP_PASS_LENGTH/2"},
        {k256, "pw", "accepted"},
    };
    for (const Row& row : rows) {
        SMTPParam record{};
        const auto refusal = mailinput::CheckSmtpInput({row.user, row.password}, &record);
        EXPECT_EQ(describe(refusal), row.expected) << row.user.size() << "/" << row.password;
        if (!refusal) {
            EXPECT_EQ(record.User, k256);
            EXPECT_STREQ(record.Password, "pw");
        }
    }
}

// The internet-mail base record: server, port, then the sender (whose check shows its own box);
// the stored sender loses its surrounding blanks and the record's other fields stay.
TEST(MailServerInput, MailBaseChecksServerPortSenderAndKeepsTheRest) {
    struct Row {
        mailinput::MailBaseInput in;
        int serverCheck;
        bool senderOk;
        const char* expected;
    } rows[] = {
        {{"", "25", "a@b"}, 0, true, "IMAIL_BASE_SMTP_ERR1/0"},
        {{k257, "25", "a@b"}, 0, true, "IMAIL_BASE_SMTP_ERR2/0"},
        {{"no-such-host.invalid", "25", "a@b"}, -2, true, "IDS_ERR_INVALID_IPADDRESS/0"},
        {{"mail", "", "a@b"}, 0, true, "IMAIL_BASE_PORT_ERR1/0"},
        {{"mail", "65536", "a@b"}, 0, true, "IMAIL_BASE_PORT_ERR1/0"},
        {{"mail", "25", "a b@c"}, 0, false, "(shown)/3"},
        {{"mail", "587", "  ops@example.com "}, 0, true, "accepted"},
    };
    for (const Row& row : rows) {
        AMBIBaseData record{};
        std::strcpy(record.SMTPServer, "old.example.com");
        record.DateFormat = 1;
        record.SMTPAuth = 1;
        const auto refusal = mailinput::CheckMailBaseInput(
            row.in, [&](const std::string&) { return row.serverCheck; },
            [&](const std::string&) { return row.senderOk; }, &record);
        EXPECT_EQ(describe(refusal), row.expected) << row.in.server.substr(0, 20);
        if (refusal) {
            EXPECT_STREQ(record.SMTPServer, "old.example.com");
            continue;
        }
        EXPECT_STREQ(record.SMTPServer, "mail");
        EXPECT_STREQ(record.MailFrom, "ops@example.com");
        EXPECT_EQ(record.SMTPPort, 587u);
        EXPECT_EQ(record.DateFormat, 1u);
        EXPECT_EQ(record.SMTPAuth, 1u);
    }
}

TEST(MailServerInput, SuppressionIntervalIsZeroToOneDay) {
    EXPECT_EQ(ParseSuppressInterval("0"), 0u);
    EXPECT_EQ(ParseSuppressInterval("1440"), 1440u);
    for (const char* bad : {"", "1441", "9999", "1 0"})
        EXPECT_EQ(ParseSuppressInterval(bad), std::nullopt) << bad;
}
