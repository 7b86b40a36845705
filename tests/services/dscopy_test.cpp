// dscopy.dll: hour mask to schedule text ("x") and back ("b"), loaded as the program loads it.
#include <algorithm>
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
        Bind(toText, "x", hLibDSCOPY);
        Bind(toMask, "b", hLibDSCOPY);
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

TEST_F(DscopyTest, MaskToTextAndBack) {
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

    // Every item a range "a-b", as the program's schedule check wants of a text it shows.
    for (uint32_t mask : {0x1u, 0x800001u, 0x555555u, 0xAAAAAAu, 0xF0F0F1u, 0xFFFFFFu}) {
        const std::string text = Text(mask);
        EXPECT_EQ(std::count(text.begin(), text.end(), '-'),
                  std::count(text.begin(), text.end(), ',') + 1)
            << text;
        EXPECT_EQ(text.find("-,"), std::string::npos) << text;
        EXPECT_NE(text.back(), '-') << text;
    }
    EXPECT_EQ(Text(Mask("20-23, 0-8,12")), "0-8,12-12,20-23");  // canonical form
    // The program sets the mask to 0 before "b" and keeps the old hours when it stays 0: a text
    // naming no usable hour must leave it there.
    for (const char* none : {"", "   ", "24", "x", "1-", "-", ","}) {
        uint32_t mask = 0;
        toMask(none, &mask);
        EXPECT_EQ(mask, 0u) << none;
    }
}

TEST_F(DscopyTest, EveryMaskComesBackFromItsText) {
    // All 2^24 masks through the bound exports, checked without an assertion per mask (which
    // would cost more than the conversions); the first mismatch is reported.
    char text[SCHEDULE_TEXT_MAX];
    uint32_t mask = 0;
    for (; mask <= 0xFFFFFF; ++mask) {
        uint32_t back = ~mask;
        if (toText(mask, text) != 0 || toMask(text, &back) != 0 || back != mask)
            break;
    }
    EXPECT_EQ(mask, 0x1000000u) << "mask " << mask << " gave \"" << text << '"';
}

}  // namespace
}  // namespace svctest
