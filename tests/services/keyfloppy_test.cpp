// The key floppy end to end: zolkeyfd writes and checks the file, rptset.dll checks a path and
// reads a floppy into a seeded store (every value, the read flag and the type), and every kind of
// refusal leaves the store as it was.
#include <climits>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "frame/libraries.h"
#include "keyfile.h"
#include "seeded_store.h"

namespace svctest {
namespace {

namespace fs = std::filesystem;
using Values = std::vector<std::pair<std::string, std::string>>;

const std::string kSetupKey = kServiceKey + "\\SETUP";
const std::string kCompanyJ = "\xb3\xf4\xbc\xb0\xb2\xf1\xbc\xd2";  // EUC-JP text

class KeyFloppyTest : public SeededStoreTest {
  protected:
    void SetUp() override {
        SeededStoreTest::SetUp();
        ASSERT_TRUE(LoadRptsetDLL());
        Bind(read, "GetOpenMsgfromFD");
        Bind(check, "checkVntFile");
        Bind(flag, "CheckKeyFDFlag");
    }
    zoltest::RunResult Zolkeyfd(std::vector<std::string> args) const {
        args.insert(args.begin(), root().bin("zolkeyfd").string());
        return zoltest::run(args, root().env());
    }
    // A folder holding `bytes` as its key file.
    std::string Floppy(const std::string& name, const std::string& bytes) const {
        const fs::path dir = root().path() / name;
        fs::create_directories(dir);
        zoltest::writeFile(dir / "VNTKEY.TXT", bytes);
        return dir.string();
    }
    GetOpenMsgfromFD_fn* read = nullptr;
    checkVntFile_fn* check = nullptr;
    CheckKeyFDFlag_fn* flag = nullptr;
};

// A valid HTTPS floppy's values as zolkeyfd takes them, with the key each lands in.
struct Landing {
    std::string key;
    std::string name;
    std::string value;
};
const std::vector<Landing> kFullFloppy = {
    {kServiceKey, "KEYFDTYPE", "2"},
    {kSettingKey, "USERCODE", "C0012345"},
    {kHttpsKey, "HTTPD1URL", "https://centre.example.com/report"},
    {kHttpsKey, "HTTPD2URL", "https://backup.example.com/report"},
    {kServiceKey, "InstVantrelBTO", "1"},
    {kSetupKey, "VERSION", "3.60J"},
    {kSetupKey, "SETTING", "1"},
    {kSetupKey, "MAILADRS", "centre@example.com"},
    {kSetupKey, "PHONENO", "+81-3-1234-5678"},
    {kSetupKey, "ERRORREPLY", "errors@example.com"},
    {kSetupKey, "URL1", "https://centre.example.com/"},
    {kSetupKey, "URL2", "https://backup.example.com/"},
    {kSettingKey, "KAISHAKBN", "0"},
    {kSettingKey, "TOKUINMN", kCompanyJ},
    {kSettingKey, "SYSSHOPNMN", "Example Dealer"},
    {kSettingKey, "SYSSETEL", "03-9876-5432"},
    {kHeartBeatKey, "HBINTERVAL", "7"},
    {kHeartBeatKey, "HBSLEEPTIME", "3600"},
};

TEST_F(KeyFloppyTest, FloppyMadeByZolkeyfdLandsWholeInTheStore) {
    const std::string dir = (root().path() / "fd").string();
    std::vector<std::string> args = {"make", dir};
    for (const Landing& l : kFullFloppy)
        args.push_back(l.name + "=" + l.value);
    const zoltest::RunResult made = Zolkeyfd(args);
    ASSERT_EQ(made.status, 0) << made.err;

    const zoltest::RunResult checked = Zolkeyfd({"check", dir});
    EXPECT_EQ(checked.status, 0) << checked.err;
    EXPECT_NE(checked.out.find("key floppy of type 2\nKEYFDTYPE=2\nUSERCODE=C0012345\n"),
              std::string::npos)
        << checked.out;

    EXPECT_EQ(flag(), 0);
    EXPECT_EQ(check(dir.c_str(), 0, 8193), 0);
    EXPECT_EQ(check(dir.c_str(), 0, INT_MAX), 0);  // a limit, not a buffer size
    ASSERT_EQ(read(dir.c_str()), 1) << Trace();
    for (const Landing& l : kFullFloppy)
        EXPECT_EQ(Stored(l.key, l.name.c_str()), l.value) << l.name;
    EXPECT_EQ(Stored(kServiceKey, "InstVantrelKeyFD"), "1");
    EXPECT_EQ(flag(), 1);
    // Values the floppy does not name keep what the store held.
    EXPECT_EQ(Stored(kSettingKey, "TOKUINMA"), "");

    // A floppy mounted with lower-case names, and the file given by its own path; a mail floppy
    // read through vntutil.dll's entry.
    ASSERT_EQ(Zolkeyfd({"make", dir, "--force", "--type", "1", "--mail", "c@example.com",
                        "--usercode", "U1"})
                  .status,
              0);
    fs::rename(fs::path(dir) / "VNTKEY.TXT", fs::path(dir) / "vntkey.txt");
    EXPECT_EQ(check(dir.c_str(), 0, 8193), 0);
    ASSERT_TRUE(LoadVantrelPkgDLL()) << Trace();
    EXPECT_EQ(pWriteOpenSetting((dir + "/vntkey.txt").c_str()), 0) << Trace();
    EXPECT_EQ(Stored(kServiceKey, "KEYFDTYPE") + Stored(kSetupKey, "MAILADRS"), "1c@example.com");
    EXPECT_EQ(pgetKeyFdType(), 1);
    EXPECT_EQ(pWriteOpenSetting((dir + "/none").c_str()), -1);
}

TEST_F(KeyFloppyTest, RefusedFloppiesWriteNothing) {
    const Values valid = {{"KEYFDTYPE", "1"}, {"USERCODE", "U1"}, {"MAILADRS", "c@example.com"}};
    auto with = [&](Values extra, const std::string& drop = {}) {
        Values v;
        for (const auto& p : valid) {
            if (p.first != drop)
                v.push_back(p);
        }
        v.insert(v.end(), extra.begin(), extra.end());
        return vntcore::ComposeKeyFile(v);
    };
    std::string flipped = vntcore::ComposeKeyFile(valid);
    flipped[flipped.find("U1")] = 'V';
    std::string noChecksum = vntcore::ComposeKeyFile(valid);
    noChecksum.erase(noChecksum.find("CHECKSUM="));
    std::string version2 = vntcore::ComposeKeyFile(valid);
    version2.replace(0, 10, "VNTKEYFD 2");

    struct Case {
        const char* what;
        std::string bytes;  // the key file, or none for the path cases
        int readResult;
        int checkResult;
    };
    const std::vector<Case> cases = {
        {"no signature", "KEYFDTYPE=1\n", 100, -1},
        {"other format version", version2, 100, 0},
        {"damaged value", flipped, 100, 0},
        {"no checksum line", noChecksum, 100, 0},
        {"too large", with({{"#" + std::string(8200, 'x'), ""}}), 100, -1},
        {"unknown name", with({{"COLOUR", "red"}}), 200, 0},
        {"unknown type", with({{"KEYFDTYPE", "3"}}, "KEYFDTYPE"), 200, 0},
        {"no user code", with({}, "USERCODE"), 200, 0},
        {"https floppy without URL", with({{"KEYFDTYPE", "2"}}, "KEYFDTYPE"), 200, 0},
        {"bad number", with({{"HBINTERVAL", "7d"}}), 200, 0},
        {"text too long", with({{"TOKUINMA", std::string(128, 'a')}}), 200, 0},
        {"name twice", with({{"usercode", "U2"}}), 200, 0},
        {"bad mail address", with({{"MAIL", "nobody"}}), 200, 0},
    };
    const std::string before = Snapshot();
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        const std::string dir = Floppy("fd" + std::to_string(i), c.bytes);
        EXPECT_EQ(read(dir.c_str()), c.readResult) << c.what;
        EXPECT_EQ(check(dir.c_str(), 0, 8193), c.checkResult) << c.what;
    }
    fs::create_directories(root().path() / "empty");
    for (const std::string& path : {(root().path() / "empty").string(),
                                    (root().path() / "nowhere").string(), std::string()}) {
        EXPECT_EQ(read(path.c_str()), 300) << path;
        EXPECT_EQ(check(path.c_str(), 0, 8193), -1) << path;
    }
    EXPECT_EQ(read(nullptr), 300);
    EXPECT_EQ(Snapshot(), before);
    EXPECT_EQ(flag(), 0);

