// The zolreg verbs: argument parsing from one table, and each verb over the store layer.
#include "commands.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <new>
#include <sstream>

#include "encoding.h"
#include "regfile.h"
#include "regtext.h"
#include "store.h"

namespace fs = std::filesystem;

namespace zolreg {

namespace {

constexpr std::string_view kDone = "The operation completed successfully.\n";

constexpr std::string_view kUsage =
    "usage: zolreg query KEY [/v NAME | /ve] [/s] [/raw]\n"
    "       zolreg add KEY [/v NAME | /ve] [/t TYPE] [/d DATA] [/f] [/raw]\n"
    "       zolreg delete KEY [/v NAME | /ve | /va] [/f] [/raw]\n"
    "       zolreg export KEY FILE [/y] [/raw]\n"
    "       zolreg import FILE\n"
    "       zolreg init [/f]\n"
    "       zolreg check\n"
    "KEY is HKLM\\path or HKEY_LOCAL_MACHINE\\path; TYPE is REG_SZ (default), REG_EXPAND_SZ,\n"
    "REG_DWORD, REG_BINARY, REG_MULTI_SZ or REG_NONE. Texts are converted between the store's\n"
    "EUC-JP and the locale's encoding; /raw passes the bytes unchanged. Passwords are never "
    "shown.\n";

// A wrong command line: one line saying what is wrong, then the usage.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Args {
    std::vector<std::string> positional;
    std::map<std::string, std::string> options;  // "/v" -> NAME; flags map to ""
    TextCodec codec{std::string()};              // the terminal's encoding <-> the store's

    bool has(const std::string& option) const { return options.count(option) != 0; }
    const std::string& get(const std::string& option) const { return options.at(option); }
};

using VerbFn = int (*)(const Args&);

struct Verb {
    std::string_view name;
    size_t positionals;
    std::string_view flags;   // options without a value, blank separated
    std::string_view valued;  // options followed by a value
    VerbFn run;
};

bool listed(std::string_view list, std::string_view word) {
    size_t pos = 0;
    while (pos < list.size()) {
        size_t end = list.find(' ', pos);
        if (end == std::string_view::npos)
            end = list.size();
        if (list.substr(pos, end - pos) == word)
            return true;
        pos = end + 1;
    }
    return false;
}

std::string lower(std::string_view s) {
    std::string out(s);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

// Options are short ("/v", "/ve") or /raw; anything else that starts with / is a file path.
bool looksLikeOption(std::string_view arg) {
    if (lower(arg) == "/raw")
        return true;
    if (arg.size() < 2 || arg.size() > 3 || arg.front() != '/')
        return false;
    for (char c : arg.substr(1)) {
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')))
            return false;
    }
    return true;
}

Args parseArgs(const Verb& verb, int argc, char** argv) {
    Args args;
    for (int i = 2; i < argc; ++i) {
        std::string arg = argv[i];
        if (looksLikeOption(arg)) {
            std::string option = lower(arg);
            if (args.has(option))
                throw UsageError(arg + " given twice");
            if (listed(verb.flags, option)) {
                args.options[option] = "";
            } else if (listed(verb.valued, option)) {
                if (i + 1 >= argc)
                    throw UsageError(arg + " needs a value");
                args.options[option] = argv[++i];
            } else {
                throw UsageError("unknown option " + arg + " for " + std::string(verb.name));
            }
        } else {
            args.positional.push_back(arg);
        }
    }
    if (args.positional.size() != verb.positionals) {
        throw UsageError(std::string(verb.name) + " takes " + std::to_string(verb.positionals) +
                         (verb.positionals == 1 ? " argument" : " arguments"));
    }
    return args;
}

std::string keyArg(const std::string& text) {
    std::optional<std::string> sub = subKeyOf(text);
    if (!sub)
        throw UsageError("only keys under HKLM (HKEY_LOCAL_MACHINE) are supported: " + text);
    return *sub;
}

// /v NAME or /ve; nullopt when neither is given.
std::optional<std::string> valueArg(const Args& args) {
    if (args.has("/v") && args.has("/ve"))
        throw UsageError("/v and /ve exclude each other");
    if (args.has("/v"))
        return args.get("/v");
    if (args.has("/ve"))
        return std::string();
    return std::nullopt;
}

std::string valueLabel(const std::string& name) {
    return name.empty() ? "(Default)" : name;
}

void writeOut(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        std::fflush(stdout) != 0) {
        throw ToolError(std::string("cannot write the output: ") + std::strerror(errno));
    }
}

// reg.exe's question; anything but yes (or no answer at all) is no.
bool confirm(const std::string& question) {
    writeOut(question);
    std::string answer;
    bool got = static_cast<bool>(std::getline(std::cin, answer));
    if (!isatty(STDIN_FILENO))
        writeOut("\n");  // the answer was not echoed: end the line
    if (!got)
        return false;
    std::string word = lower(answer);
    while (!word.empty() && (word.back() == '\r' || word.back() == ' '))
        word.pop_back();
    return word == "y" || word == "yes";
}

std::string readWholeFile(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw ToolError("cannot read " + file + ": " + std::strerror(errno));
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad())
        throw ToolError("cannot read " + file);
    return text.str();
}

