// The dial-up delivery ("AM_Dll_ALV_Vnt" of dialsvc.dll) against a pseudo-terminal playing a
// Hayes modem: the commands and the number dialled (tone and pulse), the report sent after
// CONNECT, the secondary number after a failed call, and the failures' results and texts.
#include <gtest/gtest.h>

#include <pty.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "net_fixture.h"
#include "net_servers.h"

namespace nettest {
namespace {

constexpr const char* kLib = "dialsvc.dll";
constexpr const char* kEntry = "AM_Dll_ALV_Vnt";
const std::string kDial = ZOL_KEY_DIAL_SETTING;

class DialUpDeliveryTest : public NetDeliveryTest {
  protected:
    void Dial(const std::string& device, DWORD pulse, const std::string& second = "") {
        ASSERT_EQ(store_.setText(kDial, "Device", device), 0);
        ASSERT_EQ(store_.setText(kDial, "PhoneNo1", "03-1234-5678"), 0);
        ASSERT_EQ(store_.setText(kDial, "PhoneNo2", second), 0);
        ASSERT_EQ(store_.setText(kDial, "UserID", "site42"), 0);
        ASSERT_EQ(store_.setDword(kDial, "DialMode", pulse), 0);
    }
    static std::vector<std::string> Dials(const FakeModem& modem) {
        std::vector<std::string> dials;
        for (const std::string& c : modem.commands()) {
            if (c.rfind("ATD", 0) == 0)
                dials.push_back(c);
        }
        return dials;
    }
};

TEST_F(DialUpDeliveryTest, DialsTheNumberSendsTheReportAndHangsUp) {
    for (const DWORD pulse : {0u, 1u}) {
        SCOPED_TRACE(pulse ? "pulse" : "tone");
        FakeModem modem({});
        Dial(modem.linePath(), pulse);
        const Outcome o = Call(kLib, kEntry, "E");
        EXPECT_EQ(o.result, 0u) << o.text;
        const std::vector<std::string> expected = {
            "ATZ", "ATE0", std::string(pulse ? "ATDP" : "ATDT") + "0312345678", "ATH"};
        EXPECT_EQ(modem.commands(), expected);
        ASSERT_EQ(modem.frames().size(), 1u);
        const std::string frame = modem.frames().front();
        EXPECT_EQ(frame.rfind("ZOLVNT/1 E ", 0), 0u) << frame;
        EXPECT_NE(frame.find("\r\nUser: site42\r\nSubject: "), std::string::npos) << frame;
    }
}

// No answer on the primary: the secondary is dialled; when both fail the report may be tried
// again. The test kinds dial one number only.
TEST_F(DialUpDeliveryTest, SecondNumberAfterAFailedCallAndRetryWhenNoneAnswers) {
    struct Case {
        const char* what;
        const char* kind;
        std::map<std::string, std::string> answers;
        uint32_t result;
        std::vector<std::string> dials;
        const char* text;
    };
    const Case cases[] = {
        {"no answer, then the secondary",
         "E",
         {{"0312345678", "NO ANSWER"}},
         0,
         {"ATDT0312345678", "ATDT0698765432"},
         ""},
        {"busy and no carrier",
         "E",
         {{"0312345678", "BUSY"}, {"0698765432", "NO CARRIER"}},
         1,
         {"ATDT0312345678", "ATDT0698765432"},
         "no connection to 0312345678 (BUSY)"},
        {"test 1: primary only",
         "T1",
         {{"0312345678", "NO ANSWER"}},
         1,
         {"ATDT0312345678"},
         "no connection to 0312345678 (NO ANSWER)"},
        {"test 2: secondary only", "T2", {}, 0, {"ATDT0698765432"}, ""},
        {"the modem refuses the dial",
         "T1",
         {{"0312345678", "ERROR"}},
         4,
         {"ATDT0312345678"},
         "refused to dial 0312345678"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FakeModem modem(c.answers);
        Dial(modem.linePath(), 0, "(06)9876-5432");
        const Outcome o = Call(kLib, kEntry, c.kind);
        EXPECT_EQ(o.result, c.result) << o.text;
        EXPECT_EQ(Dials(modem), c.dials);
        EXPECT_NE(o.text.find(c.text), std::string::npos) << o.text;
        EXPECT_EQ(modem.frames().size(), c.result == 0 ? 1u : 0u);
    }
}

TEST_F(DialUpDeliveryTest, LineFailuresAreClearRefusals) {
    TempDir dir;
    const std::string notALine = (dir.path() / "plain-file").string();
    zoltest::writeFile(notALine, "");
    struct Case {
        const char* what;
        std::string device;
        std::string second;
        const char* kind;
        const char* text;
    };
    const Case cases[] = {
        {"no device", "", "", "E", "no modem line device is set"},
        {"device missing", "/dev/zol-no-such-modem", "", "E",
         "the modem line /dev/zol-no-such-modem cannot be opened"},
        {"not a serial line", notALine, "0698765432", "E", "is not a serial line"},
        {"test 2 without a secondary number", "/dev/null", "", "T2", "no secondary number is set"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Dial(c.device, 0, c.second);
        const Outcome o = Call(kLib, kEntry, c.kind);
        EXPECT_EQ(o.result, 4u) << o.text;
        EXPECT_NE(o.text.find(c.text), std::string::npos) << o.text;
    }
}

// A line whose modem never answers: may be tried again, and the secondary number is not dialled
// on the same silent line.
TEST_F(DialUpDeliveryTest, SilentModemMayBeTriedAgain) {
    struct Pty {
        int master = -1, slave = -1;
        ~Pty() {
            close(slave);
            close(master);
        }
    } line;
    char name[256] = {};
    ASSERT_EQ(openpty(&line.master, &line.slave, name, nullptr, nullptr), 0);
    Dial(name, 0, "0698765432");
    const Outcome o = Call(kLib, kEntry, "E");
    EXPECT_EQ(o.result, 1u) << o.text;
    EXPECT_EQ(o.text, std::string("the modem on ") + name + " does not answer");
    // What reached the line: the reset, once.
    std::string sent(512, '\0');
    const ssize_t n = read(line.master, sent.data(), sent.size());
    sent.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
    EXPECT_EQ(sent, "ATZ\r");
}

}  // namespace
}  // namespace nettest
