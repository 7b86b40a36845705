// Test support: a fresh product root per test, copied from the staged one, and a way to run
// the product's programs (or any command) with a given environment and capture what they print.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zoltest {

// A temporary copy of the staged product root (bin/, lib/, data/, log/). With initStore, the
// store is created from data/default.reg by "zolreg init", as on a new installation.
class ProductRoot {
  public:
    explicit ProductRoot(bool initStore = true);
    ~ProductRoot();
    ProductRoot(const ProductRoot&) = delete;
    ProductRoot& operator=(const ProductRoot&) = delete;

    const std::filesystem::path& path() const { return root_; }
    std::filesystem::path bin(const std::string& program) const { return root_ / "bin" / program; }
    std::filesystem::path store() const { return root_ / "registry" / "hklm.db"; }
    std::filesystem::path traceFile(const std::string& program) const {
        return root_ / "log" / (program + ".trace");
    }
    // Environment for a child process of this root: ZolDir set, plus the given overrides.
    std::map<std::string, std::string> env(std::map<std::string, std::string> extra = {}) const;

  private:
    std::filesystem::path root_;
};

struct RunResult {
    int status = -1;  // exit status, or 128 + signal number when killed by a signal
    std::string out;  // standard output
    std::string err;  // standard error
};

// Runs argv[0] (a path) with the current environment plus `env` (a value of std::nullopt
// removes the variable), feeding `input` on standard input, and waits for it.
RunResult run(const std::vector<std::string>& argv,
              const std::map<std::string, std::optional<std::string>>& env = {},
              const std::string& input = {});
RunResult run(const std::vector<std::string>& argv, const std::map<std::string, std::string>& env,
              const std::string& input = {});

// Sets (or with std::nullopt unsets) an environment variable of this process for one scope.
class ScopedEnv {
  public:
    ScopedEnv(std::string name, std::optional<std::string> value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

  private:
    std::string name_;
    std::optional<std::string> old_;
};

std::string readFile(const std::filesystem::path& file);
void writeFile(const std::filesystem::path& file, const std::string& text);

}  // namespace zoltest
