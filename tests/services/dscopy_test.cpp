// dscopy.dll: hour mask to schedule text ("x") and back ("b"), loaded as the program loads it.
#include <algorithm>
#include <random>
#include <string>

#include "dscopy_api.h"
#include "frame/libraries.h"
#include "services_test_util.h"

namespace svctest {
namespace {

class DscopyTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        ASSERT_TRUE(LoadDscopyDLL());
        toText = BindRptset<ScheduleMaskToText_fn>(hLibDSCOPY, "x");
        toMask = BindRptset<ScheduleTextToMask_fn>(hLibDSCOPY, "b");
        ASSERT_NE(toText, nullptr);
        ASSERT_NE(toMask, nullptr);
    }
    std::string Text(uint32_t mask) {
        char text[SCHEDULE_TEXT_MAX + 8];
        std::fill(std::begin(text), std::end(text), '#');
        EXPECT_EQ(toText(mask, text), 0);
        return text;
    }
    ScheduleMaskToText_fn* toText = nullptr;
    ScheduleTextToMask_fn* toMask = nullptr;
};

TEST_F(DscopyTest, MaskToText) {
    EXPECT_EQ(Text(0xFFFFFF), "0-23");
    EXPECT_EQ(Text(0), "");
    EXPECT_EQ(Text(1u << 7), "7-7");
    EXPECT_EQ(Text(1u << 0 | 1u << 23), "0-0,23-23");
    EXPECT_EQ(Text(0x7u | 0x3u << 22), "0-2,22-23");
    EXPECT_EQ(Text(0x1FFu | 1u << 12 | 0xFu << 20), "0-8,12-12,20-23");
    EXPECT_EQ(Text(0xFF000000u), "");  // hours above 23 do not exist
    EXPECT_EQ(Text(0xFFFFFFFFu), "0-23");
    // The longest text fits the documented size.
    EXPECT_EQ(Text(0x555555).size() + 1, sizeof "0-0,2-2,4-4,6-6,8-8,10-10,12-12,14-14,16-16,"
                                                "18-18,20-20,22-22");
    EXPECT_LE(Text(0xAAAAAA).size() + 1, static_cast<size_t>(SCHEDULE_TEXT_MAX));
    EXPECT_EQ(toText(0, nullptr), -1);
}

TEST_F(DscopyTest, TextToMask) {
    auto mask = [&](const char* text) {
        uint32_t m = 0xDEADBEEF;
        const int rc = toMask(text, &m);
        return rc == 0 ? m : (m == 0xDEADBEEF ? 0xBADu : 0xBAD0u);  // 0xBAD0: changed on failure
    };
    EXPECT_EQ(mask("0-23"), 0xFFFFFFu);
    EXPECT_EQ(mask(""), 0u);
    EXPECT_EQ(mask("   "), 0u);
    EXPECT_EQ(mask("0-8,12,20-23"), 0x1FFu | 1u << 12 | 0xFu << 20);
    EXPECT_EQ(mask("12-12"), 1u << 12);
    EXPECT_EQ(mask(" 1 - 3 , 5 "), 0xEu | 1u << 5);
    EXPECT_EQ(mask("22-2"), 0x7u | 0x3u << 22);  // over midnight
    EXPECT_EQ(mask("5-5,5-6,3-7"), 0xF8u);       // overlaps are merged
    EXPECT_EQ(mask("07-09"), 0x380u);
    for (const char* bad : {"24", "1-24", "-1", ",1", "1,", "1,,2", "1-2-3", "a", "1-", "007",
                            "1;2", "1 2", "0-23,x", "100"}) {
        EXPECT_EQ(mask(bad), 0xBADu) << bad;
    }
    uint32_t m = 0;
    EXPECT_EQ(toMask(nullptr, &m), -1);
    EXPECT_EQ(toMask("1-2", nullptr), -1);
}

TEST_F(DscopyTest, RoundTrips) {
    std::mt19937 random(20240521);
    std::vector<uint32_t> masks = {0, 0xFFFFFF, 0x555555, 0xAAAAAA, 0x800001};
    for (int hour = 0; hour < 24; ++hour)
        masks.push_back(1u << hour);
    for (int i = 0; i < 2000; ++i)
        masks.push_back(random() & 0xFFFFFF);
    for (uint32_t mask : masks) {
        const std::string text = Text(mask);
        uint32_t back = 0xDEADBEEF;
        ASSERT_EQ(toMask(text.c_str(), &back), 0) << text;
        ASSERT_EQ(back, mask) << text;
        // Every item the library writes is a range, as the program's syntax check requires.
        if (!text.empty()) {
            size_t start = 0;
            while (start <= text.size()) {
                const size_t end = std::min(text.find(',', start), text.size());
                const std::string item = text.substr(start, end - start);
                ASSERT_EQ(std::count(item.begin(), item.end(), '-'), 1) << text;
                ASSERT_NE(item.back(), '-') << text;
                start = end + 1;
            }
        }
    }
    // A text the administrator typed comes back in its canonical form.
    uint32_t typed = 0;
    ASSERT_EQ(toMask("20-23, 0-8,12", &typed), 0);
    EXPECT_EQ(Text(typed), "0-8,12-12,20-23");
}

}  // namespace
}  // namespace svctest