// Writes a file whole or not at all: a temporary file beside it, renamed over it at the end.
void writeFileAtomically(const std::string& file, const std::string& text) {
    fs::path target(file);
    fs::path dir = target.parent_path().empty() ? fs::path(".") : target.parent_path();
    std::string temp = (dir / (target.filename().string() + ".zolreg-XXXXXX")).string();
    int fd = mkstemp(temp.data());
    if (fd < 0)
        throw ToolError("cannot write " + file + ": " + std::strerror(errno));
    struct Cleanup {
        int fd;
        std::string path;
        bool keep = false;
        ~Cleanup() {
            if (fd >= 0)
                close(fd);
            if (!keep)
                unlink(path.c_str());
        }
    } cleanup{fd, temp};
    size_t done = 0;
    while (done < text.size()) {
        ssize_t put = write(fd, text.data() + done, text.size() - done);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            throw ToolError("cannot write " + file + ": " + std::strerror(errno));
        done += static_cast<size_t>(put);
    }
    if (fsync(fd) != 0 || close(fd) != 0) {
        cleanup.fd = -1;
        throw ToolError("cannot write " + file + ": " + std::strerror(errno));
    }
    cleanup.fd = -1;
    if (rename(temp.c_str(), file.c_str()) != 0) {
        throw ToolError("cannot write " + file + ": " + std::strerror(errno));
    }
    cleanup.keep = true;
}

// ---- query ----

// What query shows: stored texts in the terminal's encoding (a text that is no EUC-JP as
// stored, with a warning at the end), passwords never.
class Display {
  public:
    explicit Display(const TextCodec& codec) : codec_(codec) {}

    std::string text(std::string_view stored, std::string_view where) {
        if (std::optional<std::string> shown = codec_.toTerminal(stored))
            return *shown;
        warnings_ +=
            "zolreg: warning: " + std::string(where) + " is not EUC-JP text; shown as stored\n";
        return std::string(stored);
    }
    std::string path(std::string_view sub) { return text(longPath(sub), longPath(sub)); }
    std::string line(std::string_view sub, const Value& value) {
        const std::string where = shortPath(sub) + " " + valueLabel(value.name);
        const std::string name = text(value.name, where);
        if (isPasswordValue(value.name))
            return queryLine(name, value.type, {}) + "(hidden)";
        const bool isText =
            value.type == REG_SZ || value.type == REG_EXPAND_SZ || value.type == REG_MULTI_SZ;
        return queryLine(name, value.type, isText ? text(value.data, where) : value.data);
    }
    const std::string& warnings() const { return warnings_; }

  private:
    const TextCodec& codec_;
    std::string warnings_;
};

std::string keyBlock(const Key& key, const std::optional<std::string>& only, bool& matched,
                     Display& display) {
    std::string out = display.path(key.path()) + "\n";
    matched = false;
    if (only) {
        // Found among all values so that the name shows as stored, not as typed.
        for (const Value& value : key.values()) {
            if (equalsNoCase(value.name, *only)) {
                out += display.line(key.path(), value) + "\n";
                matched = true;
                break;
            }
        }
    } else {
        for (const Value& value : key.values()) {
            out += display.line(key.path(), value) + "\n";
        }
        matched = true;
    }
    return out + "\n";
}

