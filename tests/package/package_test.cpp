// The .deb as built by the package target: lintian's verdict, the FHS layout and its links, and
// an installation into a scratch root (dpkg -x plus the maintainer scripts under DPKG_ROOT)
// whose programs start and whose store survives an upgrade and goes with a purge.
#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <regex>

#include "product_root.h"
#include "terminal.h"

namespace {

namespace fs = std::filesystem;
using zoltest::RunResult;

const fs::path kPackageDir = ZOL_PACKAGE_DIR;
const fs::path kRoot = fs::path(ZOL_PACKAGE_ROOT).relative_path();  // usr/lib/zolamsadm

RunResult sh(const std::string& command, const std::map<std::string, std::string>& env = {}) {
    return zoltest::run({"/bin/sh", "-c", command}, env);
}

std::string architecture() {
    RunResult r = sh("dpkg --print-architecture");
    return r.out.substr(0, r.out.find('\n'));
}

fs::path debFile() {
    return kPackageDir /
           ("zolamsadm_" + std::string(ZOL_DEB_VERSION) + "_" + architecture() + ".deb");
}

// A scratch folder holding one unpacked installation, removed with it.
class ScratchInstall {
  public:
    ScratchInstall() {
        dir_ = fs::temp_directory_path() / ("zolpkg-" + std::to_string(::getpid()));
        fs::remove_all(dir_);
        fs::create_directories(dir_);
        RunResult r = zoltest::run({"/usr/bin/dpkg-deb", "-x", debFile().string(), dir_.string()});
        EXPECT_EQ(r.status, 0) << r.err;
        r = zoltest::run(
            {"/usr/bin/dpkg-deb", "-e", debFile().string(), (dir_ / "DEBIAN").string()});
        EXPECT_EQ(r.status, 0) << r.err;
    }
    ~ScratchInstall() { fs::remove_all(dir_); }
    ScratchInstall(const ScratchInstall&) = delete;
    ScratchInstall& operator=(const ScratchInstall&) = delete;

    const fs::path& dir() const { return dir_; }
    fs::path product() const { return dir_ / kRoot; }
    fs::path store() const { return dir_ / "var/lib/zolamsadm/hklm.db"; }
    // The links into /var point at the host's /var; below the scratch root they must point at
    // its own.
    void pointLinksIntoScratch() {
        for (const char* name : {"registry", "log"}) {
            const fs::path link = product() / name;
            const fs::path target = fs::read_symlink(link);
            fs::remove(link);
            fs::create_directory_symlink(dir_ / target.relative_path(), link);
        }
    }
    RunResult script(const std::string& name, const std::vector<std::string>& args) {
        std::vector<std::string> argv{(dir_ / "DEBIAN" / name).string()};
        argv.insert(argv.end(), args.begin(), args.end());
        return zoltest::run(argv, std::map<std::string, std::string>{{"DPKG_ROOT", dir_.string()}});
    }
    RunResult program(const std::string& name, const std::vector<std::string>& args) {
        std::vector<std::string> argv{(dir_ / "usr/sbin" / name).string()};
        argv.insert(argv.end(), args.begin(), args.end());
        return zoltest::run(argv, std::map<std::string, std::string>{{"ZolDir", product().string()},
                                                                     {"LC_ALL", "C.UTF-8"}});
    }

