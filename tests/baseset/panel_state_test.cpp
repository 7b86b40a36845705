// What the SNMP trap panel's buttons and the shutdown-delay panel's OK do, driven through their
// state without a terminal.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "baseset/baseset.h"

namespace {

using List = std::vector<std::string>;

}  // namespace

// Additions are shown and remembered for OK; duplicates (compared exactly) and a full list are
// refused and change nothing.
TEST(TrapPanelState, AddRefusesDuplicatesAndAFullList) {
    TrapPanelState state{true, {"10.0.0.1"}, {}};
    EXPECT_EQ(AddTrapAddress(state, "10.0.0.2"), nullptr);
    EXPECT_STREQ(AddTrapAddress(state, "10.0.0.1"), "IDS_ERROR_MSG_EXIST");
    EXPECT_STREQ(AddTrapAddress(state, "10.0.0.2"), "IDS_ERROR_MSG_EXIST");
    EXPECT_EQ(AddTrapAddress(state, "10.0.0.01"), nullptr);  // not the same text
    EXPECT_EQ(state.shown, (List{"10.0.0.1", "10.0.0.2", "10.0.0.01"}));
    EXPECT_EQ(state.added, (List{"10.0.0.2", "10.0.0.01"}));

    TrapPanelState full;
    for (int i = 0; i < TRAP_DEST_MAX; ++i)
        full.shown.push_back("10.1.0." + std::to_string(i));
    EXPECT_STREQ(AddTrapAddress(full, "10.2.0.1"), "SNMP_TRAP_LIST_FULL_ID");
    EXPECT_EQ(full.shown.size(), std::size_t{TRAP_DEST_MAX});
    EXPECT_TRUE(full.added.empty());
}

// A removed address leaves the list and, when this visit added it, the additions, so that OK does
// not store it again.
TEST(TrapPanelState, ForgetDropsAnUnsavedAdditionToo) {
    TrapPanelState state{false, {"10.0.0.1", "10.0.0.2", "10.0.0.1"}, {}};
    ASSERT_EQ(AddTrapAddress(state, "10.0.0.3"), nullptr);
    ForgetTrapAddress(state, "10.0.0.3");
    EXPECT_EQ(state.shown, (List{"10.0.0.1", "10.0.0.2", "10.0.0.1"}));
    EXPECT_TRUE(state.added.empty());
    ForgetTrapAddress(state, "10.0.0.1");  // the first equal entry only
    EXPECT_EQ(state.shown, (List{"10.0.0.2", "10.0.0.1"}));
    ForgetTrapAddress(state, "10.9.9.9");
    EXPECT_EQ(state.shown.size(), 2u);
}

TEST(TrapPanelState, UnusableAddresses) {
    for (const char* bad : {"0.0.0.0", "255.255.255.255"})
        EXPECT_TRUE(IsUnusableTrapAddress(bad)) << bad;
    for (const char* good : {"0.0.0.1", "255.255.255.254", "10.0.0.0", ""})
        EXPECT_FALSE(IsUnusableTrapAddress(good)) << good;
}

// Off keeps the stored delay whatever the entry shows; on needs a delay of 0 to 1800, read from
// at most the entry's five characters.
TEST(ShutdownPanelState, ApplyChecksOnlyADelayThatIsOn) {
    struct Row {
        bool enabled;
        const char* text;
        const char* refusal;
        int32_t value;
    } rows[] = {
        {true, "1800", nullptr, 1800},
        {true, "0", nullptr, 0},
        {true, "1801", "ERR_SHUTDOWN_ID", 5000},
        {true, "-1", "ERR_SHUTDOWN_ID", 5000},
        {true, "", "ERR_SHUTDOWN_NULL_ID", 5000},
        {false, "", nullptr, 5000},
        {false, "abc", nullptr, 5000},
        {true, "0180000", nullptr, 1800},
    };
    for (const Row& row : rows) {
        BaseData record{};
        record.Enable = 1;
        record.Value = 5000;  // left out of range by another tool
        const char* refusal = ApplyShutdownPanel({row.enabled, row.text}, record);
        EXPECT_STREQ(refusal ? refusal : "", row.refusal ? row.refusal : "") << row.text;
        EXPECT_EQ(record.Value, row.value) << row.text;
        EXPECT_EQ(record.Enable, row.refusal ? 1 : (row.enabled ? 1 : 0)) << row.text;
    }
}
