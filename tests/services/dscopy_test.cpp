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
        ASSERT_TRUE(toText && toMask);
    }
    std::string Text(uint32_t mask) {
        char text[SCHEDULE_TEXT_MAX];
        EXPECT_EQ(toText(mask, text), 0);
        return text;
    }
    // The mask of text, or 0xBAD when refused (and then the mask must be left unchanged).
    uint32_t Mask(const char* text) {
        uint32_t mask = 0xDEADBEEF;
        if (toMask(text, &mask) == 0)
            return mask;
        return mask == 0xDEADBEEF ? 0xBAD : 0xBAD0;
    }
    ScheduleMaskToText_fn* toText = nullptr;
    ScheduleTextToMask_fn* toMask = nullptr;
};

TEST_F(DscopyTest, MaskToTextAndBackAndRoundTrips) {
    EXPECT_EQ(Text(0xFFFFFF), "0-23");
    EXPECT_EQ(Text(0), "");
    EXPECT_EQ(Text(0x7u | 0x3u << 22), "0-2,22-23");
    EXPECT_EQ(Text(0x1FFu | 1u << 12 | 0xFu << 20), "0-8,12-12,20-23");
    EXPECT_EQ(Text(0xFF000000u), "");  // there is no hour 24
    EXPECT_EQ(Text(0x555555).size() + 1, 62u);
    EXPECT_EQ(toText(0, nullptr), -1);

    EXPECT_EQ(Mask("0-23"), 0xFFFFFFu);
    EXPECT_EQ(Mask(""), 0u);
    EXPECT_EQ(Mask("0-8,12,20-23"), 0x1FFu | 1u << 12 | 0xFu << 20);
    EXPECT_EQ(Mask(" 1 - 3 , 5 "), 0xEu | 1u << 5);
    EXPECT_EQ(Mask("22-2"), 0x7u | 0x3u << 22);  // over midnight
    EXPECT_EQ(Mask("5-5,5-6,3-7"), 0xF8u);       // overlaps merge
    EXPECT_EQ(Mask("07-09"), 0x380u);
    for (const char* bad : {"24", "1-24", "-1", ",1", "1,", "1,,2", "1-2-3", "a", "1-", "007",
                            "1;2", "1 2", "0-23,x", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Mask(bad), 0xBADu) << (bad ? bad : "(null)");
    }
    EXPECT_EQ(toMask("1-2", nullptr), -1);

    // Round trips, every item of the text a range "a-b", as the program's schedule check wants.
    std::mt19937 random(20240521);
    std::vector<uint32_t> masks = {0, 0xFFFFFF, 0x555555, 0xAAAAAA, 0x800001};
    for (int hour = 0; hour < 24; ++hour)
        masks.push_back(1u << hour);
    for (int i = 0; i < 2000; ++i)
        masks.push_back(random() & 0xFFFFFF);
    for (uint32_t mask : masks) {
        const std::string text = Text(mask);
        ASSERT_EQ(Mask(text.c_str()), mask) << text;
        if (text.empty())
            continue;
        const auto items = std::count(text.begin(), text.end(), ',') + 1;
        ASSERT_EQ(std::count(text.begin(), text.end(), '-'), items) << text;
        ASSERT_EQ(text.find("-,"), std::string::npos) << text;
        ASSERT_NE(text.back(), '-') << text;
    }
    EXPECT_EQ(Text(Mask("20-23, 0-8,12")), "0-8,12-12,20-23");  // canonical form
}

}  // namespace
}  // namespace svctest