  private:
    fs::path dir_;
};

TEST(Package, IsBuiltAndLintianReportsNoError) {
    ASSERT_TRUE(fs::exists(debFile())) << debFile() << " was not built";
    RunResult r = zoltest::run(
        {"/usr/bin/lintian", "--fail-on", "error", "--tag-display-limit", "0", debFile().string()});
    // What lintian still says (warnings, information) goes to the test's log.
    std::cout << r.out << r.err;
    EXPECT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_EQ(r.out.find("\nE: "), std::string::npos) << r.out;
    EXPECT_FALSE(r.out.starts_with("E: ")) << r.out;

    RunResult info = zoltest::run({"/usr/bin/dpkg-deb", "-f", debFile().string(), "Depends"});
    ASSERT_EQ(info.status, 0) << info.err;
    for (const char* library : {"libnewt0.52", "libsqlite3-0", "libslang2", "libc6"})
        EXPECT_NE(info.out.find(library), std::string::npos) << info.out;
}

// Everything under /usr and /var, nothing in /opt; programs linked from /usr/sbin, each with its
// manual page; the store and logs in /var.
TEST(Package, FollowsTheFilesystemHierarchy) {
    ScratchInstall install;
    EXPECT_FALSE(fs::exists(install.dir() / "opt"));
    for (const fs::path& dir : {fs::path("bin"), fs::path("lib"), fs::path("data")})
        EXPECT_TRUE(fs::is_directory(install.product() / dir)) << dir;
    EXPECT_TRUE(fs::exists(install.product() / "lib" / "libzolwin.so"));
    EXPECT_TRUE(fs::exists(install.product() / "lib" / "rptset.dll"));
    EXPECT_TRUE(fs::exists(install.product() / "data" / "default.reg"));
    EXPECT_EQ(fs::read_symlink(install.product() / "registry"), "/var/lib/zolamsadm");
    EXPECT_EQ(fs::read_symlink(install.product() / "log"), "/var/log/zolamsadm");

    // Every program of bin/ is in /usr/sbin by a relative link and has its manual page.
    int programs = 0;
    for (const auto& entry : fs::directory_iterator(install.product() / "bin")) {
        const std::string name = entry.path().filename();
        SCOPED_TRACE(name);
        const fs::path link = install.dir() / "usr/sbin" / name;
        ASSERT_TRUE(fs::is_symlink(link));
        EXPECT_TRUE(fs::read_symlink(link).is_relative());
        EXPECT_TRUE(fs::equivalent(link, entry.path()));
        const fs::path page = install.dir() / "usr/share/man/man8" / (name + ".8.gz");
        ASSERT_TRUE(fs::exists(page));
        RunResult r = sh("gzip -dc '" + page.string() + "'");
        EXPECT_NE(r.out.find(".TH \"" + name + "\" \"8\""), std::string::npos) << r.out;
        ++programs;
    }
    EXPECT_GE(programs, 2);
    for (const char* doc : {"copyright", "changelog.Debian.gz"})
        EXPECT_TRUE(fs::exists(install.dir() / "usr/share/doc/zolamsadm" / doc)) << doc;
}

// postinst creates the store from default.reg the first time only; the programs run from the
// unpacked tree; postrm remove keeps the store, purge removes it with the logs.
TEST(Package, InstallsUpgradesAndPurgesInAScratchRoot) {
    ScratchInstall install;
    install.pointLinksIntoScratch();
    ASSERT_FALSE(fs::exists(install.store()));
    RunResult r = install.script("postinst", {"configure"});
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    ASSERT_TRUE(fs::exists(install.store()));
    EXPECT_EQ(fs::status(install.dir() / "var/lib/zolamsadm").permissions() & fs::perms::all,
              fs::perms::owner_all);

    const std::string key = "HKLM\\SOFTWARE\\Tavik\\ZolAlertMan\\BaseSetting";
    r = install.program("zolreg", {"add", key, "/v", "Upgraded", "/d", "kept", "/f"});
    ASSERT_EQ(r.status, 0) << r.err;
    // An upgrade (configure with the old version) leaves the changed store alone.
    r = install.script("postinst", {"configure", ZOL_DEB_VERSION});
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    r = install.program("zolreg", {"query", key, "/v", "Upgraded"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("REG_SZ    kept"), std::string::npos) << r.out;

    for (const char* program : {"zolreg", "zolctl"}) {
        if (!fs::exists(install.dir() / "usr/sbin" / program))
            continue;  // a program the build does not make yet
        r = install.program(program, {"--help"});
        EXPECT_EQ(r.status, 0) << program << ": " << r.err;
        EXPECT_NE(r.out.find("usage"), std::string::npos) << r.out;
    }

    {
        zoltest::TerminalOptions opts;
        opts.env["ZolDir"] = install.product().string();
        opts.env["LANG"] = "C.UTF-8";
        opts.env["LC_ALL"] = std::nullopt;
        zoltest::Terminal t({(install.dir() / "usr/sbin/ZOLamsadm").string()}, opts);
        ASSERT_TRUE(t.waitForText("Base report settings")) << t.dump();
        EXPECT_TRUE(t.contains("Main menu")) << t.dump();
        t.send(zoltest::keys::CtrlO);
        ASSERT_TRUE(t.waitForExit()) << t.dump();
        EXPECT_EQ(t.exitStatus(), 1);
    }
    EXPECT_TRUE(fs::exists(install.dir() / "var/log/zolamsadm/ZOLamsadm.trace"));

    r = install.script("postrm", {"remove"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(fs::exists(install.store()));
    r = install.script("postrm", {"purge"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_FALSE(fs::exists(install.dir() / "var/lib/zolamsadm"));
    EXPECT_FALSE(fs::exists(install.dir() / "var/log/zolamsadm"));
    EXPECT_NE(install.script("postrm", {"bogus"}).status, 0);
}

}  // namespace
