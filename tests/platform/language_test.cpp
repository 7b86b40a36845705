// The default language from the locale variables: the first one set and non-empty decides.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "product_root.h"
#include "zolwin.h"

namespace {

using zoltest::ScopedEnv;
using Var = std::optional<std::string>;

LANGID langFor(Var lcAll, Var lcMessages, Var lang) {
    ScopedEnv a("LC_ALL", lcAll);
    ScopedEnv m("LC_MESSAGES", lcMessages);
    ScopedEnv l("LANG", lang);
    return GetSystemDefaultLangID();
}

TEST(Language, LocaleVariablesInOrder) {
    constexpr LANGID ja = LANGID_JAPANESE, en = LANGID_ENGLISH_US;
    EXPECT_EQ(ja, 1041);
    EXPECT_EQ(en, 1033);
    EXPECT_EQ(langFor({}, {}, "ja_JP.UTF-8"), ja);
    EXPECT_EQ(langFor({}, {}, "ja_JP.eucJP"), ja);
    EXPECT_EQ(langFor({}, {}, "ja"), ja);
    EXPECT_EQ(langFor({}, {}, "en_US.UTF-8"), en);
    EXPECT_EQ(langFor({}, {}, "C"), en);
    EXPECT_EQ(langFor({}, {}, {}), en);
    EXPECT_EQ(langFor("", "", ""), en);
    // LC_ALL overrides LC_MESSAGES, which overrides LANG.
    EXPECT_EQ(langFor("C", "ja_JP.UTF-8", "ja_JP.UTF-8"), en);
    EXPECT_EQ(langFor("ja_JP.eucJP", "C", "en_US.UTF-8"), ja);
    EXPECT_EQ(langFor({}, "ja_JP.UTF-8", "en_US.UTF-8"), ja);
    EXPECT_EQ(langFor({}, "en_US.UTF-8", "ja_JP.UTF-8"), en);
    // Set but empty counts as not set.
    EXPECT_EQ(langFor("", "", "ja_JP.UTF-8"), ja);
    EXPECT_EQ(langFor("", "ja_JP.UTF-8", "C"), ja);
    // Only a leading "ja" is Japanese.
    EXPECT_EQ(langFor({}, {}, "en_JA.UTF-8"), en);
}

}  // namespace
