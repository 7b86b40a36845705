// logacc.dll over real files: writing alert-log lines and removing a destination ID (or group)
// from every log, loaded and bound as the destination list binds it.
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <string>

#include "logacc_api.h"
#include "services_test_util.h"

namespace svctest {
namespace {

namespace fs = std::filesystem;

class LogaccTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        lib_ = LoadLibrary(lib("logacc.dll").c_str());
        ASSERT_NE(lib_, nullptr) << ZolLastLoadError();
        remove = reinterpret_cast<AMACETDeleteIDAndGIDAtAllLog_fn*>(
            GetProcAddress(lib_, "AMACETDeleteIDAndGIDAtAllLog"));
        write =
            reinterpret_cast<AMACETWriteAlertLog_fn*>(GetProcAddress(lib_, "AMACETWriteAlertLog"));
        ASSERT_TRUE(remove && write);
    }
    void TearDown() override {
        FreeLibrary(lib_);
        ServicesTest::TearDown();
    }
    fs::path folder() const { return root().path() / "log" / "alert"; }
    // Every file of the log folder but the lock file, with its contents.
    std::map<std::string, std::string> Files() const {
        std::map<std::string, std::string> files;
        if (fs::exists(folder())) {
            for (const auto& entry : fs::directory_iterator(folder())) {
                if (entry.is_regular_file() && entry.path().filename() != ".lock")
                    files[entry.path().filename()] = zoltest::readFile(entry.path());
            }
        }
        return files;
    }
    int Remove(const std::string& id, const char* gid = nullptr) {
        return remove(1, static_cast<int>(id.size()), id.c_str(),
                      gid ? static_cast<int>(std::strlen(gid)) : 0, gid, 0);
    }
    HMODULE lib_ = nullptr;
    AMACETDeleteIDAndGIDAtAllLog_fn* remove = nullptr;
    AMACETWriteAlertLog_fn* write = nullptr;
};

TEST_F(LogaccTest, WriterAppendsOneLinePerReportAndRefusesWhatALineCannotHold) {
    EXPECT_EQ(Remove("Ops"), 1);  // no folder yet: no log holds the ID
    ASSERT_NE(write("Disk", "1001", "Ops", nullptr, 0), 0) << Trace();
    ASSERT_NE(write("Fan", "All", "Mail Center", "G1", 5), 0);
    auto files = Files();
    ASSERT_EQ(files.size(), 1u);
    const std::string& name = files.begin()->first;
    EXPECT_EQ(name.substr(0, 6) + name.substr(14), "alert-.log") << name;
    const std::string& text = files.begin()->second;
    ASSERT_GT(text.size(), 40u);
    // "YYYY-MM-DD HH:MM:SS" and the fields.
    EXPECT_EQ(text.substr(4, 1) + text.substr(7, 1) + text.substr(13, 1), "--:");
    EXPECT_EQ(text.substr(19, text.find('\n') - 19 + 1), "\tDisk\t1001\tOps\t\t0\n");
    EXPECT_EQ(text.substr(text.find('\n') + 20), "\tFan\tAll\tMail Center\tG1\t5\n");

    const struct {
        const char *source, *event, *dest, *group;
    } bad[] = {
        {"Di\tsk", "1", "Ops", nullptr}, {"Disk", "1\n", "Ops", nullptr},
        {"Disk", "1", "O\rps", nullptr}, {"Disk", "1", "Ops", "G\t"},
        {nullptr, "1", "Ops", nullptr},  {"Disk", "", "Ops", nullptr},
        {"Disk", "1", nullptr, nullptr},
    };
    for (const auto& b : bad)
        EXPECT_EQ(write(b.source, b.event, b.dest, b.group, 0), 0);
    EXPECT_EQ(write("Disk", "1", std::string(4096, 'd').c_str(), nullptr, 0), 0);
    EXPECT_EQ(Files(), files);
}

TEST_F(LogaccTest, RemovingAnIDRewritesOnlyTheLogsThatHoldIt) {
    const std::string day1 =
        "2026-01-01 08:00:00\tDisk\t1001\tOps\t\t0\n"
        "2026-01-01 08:00:01\tDisk\t1002\tOther\tG1\t0\n"
        "a line that is no entry\n"
        "2026-01-01 09:00:00\tFan\t7\tOPS\tG2\t3\n"
        "2026-01-01 10:00:00\tFan\t8\tOpsX\t\t0";
    const std::string day2 = "2026-01-02 08:00:00\tDisk\t1001\tOther\t\t0\n";
    fs::create_directories(folder());
    zoltest::writeFile(folder() / "alert-20260101.log", day1);
    zoltest::writeFile(folder() / "alert-20260102.log", day2);
    zoltest::writeFile(folder() / "notes.txt", "Ops\tOps\tOps\tOps\n");
    chmod((folder() / "alert-20260101.log").c_str(), 0640);
    struct stat before {};
    ASSERT_EQ(stat((folder() / "alert-20260102.log").c_str(), &before), 0);

    ASSERT_EQ(Remove("ops"), 1) << Trace();
    auto files = Files();
    EXPECT_EQ(files["alert-20260101.log"],
              "2026-01-01 08:00:01\tDisk\t1002\tOther\tG1\t0\n"
              "a line that is no entry\n"
              "2026-01-01 10:00:00\tFan\t8\tOpsX\t\t0");
    EXPECT_EQ(files["alert-20260102.log"], day2);
    EXPECT_EQ(files["notes.txt"], "Ops\tOps\tOps\tOps\n");
    EXPECT_EQ(files.size(), 3u);  // no temporary file left
    struct stat after {};
    ASSERT_EQ(stat((folder() / "alert-20260102.log").c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);  // not rewritten
    EXPECT_EQ(fs::status(folder() / "alert-20260101.log").permissions(), fs::perms(0640));

    // A group, with or without an ID.
    ASSERT_EQ(remove(1, 0, nullptr, 2, "g1", 0), 1);
    EXPECT_EQ(Files()["alert-20260101.log"],
              "a line that is no entry\n2026-01-01 10:00:00\tFan\t8\tOpsX\t\t0");
}

TEST_F(LogaccTest, BadArgumentsAndUnreadableLogsChangeNothing) {
    fs::create_directories(folder());
    zoltest::writeFile(folder() / "alert-20260101.log", "2026-01-01 08:00:00\tD\t1\tOps\t\t0\n");
    const auto files = Files();
    const struct {
        int kind, idLength;
        const char* id;
        int gidLength;
        const char* gid;
        int flags;
    } bad[] = {
        {2, 3, "Ops", 0, nullptr, 0},
        {1, 3, "Ops", 0, nullptr, 1},
        {1, -1, "Ops", 0, nullptr, 0},
        {1, 3, nullptr, 0, nullptr, 0},
        {1, 0, nullptr, 0, nullptr, 0},
        {1, 4, "Ops", 0, nullptr, 0},  // the length runs past the text
        {1, 4, "O\tps", 0, nullptr, 0},
        {1, 3, "Ops", 2, nullptr, 0},
    };
    for (const auto& b : bad) {
        EXPECT_EQ(remove(b.kind, b.idLength, b.id, b.gidLength, b.gid, b.flags), 0)
            << b.kind << " " << b.idLength << " " << b.flags;
    }
    // One log that cannot be read (here a folder of that name) stops the whole removal.
    fs::create_directory(folder() / "alert-20260102.log");
    EXPECT_EQ(Remove("Ops"), 0);
    EXPECT_EQ(Files(), files);
    EXPECT_EQ(TraceCount("alert log alert-20260102.log cannot be read"), 1) << Trace();
}

}  // namespace
}  // namespace svctest
