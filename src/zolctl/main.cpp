// zolctl: the command line, the libraries and the store the commands share.
//   zolctl check [--fix] [--json]
//   zolctl route SOURCE EVENT-ID [--json]
//   zolctl route --syslog SOURCE TEXT [--verbose] [--json]
//   zolctl test ID [--json]
#include <zolwin.h>

#include <clocale>
#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>

#include "frame/heap.h"
#include "zolctl/zolctl.h"

namespace zolctl {

Library::Library(const char* file) {
    char root[4096] = {};
    const DWORD needed = ExpandEnvironmentStrings("%ZolDir%", root, sizeof root);
    if (needed == 0 || needed > sizeof root)
        return;
    const std::string path = std::string(root) + "/lib/" + file;
    handle_ = LoadLibrary(path.c_str());
    if (handle_ == nullptr)
        ZOL_TRACE(TRACE_LEVEL_ERROR, "LoadLibrary for %s failed.", file);
}

Library::~Library() {
    if (handle_ != nullptr)
        FreeLibrary(handle_);
}

void Complain(std::string_view text) {
    std::cerr << "zolctl: " << text << '\n';
}

bool OpenSession(Session& session, bool withMonitored) {
    if (!session.rptset || !session.dscopy) {
        Complain("the service libraries rptset.dll and dscopy.dll cannot be loaded from lib/");
        return false;
    }
    // The platform's own readiness test: the store opens, passes a quick integrity check and
    // holds the alert manager's key.
    if (!IsZOLntserverReady()) {
        char path[4096] = {};
        ZolRegStorePath(path, sizeof path);
        Complain(std::string("the settings store ") + path +
                 " cannot be read (missing or damaged); see zolreg check and zolreg init");
        return false;
    }
    std::string error;
    if (!LoadDestinations(session.rptset.get(), session.store, &error) ||
        (withMonitored && !LoadMonitored(session.rptset.get(), session.store, &error))) {
        Complain(error);
        return false;
    }
    return true;
}

}  // namespace zolctl

namespace {

using zolctl::kExitFailure;

constexpr const char* kUsage =
    "usage: zolctl check [--fix] [--json]\n"
    "       zolctl route SOURCE EVENT-ID [--json]\n"
    "       zolctl route --syslog SOURCE TEXT [--verbose] [--json]\n"
    "       zolctl test ID [--json]\n"
    "       zolctl --help\n";

constexpr const char* kHelp =
    "zolctl: check the alert manager's settings, ask where an event goes, send a test report.\n"
    "\n"
    "  check [--fix]   every rule the settings screens enforce, over the whole store; one line\n"
    "                  per finding: <key path>: <finding>. --fix removes bindings that name a\n"
    "                  missing destination ID, in one store transaction, then checks again.\n"
    "  route SOURCE EVENT-ID\n"
    "                  the destinations an agent event is reported to: method, address, hours\n"
    "                  of the day, retries, and the event's handling settings.\n"
    "  route --syslog SOURCE TEXT\n"
    "                  the syslog items of SOURCE whose keywords all occur in TEXT (case\n"
    "                  sensitive) and where they report; --verbose also says why the others\n"
    "                  did not match.\n"
    "  test ID         sends a test report to one destination ID by its method.\n"
    "\n"
    "  --json          output for scripts (JSON) instead of lines for people.\n"
    "\n"
    "Exit status: 0 ok; 1 findings, not routed, or the test report not sent; 2 the settings\n"
    "store cannot be read, or bad usage.\n";

int BadUsage(std::string_view why) {
    zolctl::Complain(why);
    std::cerr << kUsage;
    return kExitFailure;
}

// Splits the arguments after the command into options and positional arguments. A "--" ends the
// options, so that a syslog text may begin with "-".
bool ParseOptions(int argc, char** argv, zolctl::Options& options, std::string& error) {
    bool positionalOnly = false;
    for (int i = 2; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (positionalOnly || !arg.starts_with("--")) {
            options.args.emplace_back(arg);
        } else if (arg == "--") {
            positionalOnly = true;
        } else if (arg == "--json") {
            options.json = true;
        } else if (arg == "--fix") {
            options.fix = true;
        } else if (arg == "--syslog") {
            options.syslog = true;
        } else if (arg == "--verbose") {
            options.verbose = true;
        } else {
            error = "unknown option " + std::string(arg);
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    // check takes both whole catalogues from the library: the heap policy of the program keeps
    // their some 30 MB of records from costing a page fault per 4 KB.
    ReserveHeap(kHeapReserve);
    std::setlocale(LC_ALL, "");
    TraceLogInit(0, "zolctl", 0, TRACE_LEVEL_INFO, 0);
    if (argc < 2)
        return BadUsage("no command given");
    const std::string_view command = argv[1];
    if (command == "--help" || command == "-h" || command == "help") {
        std::cout << kUsage << '\n' << kHelp;
        return zolctl::kExitOk;
    }
    zolctl::Options options;
    std::string error;
    if (!ParseOptions(argc, argv, options, error))
        return BadUsage(error);
    const std::size_t given = options.args.size();
    if (command == "check") {
        if (options.syslog || options.verbose || given != 0)
            return BadUsage("check takes only --fix and --json");
        return zolctl::RunCheck(options);
    }
    if (command == "route") {
        if (options.fix || given != 2 || (options.verbose && !options.syslog))
            return BadUsage("route takes SOURCE EVENT-ID, or --syslog SOURCE TEXT");
        return zolctl::RunRoute(options);
    }
    if (command == "test") {
        if (options.fix || options.syslog || options.verbose || given != 1)
            return BadUsage("test takes one destination ID");
        return zolctl::RunTest(options);
    }
    return BadUsage("unknown command " + std::string(command));
}
