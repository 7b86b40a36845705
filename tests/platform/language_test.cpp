// The default language from the locale variables: the first one set and non-empty decides.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "product_root.h"
#include "zolwin.h"

namespace {

TEST(Language, FirstSetLocaleVariableDecides) {
    using V = std::optional<std::string>;
    struct Case {
        V lcAll, lcMessages, lang;
        LANGID want;
    };
    const Case cases[] = {
        {{}, {}, "ja_JP.UTF-8", 1041},
        {{}, {}, "ja_JP.eucJP", 1041},
        {{}, {}, "en_US.UTF-8", 1033},
        {{}, {}, "C", 1033},
        {{}, {}, {}, 1033},
        {"", "", "", 1033},
        {"C", "ja_JP.UTF-8", "ja_JP", 1033},
        {"ja_JP.eucJP", "C", "C", 1041},
        {{}, "ja_JP.UTF-8", "C", 1041},
        {{}, "en_US.UTF-8", "ja_JP.UTF-8", 1033},
        {"", "", "ja_JP.UTF-8", 1041},
        {"", "ja_JP.UTF-8", "C", 1041},
        {{}, {}, "en_JA.UTF-8", 1033},
    };
    for (const auto& c : cases) {
        zoltest::ScopedEnv a("LC_ALL", c.lcAll), m("LC_MESSAGES", c.lcMessages), l("LANG", c.lang);
        EXPECT_EQ(GetSystemDefaultLangID(), c.want)
            << c.lcAll.value_or("-") << " " << c.lcMessages.value_or("-") << " "
            << c.lang.value_or("-");
    }
}

}  // namespace