void queryTree(const Key& key, const std::optional<std::string>& only, std::string& out,
               int& matches, Display& display) {
    bool matched = false;
    std::string block = keyBlock(key, only, matched, display);
    if (matched) {
        out += block;
        ++matches;
    }
    for (const std::string& name : key.subKeyNames()) {
        queryTree(Key::open(childPath(key.path(), name), KEY_READ), only, out, matches, display);
    }
}

int cmdQuery(const Args& args) {
    std::string sub = keyArg(args.positional[0]);
    std::optional<std::string> only = valueArg(args);
    Key key = Key::open(sub, KEY_READ);
    Display display(args.codec);
    std::string out;
    if (args.has("/s")) {
        int matches = 0;
        queryTree(key, only, out, matches, display);
        if (only && matches == 0)
            check(ERROR_FILE_NOT_FOUND, sub, only);
    } else if (only) {
        bool matched = false;
        out = keyBlock(key, only, matched, display);
        if (!matched && !only->empty())
            check(ERROR_FILE_NOT_FOUND, sub, only);
        if (!matched) {
            // reg.exe shows an unset default value this way rather than failing.
            out = display.path(sub) + "\n    (Default)    REG_SZ    (value not set)\n\n";
        }
    } else {
        bool matched = false;
        out = keyBlock(key, only, matched, display);
        for (const std::string& name : key.subKeyNames()) {
            out += display.path(childPath(sub, name)) + "\n";
        }
    }
    writeOut(out);
    if (!display.warnings().empty())
        std::fputs(display.warnings().c_str(), stderr);
    return 0;
}

// ---- add ----

int cmdAdd(const Args& args) {
    std::string sub = keyArg(args.positional[0]);
    std::optional<std::string> name = valueArg(args);
    if (!name && (args.has("/t") || args.has("/d")))
        name = std::string();  // the default value
    uint32_t type = REG_SZ;
    if (args.has("/t")) {
        std::optional<uint32_t> given = typeFromName(args.get("/t"));
        if (!given)
            throw UsageError("unknown type " + args.get("/t"));
        type = *given;
    }
    std::string why;
    std::optional<std::string> data =
        dataFromText(type, args.has("/d") ? args.get("/d") : std::string(), why);
    if (!data)
        throw ToolError(why);
    if (sub.empty() && !name)
        throw ToolError("the root key HKLM exists already");

    if (name && !args.has("/f")) {
        std::optional<Key> existing = Key::openIfExists(sub, KEY_READ);
        if (existing && existing->value(*name)) {
            if (!confirm("Value " + valueLabel(*name) + " exists, overwrite(Yes/No)?")) {
                throw ToolError("value " + valueLabel(*name) + " in key " + shortPath(sub) +
                                " left unchanged");
            }
        }
    }
    Transaction transaction;
    Key key = Key::create(sub);
    if (name) {
        check(RegSetValueEx(key.get(), name->c_str(), 0, type,
                            reinterpret_cast<const BYTE*>(data->data()),
                            static_cast<DWORD>(data->size())),
              sub, *name);
    }
    transaction.commit();
    writeOut(kDone);
    return 0;
}

// ---- delete ----

int cmdDelete(const Args& args) {
    std::string sub = keyArg(args.positional[0]);
    std::optional<std::string> name = valueArg(args);
    bool allValues = args.has("/va");
    if (name && allValues)
        throw UsageError("/va excludes /v and /ve");
    const bool force = args.has("/f");
    std::optional<Key> key = Key::open(sub, KEY_ALL_ACCESS);

    if (name) {
        if (!key->value(*name))
            check(ERROR_FILE_NOT_FOUND, sub, name);
        if (!force && !confirm("Delete the registry value " + valueLabel(*name) + " (Yes/No)?")) {
            throw ToolError("value " + valueLabel(*name) + " in key " + shortPath(sub) +
                            " left unchanged");
        }
        check(RegDeleteValue(key->get(), name->c_str()), sub, name);
    } else if (allValues) {
        if (!force &&
            !confirm("Delete all values under the registry key " + longPath(sub) + " (Yes/No)?")) {
            throw ToolError("key " + shortPath(sub) + " left unchanged");
        }
        Transaction transaction;
        for (const Value& value : key->values()) {
            check(RegDeleteValue(key->get(), value.name.c_str()), sub, value.name);
        }
        transaction.commit();
    } else {
        if (sub.empty())
            throw ToolError("the root key HKLM cannot be deleted");
        if (!force &&
            !confirm("Permanently delete the registry key " + longPath(sub) + " (Yes/No)?")) {
            throw ToolError("key " + shortPath(sub) + " left unchanged");
        }
        key.reset();  // let go of the key before it goes
        Transaction transaction;
        deleteTree(sub);
        transaction.commit();
    }
    writeOut(kDone);
    return 0;
}

