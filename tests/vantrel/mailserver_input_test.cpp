// The typed-field checks of the mail-server screens and of the suppression interval, for what
// the screen tests do not type: over-long fields, numbers past the limits, the filled records.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "baseset/mailserver_input.h"
#include "frame/checks.h"
#include "remote/suppress.h"

namespace {

const std::string k256(256, 'a');
const std::string k257(257, 'a');

std::string describe(const std::optional<mailinput::Refusal>& r) {
    return r ? std::string(r->messageId) : "accepted";
}

}  // namespace

TEST(MailServerInput, NumbersAndTheSuppressionInterval) {
    EXPECT_EQ(checks::ParseDecimal("0065535"), 65535u);
    EXPECT_EQ(checks::ParseDecimal("4294967295"), 4294967295u);
    for (const char* bad : {"", "4294967296", "-1", "+1", " 1", "1a"})
        EXPECT_EQ(checks::ParseDecimal(bad), std::nullopt) << '"' << bad << '"';
    EXPECT_EQ(ParseSuppressInterval("1440"), 1440u);
    EXPECT_EQ(ParseSuppressInterval("1441"), std::nullopt);
}

// Texts of 257 bytes are refused (the server before it is looked up), 256 are stored whole.
TEST(MailServerInput, LoginLimitsAndTheFilledRecords) {
    struct Row {
        mailinput::PopInput in;
        const char* expected;
    } rows[] = {
        {{k257, "u", "p", "110", "0"}, "MAILSV_LENGTH_ERROR"},
        {{"s", k257, "p", "110", "0"}, "ACCOUNT_LENGTH_ERROR"},
        {{"s", "u", k257, "110", "0"}, "PASSWD_LENGTH_ERROR"},
        {{"s", "u", "p", "65536", "0"}, "POP_PORT_ERR"},
        {{"s", "u", "p", "-1", "0"}, "POP_PORT_ERR"},  // a port stored as 0xFFFFFFFF
        {{k256, k256, k256, "65535", "60"}, "accepted"},
    };
    for (const Row& row : rows) {
        POPParam record;
        std::memset(&record, 'x', sizeof record);
        std::uint32_t wait = 99;
        int lookups = 0;
        const auto refusal = mailinput::CheckPopInput(
            row.in, [&](const std::string&) { return ++lookups, 0; }, &record, &wait);
        EXPECT_EQ(describe(refusal), row.expected);
        EXPECT_EQ(lookups, row.in.server.size() > 256 ? 0 : 1) << row.expected;
        if (!refusal) {
            EXPECT_EQ(record.Password, k256);
            EXPECT_EQ(record.Port, 65535u);
            EXPECT_EQ(wait, 60u);
        }
    }
    SMTPParam smtp{};
    EXPECT_EQ(describe(mailinput::CheckSmtpInput({k257, "p"}, &smtp)), "SMTP_ACNT_LENGTH");
    EXPECT_EQ(describe(mailinput::CheckSmtpInput({"u", k257}, &smtp)), "SMTP_PASS_LENGTH");
    EXPECT_EQ(describe(mailinput::CheckSmtpInput({k256, k256}, &smtp)), "accepted");
    EXPECT_EQ(smtp.User, k256);
}

// The base record keeps the fields the check does not own; a refusal changes nothing.
TEST(MailServerInput, MailBaseLimitsKeepTheRestOfTheRecord) {
    struct Row {
        mailinput::MailBaseInput in;
        const char* expected;
    } rows[] = {
        {{k257, "25", "a@b"}, "IMAIL_BASE_SMTP_ERR2"},
        {{"mail", "65536", "a@b"}, "IMAIL_BASE_PORT_ERR1"},
        {{"mail", "587", "bad"}, "IMAIL_BASE_MLFROM_ERR1"},
        {{"mail", "587", "a b@c"}, "IMAIL_BASE_MLFROM_ERR1"},
        {{"mail", "587", std::string(81, 'a') + "@b"}, "IMAIL_DEST_MLTO_ERR3"},
        {{"mail", "587", "  ops@example.com "}, "accepted"},
    };
    for (const Row& row : rows) {
        AMBIBaseData record{};
        std::strcpy(record.SMTPServer, "old");
        record.DateFormat = record.SMTPAuth = 1;
        const auto refusal = mailinput::CheckMailBaseInput(
            row.in, [](const std::string&) { return 0; }, &record);
        EXPECT_EQ(describe(refusal), row.expected);
        // The sender's refusals come in the box the mail checks have always used.
        const std::string id = row.expected;
        if (refusal) {
            EXPECT_EQ(refusal->box, id.find("_ML") != std::string::npos
                                        ? mailinput::Box::MailAddress
                                        : mailinput::Box::Warning)
                << id;
        }
        EXPECT_STREQ(record.SMTPServer, refusal ? "old" : "mail");
        EXPECT_EQ(record.DateFormat + record.SMTPAuth, 2u);
    }
}
