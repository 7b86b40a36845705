// What OK does on the login dialog, the suppression dialog and the two remote report base
// screens, driven through their state without a terminal: the order of checks and writes, what a
// failed write leaves, and which records are touched.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "baseset/popsmtp.h"
#include "baseset/vantrel_base.h"
#include "remote/suppress.h"

namespace {

// Stand-ins for the library writes: they note what was written and answer as told.
struct RecordingWriters {
    std::vector<std::string> calls;
    int popResult = 0;
    int smtpResult = 0;

    LoginWriters writers() {
        return {[this](const POPParam& pop, DWORD wait) {
                    calls.push_back("pop " + std::string(pop.Server) + ":" +
                                    std::to_string(pop.Port) + " wait " + std::to_string(wait));
                    return popResult;
                },
                [this](const SMTPParam& smtp) {
                    calls.push_back("smtp " + std::string(smtp.User));
                    return smtpResult;
                }};
    }
};

LoginState Login(bool pop, bool smtp) {
    LoginState state;
    state.pop = pop;
    state.smtp = smtp;
    state.popInput = {"pop.example", "alice", "s3cret", "995", "5"};
    state.smtpInput = {"bob", "pw"};
    return state;
}

int ServerOk(const std::string&) {
    return 0;
}

std::string Describe(const LoginSave& saved) {
    std::string out = saved.refusal ? saved.refusal->messageId : "closed";
    for (const char* failed : saved.failedWrites)
        out += std::string(" failed:") + failed;
    return out;
}

}  // namespace

// Each row: the halves, what the writers answer, an SMTP half left empty or not; what OK shows
// and which writes were made, in order.
TEST(LoginDialogState, HalvesAreCheckedAndWrittenInOrder) {
    struct Row {
        bool pop, smtp;
        int popResult, smtpResult;
        bool emptySmtp;
        const char* outcome;
        std::vector<std::string> calls;
    } rows[] = {
        {true, true, 0, 0, false, "closed", {"pop pop.example:995 wait 5", "smtp bob"}},
        {true, false, 0, 0, true, "closed", {"pop pop.example:995 wait 5"}},
        {false, true, 0, 0, false, "closed", {"smtp bob"}},
        // The POP half is written before the SMTP half is refused; the dialog stays open.
        {true, true, 0, 0, true, "SMTP_ACNT_EMPTY", {"pop pop.example:995 wait 5"}},
        // A failed POP write is reported and the SMTP half is still checked and written.
        {true,
         true,
         -1,
         0,
         false,
         "closed failed:PutPopParam",
         {"pop pop.example:995 wait 5", "smtp bob"}},
        {true,
         true,
         -1,
         -1,
         false,
         "closed failed:PutPopParam failed:PutSMTPParam",
         {"pop pop.example:995 wait 5", "smtp bob"}},
        {true,
         true,
         -1,
         0,
         true,
         "SMTP_ACNT_EMPTY failed:PutPopParam",
         {"pop pop.example:995 wait 5"}},
        {false, false, 0, 0, false, "closed", {}},
    };
    for (const Row& row : rows) {
        RecordingWriters w;
        w.popResult = row.popResult;
        w.smtpResult = row.smtpResult;
        LoginState state = Login(row.pop, row.smtp);
        if (row.emptySmtp)
            state.smtpInput.user.clear();
        EXPECT_EQ(Describe(SaveLogin(state, ServerOk, w.writers())), row.outcome) << row.outcome;
        EXPECT_EQ(w.calls, row.calls) << row.outcome;
    }
}