    // A store that cannot be written: 0, and nothing half-written.
    const std::string dir = Floppy("fdok", vntcore::ComposeKeyFile(valid));
    EXPECT_EQ(check(dir.c_str(), 1, 8193), -1);  // mode 0 is the only mode
    ZolRegCloseStore();
    fs::rename(root().store(), root().path() / "hklm.saved");
    EXPECT_EQ(read(dir.c_str()), 0) << Trace();
    ZolRegCloseStore();
    fs::remove(root().store());
    fs::rename(root().path() / "hklm.saved", root().store());
    EXPECT_EQ(flag(), 0);
}

TEST_F(KeyFloppyTest, ZolkeyfdRefusesWithoutWriting) {
    EXPECT_EQ(vntcore::Crc32("123456789"), 0xCBF43926u);  // the CRC-32 check value

    const std::string dir = (root().path() / "fd").string();
    zoltest::RunResult r = Zolkeyfd({"make", dir, "--type", "1", "--usercode", "U1"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("MAILADRS missing"), std::string::npos) << r.err;
    EXPECT_FALSE(fs::exists(fs::path(dir) / "VNTKEY.TXT"));

    const std::vector<std::string> make = {"make",  dir,         "--type",     "2",
                                           "--url", "https://c", "--usercode", "U1"};
    ASSERT_EQ(Zolkeyfd(make).status, 0);
    const std::string first = zoltest::readFile(fs::path(dir) / "VNTKEY.TXT");
    r = Zolkeyfd({"make", dir, "--type", "1", "--mail", "a@b", "--usercode", "U2"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("--force"), std::string::npos) << r.err;
    EXPECT_EQ(zoltest::readFile(fs::path(dir) / "VNTKEY.TXT"), first);

    std::string damaged = first;
    damaged[damaged.find("U1")] = 'X';
    zoltest::writeFile(fs::path(dir) / "VNTKEY.TXT", damaged);
    r = Zolkeyfd({"check", dir});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("damaged"), std::string::npos) << r.err;
    EXPECT_EQ(Zolkeyfd({"check", (root().path() / "nowhere").string()}).status, 1);
    EXPECT_EQ(Zolkeyfd({"make"}).status, 2);
}

}  // namespace
}  // namespace svctest
