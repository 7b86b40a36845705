// zolreg at a terminal in the administrator's language: texts converted between the store's
// EUC-JP and the locale's encoding (or passed raw), refusals that store nothing, passwords never
// shown, and export/import byte for byte.
#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>

#include "product_root.h"
#include "store_reader.h"

namespace {

namespace fs = std::filesystem;
using zoltest::ProductRoot;
using zoltest::RunResult;

const std::string kKey = "SOFTWARE\\Tavik\\VNTService\\SETTING";
const std::string kHklmKey = "HKLM\\" + kKey;
const std::string kUtf8 = "管理者";
const std::string kEuc = "\xb4\xc9\xcd\xfd\xbc\xd4";  // 管理者 in EUC-JP

RunResult zolreg(const ProductRoot& root, const std::string& locale,
                 std::vector<std::string> args) {
    args.insert(args.begin(), root.bin("zolreg").string());
    const auto base = root.env();
    std::map<std::string, std::optional<std::string>> env(base.begin(), base.end());
    env["LANG"] = locale;
    env["LC_ALL"] = env["LC_CTYPE"] = std::nullopt;
    return zoltest::run(args, env);
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class ZolregEncoding : public ::testing::Test {
  protected:
    void SetUp() override {
        // The conversion is only seen under the Japanese locales; scripts/deps.sh makes them.
        for (const char* name : {"ja_JP.UTF-8", "ja_JP.eucJP"}) {
            ASSERT_NE(std::setlocale(LC_ALL, name), nullptr)
                << "locale " << name << " is missing (scripts/deps.sh generates it)";
        }
        std::setlocale(LC_ALL, "C");
    }
    ProductRoot root;
    zoltest::StoreReader store{root};
};

// What is typed in each locale, and what the store and query then hold.
TEST_F(ZolregEncoding, TextsRoundTripInTheLocalesEncoding) {
    struct Case {
        const char* locale;
        std::vector<std::string> extra;  // options after the add and the query
        std::string typed, stored, shown;
    };
    const Case cases[] = {
        {"ja_JP.UTF-8", {}, kUtf8, kEuc, kUtf8},
        {"ja_JP.eucJP", {}, kEuc, kEuc, kEuc},
        {"ja_JP.UTF-8", {"/raw"}, kEuc, kEuc, kEuc},
        {"ja_JP.UTF-8", {"/RAW"}, kUtf8, kUtf8, kUtf8},
        {"C", {}, kEuc, kEuc, kEuc},
        {"ja_JP.UTF-8", {}, "plain ASCII", "plain ASCII", "plain ASCII"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.locale) + " " + c.typed);
        std::vector<std::string> add{"add", kHklmKey, "/v", "BUTANNMN", "/d", c.typed, "/f"};
        add.insert(add.end(), c.extra.begin(), c.extra.end());
        RunResult r = zolreg(root, c.locale, add);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(store.text(kKey, "BUTANNMN"), c.stored);

        std::vector<std::string> query{"query", kHklmKey, "/v", "BUTANNMN"};
        query.insert(query.end(), c.extra.begin(), c.extra.end());
        r = zolreg(root, c.locale, query);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_TRUE(contains(r.out, "    BUTANNMN    REG_SZ    " + c.shown + "\n")) << r.out;
        EXPECT_EQ(r.err, "");
    }
}

// Key and value names typed in Japanese find what is stored in EUC-JP, and show back legibly;
// a list of texts converts item by item.
TEST_F(ZolregEncoding, NamesAndMultiStringsConvertToo) {
    const std::string key = "HKLM\\SOFTWARE\\" + kUtf8;
    ASSERT_EQ(zolreg(root, "ja_JP.UTF-8",
                     {"add", key, "/v", "名前", "/t", "REG_MULTI_SZ", "/d", "一\\0二"})
                  .status,
              0);
    EXPECT_EQ(store.multiString("SOFTWARE\\" + kEuc, "\xcc\xbe\xc1\xb0"),
              (std::vector<std::string>{"\xb0\xec", "\xc6\xf3"}));
    RunResult r = zolreg(root, "ja_JP.UTF-8", {"query", "HKLM\\SOFTWARE", "/s", "/v", "名前"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "HKEY_LOCAL_MACHINE\\SOFTWARE\\" + kUtf8 +
                         "\n    名前    REG_MULTI_SZ    一\\0二\n\n");
    EXPECT_EQ(zolreg(root, "ja_JP.UTF-8", {"delete", key, "/v", "名前", "/f"}).status, 0);
    EXPECT_FALSE(store.has("SOFTWARE\\" + kEuc, "\xcc\xbe\xc1\xb0"));
}

// A text that does not convert is refused whole, naming the part of the command line and the
// byte, and leaves the value as it was; /raw stores the bytes as given.
TEST_F(ZolregEncoding, TextsThatDoNotConvertAreRefused) {
    ASSERT_EQ(store.setText(kKey, "BUTANNMN", kEuc), ERROR_SUCCESS);
    struct Case {
        std::vector<std::string> args;
        std::string message;
    };
    const Case cases[] = {
        {{"/v", "BUTANNMN", "/d", "ok 😀"}, "the text after /d has a character EUC-JP cannot hold"},
        {{"/v", "BUTANNMN", "/d", "bad \xff"}, "the text after /d is not UTF-8 text (byte 5)"},
        {{"/v", "BAD\xc3", "/d", "x"}, "the text after /v is not UTF-8 text (byte 4)"},
    };
    for (const Case& c : cases) {
        std::vector<std::string> args{"add", kHklmKey};
        args.insert(args.end(), c.args.begin(), c.args.end());
        args.push_back("/f");
        RunResult r = zolreg(root, "ja_JP.UTF-8", args);
        EXPECT_EQ(r.status, 1);
        EXPECT_TRUE(contains(r.err, c.message)) << r.err;
        EXPECT_TRUE(contains(r.err, "nothing was changed")) << r.err;
        EXPECT_EQ(store.text(kKey, "BUTANNMN"), kEuc);
    }
    RunResult r = zolreg(root, "ja_JP.UTF-8", {"query", "HKLM\\SOFTWARE\\\xff"});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(contains(r.err, "the key is not UTF-8 text (byte 15)")) << r.err;

    ASSERT_EQ(zolreg(root, "ja_JP.UTF-8",
                     {"add", kHklmKey, "/v", "BUTANNMN", "/d", "bad \xff", "/f", "/raw"})
                  .status,
              0);
    EXPECT_EQ(store.text(kKey, "BUTANNMN"), "bad \xff");
    // A stored text that is no EUC-JP shows as stored, with a warning that says so.
    r = zolreg(root, "ja_JP.UTF-8", {"query", kHklmKey, "/v", "BUTANNMN"});
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(contains(r.out, "REG_SZ    bad \xff\n")) << r.out;
    EXPECT_EQ(r.err,
              "zolreg: warning: " + kHklmKey + " BUTANNMN is not EUC-JP text; shown as stored\n");
}

// Encoded passwords never reach the terminal, whatever the options.
TEST_F(ZolregEncoding, PasswordsAreNeverShown) {
    const std::string mail = "SOFTWARE\\Tavik\\ZolAlertMan\\BaseSetting\\Report\\Secret";
    ASSERT_EQ(store.setText(mail, "SMTPAuthPass", "smtp-secret"), ERROR_SUCCESS);
    ASSERT_EQ(store.setText(mail, "POPPass", "pop-secret"), ERROR_SUCCESS);
    ASSERT_EQ(store.setText(mail, "password", "oob-secret"), ERROR_SUCCESS);
    ASSERT_EQ(store.setText(mail, "User", "visible"), ERROR_SUCCESS);
    for (const std::vector<std::string>& extra :
         {std::vector<std::string>{}, {"/raw"}, {"/s"}, {"/v", "POPPass", "/raw"}}) {
        std::vector<std::string> args{"query", "HKLM\\" + mail};
        args.insert(args.end(), extra.begin(), extra.end());
        RunResult r = zolreg(root, "ja_JP.UTF-8", args);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_FALSE(contains(r.out, "secret")) << r.out;
        EXPECT_TRUE(contains(r.out, "    POPPass    REG_SZ    (hidden)\n")) << r.out;
    }
    RunResult r = zolreg(root, "C", {"query", "HKLM\\" + mail});
    EXPECT_TRUE(contains(r.out, "    SMTPAuthPass    REG_SZ    (hidden)\n")) << r.out;
    EXPECT_TRUE(contains(r.out, "    password    REG_SZ    (hidden)\n")) << r.out;
    EXPECT_TRUE(contains(r.out, "    User    REG_SZ    visible\n")) << r.out;
}

// Export files are the store's bytes in every locale: export, import into a fresh store, export
// again gives the same file, Japanese included.
TEST_F(ZolregEncoding, ExportAndImportAreByteExact) {
    ASSERT_EQ(
        zolreg(root, "ja_JP.UTF-8", {"add", kHklmKey, "/v", "BUTANNMN", "/d", kUtf8, "/f"}).status,
        0);
    const fs::path first = root.path() / "first.reg", second = root.path() / "second.reg";
    ASSERT_EQ(
        zolreg(root, "ja_JP.UTF-8", {"export", "HKLM\\SOFTWARE\\Tavik", first.string()}).status, 0);
    const std::string exported = zoltest::readFile(first);
    EXPECT_TRUE(contains(exported, "\"BUTANNMN\"=\"" + kEuc + "\"")) << "not EUC-JP in the file";

    ProductRoot other;
    ASSERT_EQ(zolreg(other, "ja_JP.UTF-8", {"delete", "HKLM\\SOFTWARE\\Tavik", "/f"}).status, 0);
    ASSERT_EQ(zolreg(other, "ja_JP.UTF-8", {"import", first.string()}).status, 0);
    ASSERT_EQ(
        zolreg(other, "ja_JP.eucJP", {"export", "HKLM\\SOFTWARE\\Tavik", second.string()}).status,
        0);
    EXPECT_TRUE(zoltest::readFile(second) == exported) << "the second export differs";
    EXPECT_EQ(zoltest::StoreReader(other).text(kKey, "BUTANNMN"), kEuc);
}

TEST(ZolregHelp, PrintsTheUsage) {
    ProductRoot root(false);
    for (const char* help : {"--help", "-h", "/?"}) {
        RunResult r = zolreg(root, "C", {help});
        EXPECT_EQ(r.status, 0) << help;
        EXPECT_TRUE(r.out.starts_with("usage: zolreg query KEY")) << r.out;
        EXPECT_TRUE(contains(r.out, "/raw")) << r.out;
    }
}

}  // namespace