// ---- export / import ----

int cmdExport(const Args& args) {
    std::string sub = keyArg(args.positional[0]);
    const std::string& file = args.positional[1];
    std::error_code ec;
    if (!args.has("/y") && fs::exists(file, ec)) {
        throw ToolError(file + " already exists; add /y to overwrite it");
    }
    std::string text;
    try {
        text = writeRegFile(readTree(Key::open(sub, KEY_READ)));
    } catch (const std::invalid_argument& e) {
        throw ToolError(std::string("cannot export ") + shortPath(sub) + ": " + e.what());
    }
    writeFileAtomically(file, text);
    writeOut(kDone);
    return 0;
}

std::vector<Operation> parseFileOrFail(const std::string& file) {
    ParseResult parsed = parseRegFile(readWholeFile(file));
    if (parsed.error) {
        throw ToolError(file + ": line " + std::to_string(parsed.error->line) + ": " +
                        parsed.error->message);
    }
    return std::move(parsed.ops);
}

int cmdImport(const Args& args) {
    const std::string& file = args.positional[0];
    std::vector<Operation> ops = parseFileOrFail(file);
    Transaction transaction;
    applyOperations(ops, file);
    transaction.commit();
    writeOut(kDone);
    return 0;
}

// ---- init ----

// Sets ZolDir for one scope and puts the old value back.
class ZolDirOverride {
  public:
    explicit ZolDirOverride(const std::string& dir) {
        if (const char* old = std::getenv("ZolDir"))
            old_ = old;
        setenv("ZolDir", dir.c_str(), 1);
    }
    ~ZolDirOverride() {
        ZolRegCloseStore();
        if (old_) {
            setenv("ZolDir", old_->c_str(), 1);
        } else {
            unsetenv("ZolDir");
        }
    }
    ZolDirOverride(const ZolDirOverride&) = delete;
    ZolDirOverride& operator=(const ZolDirOverride&) = delete;

  private:
    std::optional<std::string> old_;
};