// A POP refusal writes nothing, not even a valid SMTP half; the server is looked up only after
// it passed its own checks.
TEST(LoginDialogState, PopRefusalsWriteNothing) {
    struct Row {
        mailinput::PopInput in;
        int serverCheck;
        const char* refusal;
    } rows[] = {
        {{"", "alice", "pw", "110", "0"}, 0, "POP_MAILSRV_EMPTY"},
        {{"no.such", "alice", "pw", "110", "0"}, -2, "IDS_ERR_INVALID_IPADDRESS"},
        {{"pop", "", "pw", "110", "0"}, 0, "POP_ACCOUNT_EMPTY"},
        {{"pop", "alice", "", "110", "0"}, 0, "POP_PASSWORD_EMPTY"},
        {{"pop", "alice", "pw", "", "0"}, 0, "POP_PORT_EMPTY"},
        {{"pop", "alice", "pw", "0", "0"}, 0, "POP_PORT_ERR"},
        {{"pop", "alice", "pw", "110", ""}, 0, "POP_LATENCY_EMPTY"},
        {{"pop", "alice", "pw", "110", "61"}, 0, "LATENCY_TIME_ERR"},
    };
    for (const Row& row : rows) {
        RecordingWriters w;
        LoginState state = Login(true, true);
        state.popInput = row.in;
        int lookups = 0;
        const LoginSave saved = SaveLogin(
            state, [&](const std::string&) { return ++lookups, row.serverCheck; }, w.writers());
        EXPECT_EQ(Describe(saved), row.refusal);
        EXPECT_TRUE(w.calls.empty()) << row.refusal;
        EXPECT_EQ(lookups, row.in.server.empty() ? 0 : 1) << row.refusal;
    }
}

// Off writes the mode alone whatever the entry holds; on checks the interval first and writes
// both even when the first fails; the first failure is the result.
TEST(SuppressionState, SaveWritesWhatTheSwitchSays) {
    struct Row {
        bool on;
        const char* text;
        int modeResult, intervalResult;
        const char* outcome;
        std::vector<std::string> calls;
    } rows[] = {
        {false, "abc", 0, 0, "0", {"mode 0"}},
        {false, "", -1, 0, "-1", {"mode 0"}},
        {true, "0", 0, 0, "0", {"mode 1", "interval 0"}},
        {true, "1440", 0, 0, "0", {"mode 1", "interval 1440"}},
        {true, "1441", 0, 0, "refused", {}},
        {true, "", 0, 0, "refused", {}},
        {true, "60", 0, -1, "-1", {"mode 1", "interval 60"}},
        {true, "60", -1, 0, "-1", {"mode 1", "interval 60"}},
    };
    for (const Row& row : rows) {
        std::vector<std::string> calls;
        const SuppressSetters set{
            [&](int mode) {
                return calls.push_back("mode " + std::to_string(mode)), row.modeResult;
            },
            [&](int minutes) {
                return calls.push_back("interval " + std::to_string(minutes)), row.intervalResult;
            }};
        const auto saved = SaveSuppression({row.on, row.text}, set);
        EXPECT_EQ(saved ? std::to_string(*saved) : "refused", row.outcome) << row.text;
        EXPECT_EQ(calls, row.calls) << row.text;
    }
}

TEST(VantrelBaseState, OnNeedsAMethod) {
    EXPECT_STREQ(CheckVantrelBase({true, -1}), "WARN_INVALID_ID");
    EXPECT_EQ(CheckVantrelBase({true, VANTREL_HTTPS}), nullptr);
    EXPECT_EQ(CheckVantrelBase({false, -1}), nullptr);
}

// The record takes the typed fields and the switches only when every check passed; a date format
// the screen does not know stays while neither radio button is chosen.
TEST(MailBaseState, ApplyKeepsTheRecordOnARefusal) {
    AMBIBaseData record{};
    std::strcpy(record.SMTPServer, "old.example");
    record.SMTPPort = 25;
    record.DateFormat = 7;
    MailBaseState state{{"mail.example", "587", " ops@example.com "}, -1, true, false};

    state.input.port = "0";
    EXPECT_STREQ(ApplyMailBase(state, ServerOk, record)->messageId, "IMAIL_BASE_PORT_ERR1");
    EXPECT_STREQ(record.SMTPServer, "old.example");
    EXPECT_EQ(record.PopBeforeSMTP, 0u);

    state.input.port = "587";
    ASSERT_FALSE(ApplyMailBase(state, ServerOk, record));
    EXPECT_STREQ(record.SMTPServer, "mail.example");
    EXPECT_STREQ(record.MailFrom, "ops@example.com");
    EXPECT_EQ(record.SMTPPort, 587u);
    EXPECT_EQ(record.DateFormat, 7u);
    EXPECT_EQ(record.PopBeforeSMTP, 1u);
    EXPECT_EQ(record.SMTPAuth, 0u);

    state.dateFormat = 1;
    ASSERT_FALSE(ApplyMailBase(state, ServerOk, record));
    EXPECT_EQ(record.DateFormat, 1u);
}
