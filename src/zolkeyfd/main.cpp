// zolkeyfd: makes a key-floppy file for the remote report service and checks one, with the same
// reader the service libraries use, so that administrators and tests can prepare a floppy.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "keyfile.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFailed = 1;
constexpr int kUsage = 2;

// Options that name a value of the file more briefly than NAME=value.
const std::map<std::string_view, const char*> kShortOptions = {
    {"--type", "KEYFDTYPE"},
    {"--mail", "MAILADRS"},
    {"--usercode", "USERCODE"},
    {"--url", "HTTPD1URL"},
};

int Usage() {
    std::fprintf(stderr,
                 "usage: zolkeyfd make DIR [--force] [--type 1|2] [--mail ADDR] [--usercode CODE]\n"
                 "                         [--url URL] [NAME=VALUE]...\n"
                 "       zolkeyfd check PATH\n"
                 "make writes DIR/%s (type 1 needs MAILADRS, type 2 HTTPD1URL; both USERCODE);\n"
                 "check prints what the key-floppy file at PATH (a folder or the file) holds.\n",
                 vntcore::kKeyFileName);
    return kUsage;
}

int Refuse(const std::string& what, const std::string& why) {
    std::fprintf(stderr, "zolkeyfd: %s: %s\n", what.c_str(), why.c_str());
    return kFailed;
}

// Writes text to file through a temporary file in the same folder and a rename, so that a
// failure leaves no half-written key floppy.
std::string WriteWhole(const fs::path& file, const std::string& text) {
    fs::path temp = file;
    temp += ".tmp" + std::to_string(getpid());
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        out.flush();
        if (!out) {
            std::error_code ignored;
            fs::remove(temp, ignored);
            return "cannot write " + temp.string();
        }
    }
    std::error_code ec;
    fs::rename(temp, file, ec);
    if (ec) {
        fs::remove(temp, ec);
        return "cannot write " + file.string();
    }
    return {};
}

int Make(int argc, char** argv) {
    if (argc < 1)
        return Usage();
    const fs::path dir = argv[0];
    bool force = false;
    std::vector<std::pair<std::string, std::string>> values;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (arg == "--force") {
            force = true;
        } else if (const auto opt = kShortOptions.find(arg); opt != kShortOptions.end()) {
            if (i + 1 >= argc)
                return Usage();
            values.emplace_back(opt->second, argv[++i]);
        } else if (const std::size_t eq = arg.find('='); eq != std::string_view::npos && eq > 0) {
            values.emplace_back(std::string(arg.substr(0, eq)), std::string(arg.substr(eq + 1)));
        } else {
            return Usage();
        }
    }

    const std::string text = vntcore::ComposeKeyFile(values);
    vntcore::KeyFloppy floppy;
    if (const vntcore::KeyResult parsed = vntcore::ParseKeyFile(text, &floppy); !parsed)
        return Refuse("refused", parsed.reason);

    std::error_code ec;
    fs::create_directories(dir, ec);
    if (ec || !fs::is_directory(dir))
        return Refuse(dir.string(), "not a folder and cannot be made one");
    std::string existing;
    if (vntcore::LocateKeyFile(dir.c_str(), &existing) && !force)
        return Refuse(existing, "exists (give --force to replace it)");
    const fs::path file = existing.empty() ? dir / vntcore::kKeyFileName : fs::path(existing);
    if (const std::string failed = WriteWhole(file, text); !failed.empty())
        return Refuse(dir.string(), failed);
    std::printf("%s: key floppy of type %u written\n", file.c_str(), floppy.type);
    return 0;
}

int Check(int argc, char** argv) {
    if (argc != 1)
        return Usage();
    const char* path = argv[0];
    std::string file;
    std::string bytes;
    vntcore::KeyFloppy floppy;
    vntcore::KeyResult result = vntcore::LocateKeyFile(path, &file);
    if (result)
        result = vntcore::LoadKeyFile(path, vntcore::kKeyFileMaxSize, &bytes);
    if (result)
        result = vntcore::ParseKeyFile(bytes, &floppy);
    if (!result)
        return Refuse(file.empty() ? std::string(path) : file, result.reason);
    std::printf("%s: key floppy of type %u\n", file.c_str(), floppy.type);
    for (const vntcore::KeyValue& v : floppy.values)
        std::printf("%s=%s\n", v.item->name, v.text.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2)
        return Usage();
    const std::string_view command = argv[1];
    if (command == "make")
        return Make(argc - 2, argv + 2);
    if (command == "check")
        return Check(argc - 2, argv + 2);
    return Usage();
}
