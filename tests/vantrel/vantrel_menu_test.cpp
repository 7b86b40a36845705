// The remote report service menu's logic without a terminal: the key floppy's path (trimming,
// the mount table, a real mount in a mount namespace of the test's own), the initial-value table
// and the customer pages' rules in both languages.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "product_root.h"
#include "remote/vantrel_menu.h"
#include "ui/encoding.h"

namespace {

namespace fs = std::filesystem;

std::string Cut(std::string path) {
    cutPathTail(path.data());
    return path.c_str();
}

// A temporary folder of the test's own.
class TempDir {
  public:
    TempDir() {
        std::string pattern = (fs::temp_directory_path() / "vntmenu-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TempDir() { fs::remove_all(path_); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const fs::path& path() const { return path_; }

  private:
    fs::path path_;
};

std::string MountPoint(const fs::path& table, int size) {
    std::string buffer(static_cast<std::size_t>(size) + 1, 'x');
    const int length = getFloppyMountPoint(buffer.data(), size, table.c_str());
    return std::to_string(length) + ":" + (length > 0 ? std::string(buffer.c_str()) : "");
}

}  // namespace

TEST(KeyFloppyPath, CutPathTailRemovesOneTrailingSlash) {
    EXPECT_EQ(Cut("/tmp/vntfd/"), "/tmp/vntfd");
    EXPECT_EQ(Cut("/tmp/vntfd"), "/tmp/vntfd");
    EXPECT_EQ(Cut("/tmp/vntfd//"), "/tmp/vntfd/");
    EXPECT_EQ(Cut("/"), "/");
    EXPECT_EQ(Cut(""), "");
}

// The first entry whose directory names a floppy wins; a directory longer than the buffer is cut
// to it; no floppy or no readable table gives 0.
TEST(KeyFloppyPath, MountTableFile) {
    const TempDir dir;
    const fs::path table = dir.path() / "mtab";
    zoltest::writeFile(table,
                       "/dev/sda1 / ext4 rw 0 0\n"
                       "/dev/fd0 /media/floppy0 vfat rw 0 0\n"
                       "/dev/fd1 /media/floppy1 vfat rw 0 0\n");
    EXPECT_EQ(MountPoint(table, 512), "14:/media/floppy0");
    EXPECT_EQ(MountPoint(table, 10), "10:/media/flo");
    zoltest::writeFile(table, "/dev/sda1 / ext4 rw 0 0\nproc /proc proc rw 0 0\n");
    EXPECT_EQ(MountPoint(table, 512), "0:");
    EXPECT_EQ(MountPoint(dir.path() / "missing", 512), "0:");
}

// A file system really mounted on a folder named like a floppy, in a mount namespace that ends
// with the child: the system's own mount table shows it.
TEST(KeyFloppyPath, RealMountInAPrivateNamespace) {
    const TempDir dir;
    const fs::path floppy = dir.path() / "floppy";
    fs::create_directory(floppy);
    int pipeFds[2];
    ASSERT_EQ(pipe(pipeFds), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        close(pipeFds[0]);
        std::string found = "no namespace";
        if (unshare(CLONE_NEWNS) == 0 &&
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            mount("zolfloppy", floppy.c_str(), "tmpfs", 0, nullptr) == 0) {
            char buffer[kFdPathMax + 1] = {};
            found = getFloppyMountPoint(buffer, kFdPathMax) > 0 ? buffer : "";
        }
        const ssize_t written = write(pipeFds[1], found.data(), found.size());
        _exit(written == static_cast<ssize_t>(found.size()) ? 0 : 1);
    }
    close(pipeFds[1]);
    std::string found;
    char chunk[256];
    for (ssize_t n; (n = read(pipeFds[0], chunk, sizeof chunk)) > 0;)
        found.append(chunk, static_cast<std::size_t>(n));
    close(pipeFds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (found == "no namespace")
        GTEST_SKIP() << "a mount namespace cannot be made here";
    EXPECT_EQ(found, floppy.string());
    // The mount ended with the child's namespace.
    char buffer[kFdPathMax + 1] = {};
    const int length = getFloppyMountPoint(buffer, kFdPathMax);
    EXPECT_TRUE(length == 0 || floppy.string() != buffer);
}

TEST(KeyFloppyPath, InitialValueTable) {
    int rows = 0;
    for (const VntInitRow* row = InitFDRegList; row->key[0] != '\0'; ++row)
        ++rows;
    EXPECT_EQ(rows, 49);
    EXPECT_STREQ(InitFDRegList[0].name, "InstVantrelKeyFD");
    EXPECT_STREQ(InitFDRegList[9].value, "3.51J");
    EXPECT_STREQ(InitFDRegList[48].name, "HBSLEEPTIME");
    EXPECT_STREQ(InitFDRegList[48].value, "43200");
}

namespace {

CustomerPage1 ValidPage1() {
    return {1, "Example Co", "", "Sales", "Smith", ""};
}

CustomerPage2 ValidPage2() {
    return {"1234567", "1 Main Street", "", "", "(03)1234-5678", "info@example.com"};
}

std::string Jp(int characters) {
    std::string text;
    for (int i = 0; i < characters; ++i)
        text += "\xC6\xFC";  // one double-width character in EUC-JP (2 bytes)
    return text;
}

const char* Fault1(void (*change)(CustomerPage1&), bool japanese) {
    CustomerPage1 page = ValidPage1();
    if (japanese) {
        page.nameJ = Jp(10);
        page.personJ = Jp(5);
    }
    change(page);
    const char* fault = CustomerPage1Fault(page, japanese);
    return fault ? fault : "";
}

const char* Fault2(void (*change)(CustomerPage2&), bool japanese) {
    CustomerPage2 page = ValidPage2();
    if (japanese)
        page.addressJ = Jp(10);
    change(page);
    const char* fault = CustomerPage2Fault(page, japanese);
    return fault ? fault : "";
}

}  // namespace

// Every limit at its edge, in both languages; Japanese lengths count EUC-JP bytes.
TEST(CustomerChecks, Page1Limits) {
    struct Case {
        const char* what;
        void (*change)(CustomerPage1&);
        const char* english;
        const char* japanese;
    };
    const Case cases[] = {
        {"valid", [](CustomerPage1&) {}, "", ""},
        {"name 50", [](CustomerPage1& p) { p.nameA.assign(50, 'a'); }, "", ""},
        {"name 51", [](CustomerPage1& p) { p.nameA.assign(51, 'a'); }, "IDS_ERROR_MSG_USERNAMEK",
         "IDS_ERROR_MSG_USERNAMEK"},
        {"name empty", [](CustomerPage1& p) { p.nameA.clear(); }, "IDS_ERROR_MSG_USERNAMEK",
         "IDS_ERROR_MSG_USERNAMEK"},
        {"Japanese name 80 bytes", [](CustomerPage1& p) { p.nameJ = Jp(40); }, "", ""},
        {"Japanese name 81 bytes", [](CustomerPage1& p) { p.nameJ = Jp(40) + "a"; }, "",
         "IDS_ERROR_MSG_USERNAMEC"},
        {"Japanese name empty", [](CustomerPage1& p) { p.nameJ.clear(); }, "",
         "IDS_ERROR_MSG_USERNAMEC"},
        {"department 60", [](CustomerPage1& p) { p.department.assign(60, 'd'); }, "", ""},
        {"department 61", [](CustomerPage1& p) { p.department.assign(61, 'd'); },
         "IDS_ERROR_MSG_DEPTNAME", "IDS_ERROR_MSG_DEPTNAME"},
        {"personal, department 61",
         [](CustomerPage1& p) {
             p.kind = 0;
             p.department.assign(61, 'd');
         },
         "IDS_ERROR_MSG_DEPTNAME", "IDS_ERROR_MSG_DEPTNAME"},
        {"person 20", [](CustomerPage1& p) { p.personA.assign(20, 'p'); }, "", ""},
        {"person 21", [](CustomerPage1& p) { p.personA.assign(21, 'p'); },
         "IDS_ERROR_MSG_PERSONNAMEK", "IDS_ERROR_MSG_PERSONNAMEK"},
        {"personal, person 21",
         [](CustomerPage1& p) {
             p.kind = 0;
             p.personA.assign(21, 'p');
         },
         "", ""},
        {"Japanese person 30 bytes", [](CustomerPage1& p) { p.personJ = Jp(15); }, "", ""},
        {"Japanese person 31 bytes", [](CustomerPage1& p) { p.personJ = Jp(15) + "p"; },
         "IDS_ERROR_MSG_PERSONNAMEC", "IDS_ERROR_MSG_PERSONNAMEC"},
    };
    for (const Case& c : cases) {
        EXPECT_STREQ(Fault1(c.change, false), c.english) << c.what;
        EXPECT_STREQ(Fault1(c.change, true), c.japanese) << c.what;
    }
}

TEST(CustomerChecks, Page2Limits) {
    struct Case {
        const char* what;
        void (*change)(CustomerPage2&);
        const char* english;
        const char* japanese;
    };
    const Case cases[] = {
        {"valid", [](CustomerPage2&) {}, "", ""},
        {"post code 8", [](CustomerPage2& p) { p.postCode = "12345678"; }, "IDS_ERROR_MSG_POSTNUM",
         "IDS_ERROR_MSG_POSTNUM"},
        {"post code empty", [](CustomerPage2& p) { p.postCode.clear(); }, "IDS_ERROR_MSG_POSTNUM",
         "IDS_ERROR_MSG_POSTNUM"},
        {"post code with hyphen", [](CustomerPage2& p) { p.postCode = "123-456"; },
         "IDS_ERROR_MSG_BADPOSTNUM", "IDS_ERROR_MSG_BADPOSTNUM"},
        {"address 50", [](CustomerPage2& p) { p.addressA.assign(50, 'a'); }, "", ""},
        {"address 51", [](CustomerPage2& p) { p.addressA.assign(51, 'a'); },
         "IDS_ERROR_MSG_ADDRESSK", "IDS_ERROR_MSG_ADDRESSK"},
        {"Japanese address 81 bytes", [](CustomerPage2& p) { p.addressJ = Jp(40) + "a"; }, "",
         "IDS_ERROR_MSG_ADDRESSC"},
        {"Japanese address empty", [](CustomerPage2& p) { p.addressJ.clear(); }, "",
         "IDS_ERROR_MSG_ADDRESSC"},
        {"detail unchecked", [](CustomerPage2& p) { p.addressDetail.assign(120, 'x'); }, "", ""},
        {"telephone 30", [](CustomerPage2& p) { p.telephone.assign(30, '1'); }, "", ""},
        {"telephone 31", [](CustomerPage2& p) { p.telephone.assign(31, '1'); },
         "IDS_ERROR_MSG_TELNUM", "IDS_ERROR_MSG_TELNUM"},
        {"telephone with a blank", [](CustomerPage2& p) { p.telephone = "03 1234"; },
         "IDS_ERROR_MSG_BADTELNUM", "IDS_ERROR_MSG_BADTELNUM"},
        {"mail 80", [](CustomerPage2& p) { p.mail = std::string(68, 'm') + "@example.com"; }, "",
         ""},
        {"mail 81", [](CustomerPage2& p) { p.mail = std::string(69, 'm') + "@example.com"; },
         "IDS_ERROR_MSG_MAILADDRESS", "IDS_ERROR_MSG_MAILADDRESS"},
        {"mail empty", [](CustomerPage2& p) { p.mail.clear(); }, "IDS_ERROR_MSG_MAILADDRESS",
         "IDS_ERROR_MSG_MAILADDRESS"},
    };
    for (const Case& c : cases) {
        EXPECT_STREQ(Fault2(c.change, false), c.english) << c.what;
        EXPECT_STREQ(Fault2(c.change, true), c.japanese) << c.what;
    }
}

// A page goes into the record whole, or not at all when a text cannot fit its field.
TEST(CustomerChecks, ApplyKeepsTheRecordWholeOrAsItWas) {
    VntUserData record{};
    std::strcpy(record.UserCode, "C0012345");
    CustomerPage2 page = ValidPage2();
    ASSERT_TRUE(ApplyPage2(page, record));
    EXPECT_STREQ(record.Telephone, "(03)1234-5678");
    EXPECT_STREQ(record.UserCode, "C0012345");
    const VntUserData before = record;
    page.postCode = "7654321";
    page.addressDetail.assign(VNT_TEXT_SIZE, 'x');
    EXPECT_FALSE(ApplyPage2(page, record));
    EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0);

    CustomerPage1 first = Page1Of(record);
    first.kind = 0;
    first.nameA = "Person";
    ASSERT_TRUE(ApplyPage1(first, record));
    EXPECT_EQ(record.Kind, 0);
    EXPECT_EQ(Page1Of(record).nameA, "Person");
}
