// The staged zolreg run end to end in fresh product roots: init from default.reg, reg.exe's
// query layout, add/delete with and without confirmation, export/import round trips, imports
// that apply nothing, and damaged or missing stores reported in one line.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "product_root.h"

namespace {

namespace fs = std::filesystem;
using zoltest::ProductRoot;
using zoltest::RunResult;

RunResult zolreg(const ProductRoot& root, std::vector<std::string> args,
                 const std::string& input = {}) {
    args.insert(args.begin(), root.bin("zolreg").string());
    return zoltest::run(args, root.env(), input);
}

// Exit status 1 and exactly one line on standard error, which holds `text`.
void expectOneLineFailure(const RunResult& r, const std::string& text) {
    EXPECT_EQ(r.status, 1) << r.err;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    EXPECT_TRUE(r.err.starts_with("zolreg: ")) << r.err;
    EXPECT_NE(r.err.find(text), std::string::npos) << r.err;
}

void expectOk(const RunResult& r) {
    EXPECT_EQ(r.status, 0) << r.err;
}
void expectOut(const RunResult& r, const std::string& out) {
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, out);
}

const std::string kDone = "The operation completed successfully.\n";

TEST(ZolregInit, CreatesRefusesAndReplacesTheStore) {
    ProductRoot root(false);
    const std::string store = root.store().string();
    expectOneLineFailure(zolreg(root, {"query", "HKLM\\SOFTWARE"}),
                         "the settings store " + store + " is missing; run zolreg init");

    expectOut(zolreg(root, {"init"}), kDone);
    ASSERT_TRUE(fs::exists(root.store()));
    EXPECT_EQ(fs::status(root.store()).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    expectOut(
        zolreg(root, {"query", "HKLM\\SOFTWARE\\Tavik\\VNTService\\SETUP", "/v", "Installed"}),
        "HKEY_LOCAL_MACHINE\\SOFTWARE\\Tavik\\VNTService\\SETUP\n"
        "    Installed    REG_DWORD    0x1\n\n");
    expectOk(zolreg(root, {"check"}));

    expectOk(zolreg(root, {"add", "HKLM\\SOFTWARE\\Extra", "/v", "x", "/d", "1"}));
    expectOneLineFailure(zolreg(root, {"init"}), "already exists; use zolreg init /f");
    expectOk(zolreg(root, {"query", "HKLM\\SOFTWARE\\Extra"}));  // refused init kept it

    expectOk(zolreg(root, {"init", "/F"}));
    expectOneLineFailure(zolreg(root, {"query", "HKLM\\SOFTWARE\\Extra"}),
                         "key HKLM\\SOFTWARE\\Extra not found");
    RunResult r = zolreg(root, {"query",
                                "hkey_local_machine\\software\\tavik\\zolalertman\\BaseSetting\\"
                                "Report\\VantrelReport(Internet Mail)\\Setting",
                                "/v", "POPPort"});
    expectOk(r);
    EXPECT_NE(r.out.find("    POPPort    REG_DWORD    0x6e\n"), std::string::npos) << r.out;

    // Defaults that do not parse leave no store.
    fs::remove(root.store());
    zoltest::writeFile(root.path() / "data" / "default.reg",
                       "REGEDIT4\n\n[HKLM\\SOFTWARE\\A]\n\"ok\"=dword:1\n\"bad\"=dword:xyz\n");
    expectOneLineFailure(zolreg(root, {"init"}), "default.reg: line 5: ");
    EXPECT_FALSE(fs::exists(root.store()));
}

TEST(ZolregQuery, ReproducesRegExeLayout) {
    ProductRoot root;
    const std::string key = "HKLM\\SOFTWARE\\Test";
    expectOk(zolreg(root, {"add", key, "/ve", "/d", "default text"}));
    expectOk(zolreg(root, {"add", key, "/v", "Bin", "/t", "REG_BINARY", "/d", "00ab10"}));
    expectOk(zolreg(root, {"add", key, "/v", "Count", "/t", "REG_DWORD", "/d", "110"}));
    expectOk(zolreg(root, {"add", key, "/v", "Expand", "/t", "REG_EXPAND_SZ", "/d", "%ZolDir%"}));
    expectOk(zolreg(root, {"add", key, "/v", "List", "/t", "reg_multi_sz", "/d", "one\\0two"}));
    expectOk(zolreg(root, {"add", key + "\\Alpha", "/v", "Hex", "/t", "REG_DWORD", "/d", "0x10"}));
    expectOk(zolreg(root, {"add", key + "\\Alpha\\Deep"}));
    expectOk(zolreg(root, {"add", key + "\\Beta"}));

    expectOut(zolreg(root, {"query", "HKEY_LOCAL_MACHINE\\SOFTWARE\\Test"}),
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Test\n"
              "    (Default)    REG_SZ    default text\n"
              "    Bin    REG_BINARY    00AB10\n"
              "    Count    REG_DWORD    0x6e\n"
              "    Expand    REG_EXPAND_SZ    %ZolDir%\n"
              "    List    REG_MULTI_SZ    one\\0two\n"
              "\n"
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Test\\Alpha\n"
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Test\\Beta\n");

    expectOut(zolreg(root, {"query", key + "\\Alpha", "/s"}),
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Test\\Alpha\n"
              "    Hex    REG_DWORD    0x10\n"
              "\n"
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Test\\Alpha\\Deep\n"
              "\n");

    expectOut(zolreg(root, {"query", key, "/v", "count"}),
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Test\n    Count    REG_DWORD    0x6e\n\n");
    expectOut(zolreg(root, {"query", key + "\\Beta", "/ve"}),
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Test\\Beta\n"
              "    (Default)    REG_SZ    (value not set)\n\n");

    expectOneLineFailure(zolreg(root, {"query", key, "/v", "Nope"}),
                         "value Nope not found in key HKLM\\SOFTWARE\\Test");
    expectOneLineFailure(zolreg(root, {"query", key + "\\Gamma"}),
                         "key HKLM\\SOFTWARE\\Test\\Gamma not found");
    RunResult r = zolreg(root, {"query", "HKCU\\Software"});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.starts_with("zolreg: only keys under HKLM")) << r.err;
}

TEST(ZolregAddDelete, ConfirmationsAndData) {
    ProductRoot root;
    const std::string key = "HKLM\\SOFTWARE\\Flow";
    const std::vector<std::string> ask = {"query", key, "/v", "V"};
    expectOk(zolreg(root, {"add", key, "/v", "V", "/d", "old"}));

    // Overwriting asks; no answer or No leaves the value alone with status 1.
    for (const std::string& answer : {std::string(), std::string("n\n")}) {
        RunResult r = zolreg(root, {"add", key, "/v", "V", "/d", "new"}, answer);
        EXPECT_EQ(r.status, 1) << answer;
        EXPECT_TRUE(r.out.starts_with("Value V exists, overwrite(Yes/No)?")) << r.out;
        EXPECT_NE(zolreg(root, ask).out.find("REG_SZ    old\n"), std::string::npos);
    }
    RunResult r = zolreg(root, {"add", key, "/v", "V", "/d", "new"}, "Yes\n");
    expectOk(r);
    EXPECT_NE(zolreg(root, ask).out.find("REG_SZ    new\n"), std::string::npos);
    expectOut(zolreg(root, {"add", key, "/v", "V", "/t", "REG_DWORD", "/d", "0xFFFFFFFF", "/f"}),
              kDone);  // no question with /f
    EXPECT_NE(zolreg(root, ask).out.find("REG_DWORD    0xffffffff\n"), std::string::npos);

    // Deleting one value, all values, and a key with subkeys.
    expectOk(zolreg(root, {"add", key, "/v", "W", "/d", "w"}));
    expectOk(zolreg(root, {"add", key + "\\Sub\\Deeper", "/v", "x", "/d", "1"}));
    r = zolreg(root, {"delete", key, "/v", "W"}, "y\n");
    expectOk(r);
    EXPECT_TRUE(r.out.starts_with("Delete the registry value W (Yes/No)?")) << r.out;
    expectOneLineFailure(zolreg(root, {"delete", key, "/v", "W", "/f"}), "value W not found");

    expectOk(zolreg(root, {"delete", key, "/va", "/f"}));
    r = zolreg(root, {"query", key});
    EXPECT_EQ(r.out,
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Flow\n\nHKEY_LOCAL_MACHINE\\SOFTWARE\\Flow\\Sub\n");

    r = zolreg(root, {"delete", key});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out,
              "Permanently delete the registry key HKEY_LOCAL_MACHINE\\SOFTWARE\\Flow "
              "(Yes/No)?\n");
    expectOk(zolreg(root, {"query", key + "\\Sub\\Deeper"}));
    expectOk(zolreg(root, {"delete", key}, "YES\n"));
    expectOneLineFailure(zolreg(root, {"query", key + "\\Sub\\Deeper"}), "not found");
    expectOneLineFailure(zolreg(root, {"delete", "HKLM", "/f"}), "cannot be deleted");
    expectOk(zolreg(root, {"query", "HKLM\\SOFTWARE\\Tavik\\ZolAlertMan"}));  // the rest stays
}

TEST(ZolregExportImport, RoundTripIsByteIdentical) {
    ProductRoot source;
    const std::string key = "HKLM\\SOFTWARE\\Copy";
    const std::string euc = "\xC6\xFC\xCB\xDC\xB8\xEC";  // EUC-JP bytes, stored raw
    expectOk(zolreg(source, {"add", key, "/ve", "/d", "q\"uote\\back"}));
    expectOk(zolreg(source, {"add", key, "/v", euc, "/d", euc, "/raw"}));
    expectOk(zolreg(source, {"add", key, "/v", "Dw", "/t", "REG_DWORD", "/d", "4294967295"}));
    const std::string longHex(200, 'c');
    expectOk(zolreg(source, {"add", key, "/v", "Long", "/t", "REG_BINARY", "/d", longHex}));
    expectOk(zolreg(source, {"add", key, "/v", "Multi", "/t", "REG_MULTI_SZ", "/d", "a\\0b"}));
    expectOk(zolreg(source, {"add", key + "\\Empty"}));
    expectOk(
        zolreg(source, {"add", key + "\\Nest\\Ed", "/v", "x", "/t", "REG_EXPAND_SZ", "/d", "%x%"}));

    const fs::path file = source.path() / "copy.reg";
    expectOut(zolreg(source, {"export", key, file.string()}), kDone);
    const std::string text = zoltest::readFile(file);
    EXPECT_TRUE(text.starts_with(
        "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Copy]\n@=\"q\\\"uote\\\\back\"\n"))
        << text;
    EXPECT_NE(text.find("\"" + euc + "\"=\"" + euc + "\"\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\"Dw\"=dword:ffffffff\n"), std::string::npos);
    EXPECT_NE(text.find("\"Multi\"=hex(7):61,00,62,00,00\n"), std::string::npos);
    EXPECT_NE(text.find("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Copy\\Empty]\n\n"), std::string::npos);
    EXPECT_NE(text.find(",\\\n  "), std::string::npos);  // long binary data is continued

    ProductRoot target;
    expectOk(zolreg(target, {"import", file.string()}));
    const fs::path again = target.path() / "again.reg";
    expectOk(zolreg(target, {"export", key, again.string()}));
    EXPECT_EQ(zoltest::readFile(again), text);

    // Deletions in an import file: a value and a whole key.
    const fs::path edits = target.path() / "edits.reg";
    zoltest::writeFile(edits,
                       "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Copy]\r\n\"Dw\"=-\r\n"
                       "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Copy\\Nest]\r\n");
    expectOk(zolreg(target, {"import", edits.string()}));
    expectOneLineFailure(zolreg(target, {"query", key, "/v", "Dw"}), "value Dw not found");
    expectOneLineFailure(zolreg(target, {"query", key + "\\Nest\\Ed"}), "not found");
    expectOk(zolreg(target, {"query", key, "/v", "Multi"}));

    // A malformed import names its line and applies nothing of what went before it.
    ProductRoot& root = target;
    zoltest::writeFile(edits,
                       "REGEDIT4\n\n[HKLM\\SOFTWARE\\New]\n\"a\"=\"1\"\n"
                       "[-HKLM\\SOFTWARE\\Tavik\\VNTService]\n"
                       "[HKLM\\SOFTWARE\\New2]\n\"b\"=hex:01,\\\n  0x\n");
    expectOneLineFailure(zolreg(root, {"import", edits.string()}), "edits.reg: line 8: ");
    expectOneLineFailure(zolreg(root, {"query", "HKLM\\SOFTWARE\\New"}), "not found");
    expectOk(zolreg(root, {"query", "HKLM\\SOFTWARE\\Tavik\\VNTService\\SETUP"}));

    expectOneLineFailure(zolreg(root, {"import", (root.path() / "none.reg").string()}),
                         "cannot read");
}

TEST(ZolregStore, DamagedOrMissingStoreIsOneLine) {
    for (int damage = 0; damage < 3; ++damage) {  // truncated, garbage, missing
        ProductRoot root;
        const std::string store = "the settings store " + root.store().string();
        const std::string expected[] = {store,
                                        store + " is damaged (not a settings store or corrupt)",
                                        store + " is missing; run zolreg init"};
        const fs::path in = root.path() / "in.reg", out = root.path() / "out.reg";
        zoltest::writeFile(in, "REGEDIT4\n\n[HKLM\\SOFTWARE\\X]\n\"v\"=\"1\"\n");
        expectOk(zolreg(root, {"check"}));
        if (damage == 0)
            fs::resize_file(root.store(), fs::file_size(root.store()) / 3);
        else if (damage == 1)
            zoltest::writeFile(root.store(), std::string(fs::file_size(root.store()), '\x5a'));
        else
            fs::remove(root.store());
        for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
                 {"query", "HKLM\\SOFTWARE"},
                 {"add", "HKLM\\SOFTWARE\\X", "/v", "v", "/d", "1", "/f"},
                 {"delete", "HKLM\\SOFTWARE\\Tavik", "/f"},
                 {"export", "HKLM\\SOFTWARE", out.string()},
                 {"check"},
                 {"import", in.string()}}) {
            SCOPED_TRACE(args[0] + " with damage " + std::to_string(damage));
            const RunResult r = zolreg(root, args);
            expectOneLineFailure(r, expected[damage]);
            EXPECT_TRUE(r.out.empty()) << r.out;
        }
        EXPECT_FALSE(fs::exists(out));
        EXPECT_EQ(fs::exists(root.store()), damage != 2);  // nothing made one up
    }
}

}  // namespace