// A scratch folder removed with all it holds when it goes.
class ScratchDir {
  public:
    explicit ScratchDir(const fs::path& parent) {
        path_ = (parent / ".init-XXXXXX").string();
        if (mkdtemp(path_.data()) == nullptr) {
            throw ToolError("cannot create a folder in " + parent.string() + ": " +
                            std::strerror(errno));
        }
    }
    ~ScratchDir() {
        std::error_code ec;
        fs::remove_all(path_, ec);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

// The new store is built and filled under a scratch product root beside the real store, then
// renamed into place: a failed or interrupted init leaves the old state, never a half store.
int cmdInit(const Args& args) {
    std::string root(4096, '\0');
    if (!GetZolRootPath(root.data(), static_cast<DWORD>(root.size()))) {
        throw ToolError("cannot tell the product root (ZolDir)");
    }
    root.resize(root.find('\0'));
    const std::string defaults = root + "/data/default.reg";
    std::vector<Operation> ops = parseFileOrFail(defaults);

    const fs::path store = storePath();
    std::error_code ec;
    if (!args.has("/f") && fs::exists(store, ec))
        check(ERROR_ALREADY_EXISTS);
    const fs::path registryDir = store.parent_path();
    if (!fs::exists(registryDir, ec)) {
        if (mkdir(registryDir.c_str(), 0700) != 0 && errno != EEXIST) {
            throw ToolError("cannot create " + registryDir.string() + ": " + std::strerror(errno));
        }
    }

    ScratchDir scratch(registryDir);
    fs::path built;
    {
        ZolDirOverride scratchRoot(scratch.path());
        built = storePath();
        check(ZolRegCreateStore());
        Transaction transaction;
        applyOperations(ops, defaults);
        transaction.commit();
    }  // the scratch store is closed here

    if (args.has("/f")) {
        LONG rc = ZolRegRemoveStore();
        if (rc != ERROR_FILE_NOT_FOUND)
            check(rc);
    }
    // A journal the close did not fold in belongs to the new store: it moves first.
    fs::path builtWal = built.string() + "-wal";
    if (fs::exists(builtWal, ec) && fs::file_size(builtWal, ec) > 0) {
        fs::rename(builtWal, store.string() + "-wal", ec);
        if (ec)
            throw ToolError("cannot move the new store into place: " + ec.message());
    }
    fs::rename(built, store, ec);
    if (ec)
        throw ToolError("cannot move the new store into place: " + ec.message());
    ZolRegCloseStore();
    check(ZolRegCheckStore(0));
    writeOut(kDone);
    return 0;
}

int cmdCheck(const Args&) {
    check(ZolRegCheckStore(1));
    writeOut("The settings store " + storePath() + " passed the integrity check.\n");
    return 0;
}

constexpr std::array<Verb, 7> kVerbs{{
    {"query", 1, "/ve /s /raw", "/v", cmdQuery},
    {"add", 1, "/ve /f /raw", "/v /t /d", cmdAdd},
    {"delete", 1, "/ve /va /f /raw", "/v", cmdDelete},
    {"export", 2, "/y /raw", "", cmdExport},
    {"import", 1, "", "", cmdImport},
    {"init", 0, "/f", "", cmdInit},
    {"check", 0, "", "", cmdCheck},
}};

// Key paths, value names and data typed on the command line, in the store's encoding. A text
// that does not convert is refused whole: nothing half converted reaches the store.
void toStoreEncoding(Args& args) {
    const auto convert = [&args](std::string& text, const std::string& what) {
        std::string why;
        std::optional<std::string> stored = args.codec.toStore(text, why);
        if (!stored) {
            throw ToolError(what + " " + why + "; nothing was changed (/raw passes the bytes " +
                            "as given)");
        }
        text = std::move(*stored);
    };
    if (!args.positional.empty())
        convert(args.positional[0], "the key");
    for (const char* option : {"/v", "/d"}) {
        if (auto it = args.options.find(option); it != args.options.end())
            convert(it->second, std::string("the text after ") + option);
    }
}

bool isHelp(std::string_view arg) {
    return arg == "--help" || arg == "-h" || arg == "/?";
}

// One command line, from the verb's name to its exit status; failures are thrown.
int runVerb(int argc, char** argv) {
    if (argc < 2)
        throw UsageError("no command given");
    if (isHelp(argv[1])) {
        writeOut(kUsage);
        return 0;
    }
    const std::string verbName = lower(argv[1]);
    for (const Verb& verb : kVerbs) {
        if (verb.name != verbName)
            continue;
        Args args = parseArgs(verb, argc, argv);
        // import and init read files whose bytes are the store's; check takes no text.
        if (listed(verb.flags, "/raw")) {
            args.codec = TextCodec::forLocale(args.has("/raw"));
            toStoreEncoding(args);
        }
        return verb.run(args);
    }
    throw UsageError("unknown command " + std::string(argv[1]));
}

}  // namespace

int runTool(int argc, char** argv) {
    // Texts typed and shown are in the locale's encoding (LC_ALL, LC_CTYPE, LANG).
    std::setlocale(LC_ALL, "");
    try {
        try {
            return runVerb(argc, argv);
        } catch (const UsageError& e) {
            std::fprintf(stderr, "zolreg: %s\n%.*s", e.what(), static_cast<int>(kUsage.size()),
                         kUsage.data());
        } catch (const ToolError& e) {
            std::fprintf(stderr, "zolreg: %s\n", e.what());
        } catch (const std::bad_alloc&) {
            std::fprintf(stderr, "zolreg: out of memory\n");
        } catch (const std::exception& e) {
            std::fprintf(stderr, "zolreg: %s\n", e.what());
        }
    } catch (...) {
        // Reporting itself failed; the exit status still tells.
    }
    return 1;
}

}  // namespace zolreg
