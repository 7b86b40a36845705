// The via-manager delivery ("AMVntManReport_E" of vntmgr.dll) against a TCP listener playing the
// manager: the frame it receives, its acknowledgement or refusal, a manager that is down, and
// ManVntStatus after each.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "net_fixture.h"
#include "net_servers.h"
#include "rptset_api.h"

namespace nettest {
namespace {

constexpr const char* kLib = "vntmgr.dll";
constexpr const char* kEntry = "AMVntManReport_E";
const std::string kAddress = ZOL_KEY_VANTREL_ADDRESS;

class ManagerDeliveryTest : public NetDeliveryTest {
  protected:
    void Manager(int port) {
        ASSERT_EQ(store_.setText(kAddress, "ManagerIP", "127.0.0.1"), 0);
        ASSERT_EQ(store_.setDword(kAddress, "ManagerPort", static_cast<DWORD>(port)), 0);
    }
    std::optional<DWORD> Status() const { return store_.dword(kAddress, "ManVntStatus"); }
};

TEST_F(ManagerDeliveryTest, ManagerReceivesTheFramedReportAndStatusIsKept) {
    ManagerListener manager("ACK E");
    Manager(manager.port());
    const Outcome o = Call(kLib, kEntry, "E");
    EXPECT_EQ(o.result, 0u) << o.text;
    EXPECT_TRUE(o.text.empty()) << o.text;
    EXPECT_EQ(Status(), 1u);
    ASSERT_EQ(manager.frames().size(), 1u);
    const std::string frame = manager.frames().front();
    // "ZOLVNT/1 E <length>", then exactly that many bytes: the subject line, a blank, the body.
    const std::size_t headerEnd = frame.find("\r\n");
    ASSERT_NE(headerEnd, std::string::npos) << frame;
    const std::string payload = frame.substr(headerEnd + 2);
    EXPECT_EQ(frame.substr(0, headerEnd), "ZOLVNT/1 E " + std::to_string(payload.size()));
    EXPECT_EQ(payload.rfind("Subject: ", 0), 0u) << payload;
    EXPECT_NE(payload.find("\r\n\r\n"), std::string::npos) << payload;
}

// Every way a manager can fail the report: result, text, and ManVntStatus back to 0.
TEST_F(ManagerDeliveryTest, FailuresGiveTheirResultAndClearTheStatus) {
    struct Case {
        const char* what;
        std::string answer;  // empty: the listener closes without answering
        uint32_t result;
        const char* text;
    };
    const Case cases[] = {
        {"refused", "NAK disk full", 4, "the manager refused the report: disk full"},
        {"acknowledges another kind", "ACK T", 4, "an answer this system does not know"},
        {"answers nonsense", "HELLO", 4, "an answer this system does not know: HELLO"},
        {"closes without answer", "", 1, "closed the connection without acknowledging"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        {
            ManagerListener good("ACK E");
            Manager(good.port());
            ASSERT_EQ(Call(kLib, kEntry, "E").result, 0u);
            ASSERT_EQ(Status(), 1u);
        }
        ManagerListener manager(c.answer);
        Manager(manager.port());
        const Outcome o = Call(kLib, kEntry, "E");
        EXPECT_EQ(o.result, c.result) << o.text;
        EXPECT_NE(o.text.find(c.text), std::string::npos) << o.text;
        EXPECT_EQ(Status(), 0u);
        EXPECT_EQ(manager.frames().size(), 1u);
    }

    // Down: may be tried again.
    Manager(FreePort());
    const Outcome down = Call(kLib, kEntry, "E");
    EXPECT_EQ(down.result, 1u);
    EXPECT_NE(down.text.find("cannot be reached"), std::string::npos) << down.text;
    EXPECT_NE(down.text.find("127.0.0.1 port"), std::string::npos) << down.text;

    // No manager set: a clear refusal; the status says not acknowledged.
    ASSERT_EQ(store_.setText(kAddress, "ManagerIP", ""), 0);
    const Outcome none = Call(kLib, kEntry, "E");
    EXPECT_EQ(none.result, 4u);
    EXPECT_NE(none.text.find("no manager address is set"), std::string::npos) << none.text;
    EXPECT_EQ(Status(), 0u);
}

// The test, critical-test and opening reports of rptset.dll go through the selected method: with
// the via-manager method they reach the manager, and the opening report marks EOpening.
TEST_F(ManagerDeliveryTest, TestAndOpeningReportsReachTheManager) {
    ASSERT_EQ(store_.setDword(ZOL_KEY_VNTSERVICE, "MethodType", 2), 0);
    ASSERT_EQ(store_.setDword(kAddress, "EOpening", 0), 0);
    const std::string lib = (root_.path() / "lib" / "rptset.dll").string();
    struct Release {
        void operator()(void* m) const { FreeLibrary(static_cast<HMODULE>(m)); }
    };
    const std::unique_ptr<void, Release> rptset(LoadLibrary(lib.c_str()));
    ASSERT_NE(rptset, nullptr) << ZolLastLoadError();
    const auto bind = [&](const char* name) {
        return GetProcAddress(static_cast<HMODULE>(rptset.get()), name);
    };
    auto* test = reinterpret_cast<AMAMVantrelTestReport_fn*>(bind("AMAMVantrelTestReport"));
    auto* fatal = reinterpret_cast<TestFatalReport_fn*>(bind("TestFatalReport"));
    auto* opening =
        reinterpret_cast<AMAMVantrelOpeningReport_fn*>(bind("AMAMVantrelOpeningReport"));
    ASSERT_TRUE(test && fatal && opening);

    ManagerListener manager("ACK T");
    Manager(manager.port());
    char* text = nullptr;
    EXPECT_EQ(test("VANTRELREPORT(TRANSTOMANAGER)", &text), 0) << (text ? text : "");
    std::free(text);
    text = nullptr;
    // The manager acknowledges "T" only: the critical test is refused with the manager's answer.
    EXPECT_EQ(fatal("VANTRELREPORT(TRANSTOMANAGER)", &text), 4);
    EXPECT_NE(std::string(text ? text : "").find("ACK T"), std::string::npos);
    std::free(text);
    text = nullptr;
    EXPECT_EQ(store_.dword(kAddress, "EOpening"), 0u);
    ManagerListener opens("ACK O");
    Manager(opens.port());
    EXPECT_EQ(opening(&text), 0) << (text ? text : "");
    std::free(text);
    EXPECT_EQ(store_.dword(kAddress, "EOpening"), 1u);

    ASSERT_EQ(manager.frames().size(), 2u);
    EXPECT_EQ(manager.frames()[0].rfind("ZOLVNT/1 T ", 0), 0u);
    EXPECT_EQ(manager.frames()[1].rfind("ZOLVNT/1 TF ", 0), 0u);
    ASSERT_EQ(opens.frames().size(), 1u);
    EXPECT_EQ(opens.frames()[0].rfind("ZOLVNT/1 O ", 0), 0u);
}

}  // namespace
}  // namespace nettest
