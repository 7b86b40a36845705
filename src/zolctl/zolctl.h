// zolctl, the administrator's command-line companion: what its commands share. The store is read
// through the same service libraries and call layers the screens use; the commands (check.cpp,
// route.cpp, test.cpp) turn what they read into findings and routes, which output.cpp prints as
// lines for people or as JSON for scripts.
#pragma once

#include <zolwin.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "records.h"

namespace zolctl {

// Exit statuses of every command.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFindings = 1;  // findings, not routed, or the test report not sent
inline constexpr int kExitFailure = 2;   // the store cannot be read, or bad usage

// ---- Libraries (main.cpp) ----

// A service library loaded from the product root's lib/ for the life of the object.
class Library {
  public:
    explicit Library(const char* file);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    HMODULE get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

  private:
    HMODULE handle_ = nullptr;
};

// ---- The store as the commands see it (catalogue.cpp) ----

// One destination ID as "GetAllDestSetting" read it (the password is never kept).
struct Destination {
    std::string id, method, address, phone, user;
    std::uint32_t port = 0, hourMask = 0, retryInterval = 0, retryTime = 0;
    bool hidden = false;  // one of the IDs the library keeps for its own use
};

// One agent event or syslog item with its settings and the destination IDs bound to it.
struct Monitored {
    bool syslog = false;
    std::string source, eventID, trapName, dealMethod;
    std::vector<std::string> destIDs;
    int action = 0;
    // Syslog items only.
    std::string keywords[3];
    int count = 0;
    std::uint32_t timeTable = 0;
};

// Everything the commands read, loaded once.
struct Store {
    std::vector<Destination> destinations;
    int idListKeys = 0;  // subkeys of ID_LIST, which may exceed what the library reads
    std::vector<Monitored> events;
    std::vector<Monitored> syslogItems;
};

// Reads the destination table. False (with *error set) when the library cannot read it.
bool LoadDestinations(HMODULE rptset, Store& store, std::string* error);
// Reads the agent event catalogue and the syslog items. False (with *error) on failure.
bool LoadMonitored(HMODULE rptset, Store& store, std::string* error);
// One agent event by source and event ID (without regard to case), through "GetAgntSetting";
// nothing when the catalogue has no such event.
std::optional<Monitored> LoadEvent(HMODULE rptset, const std::string& source,
                                   const std::string& eventID);
// Every syslog item of one source (named without regard to case), through "GetSyslogSetting"
// for each item key of the source. False (with *error) when an item cannot be read.
bool LoadSourceItems(HMODULE rptset, const std::string& source, std::vector<Monitored>& items,
                     std::string* error);
// The destination whose ID equals id without regard to case; null when there is none.
const Destination* FindDestination(const Store& store, std::string_view id);
bool EqualsNoCase(std::string_view a, std::string_view b);

// The hour mask as schedule text ("0-8,20-23") by the copy library's "x"; "(none)" for no hour.
std::string HoursText(HMODULE dscopy, std::uint32_t mask);
// The registry path of an event's or item's key and of its Dest subkey.
std::string MonitoredKey(const Monitored& entry);
// A REG_SZ value read directly (as the screens read the HTTPS URLs); empty when it is missing,
// of another type or longer than REG_TEXT_SIZE bytes.
std::string ReadStoreText(const char* key, const char* value);
// Where the remote report service sends its reports by its stored method: "internet mail to
// <ETo>", "dial-up to <PhoneNo1>", "via the manager <ip> port <port>", "HTTPS to <HTTPD1URL>".
std::string VantrelWhere(HMODULE rptset);
// The action after a report: "none", "shutdown", "reboot".
std::string ActionText(int action);
// The handling method text; the marker of "never set" becomes empty.
std::string DealMethodText(const std::string& stored);

// ---- Output (output.cpp) ----

// Store texts (EUC-JP in Japanese installations) for the terminal: converted to UTF-8 when the
// locale's character set is UTF-8 (always for JSON); ASCII passes unchanged.
std::string ForTerminal(std::string_view storeText);
// A typed text for comparison with store texts: UTF-8 converted to EUC-JP when the locale's
// character set is UTF-8 and the text is not plain ASCII.
std::string ForStore(std::string_view typed);
// A JSON string literal of a store text (converted as ForTerminal does for UTF-8, escaped).
std::string JsonString(std::string_view storeText);

// ---- Commands ----

struct Options {
    bool json = false;
    bool fix = false;
    bool syslog = false;
    bool verbose = false;
    std::vector<std::string> args;  // positional arguments after the command
};

int RunCheck(const Options& options);
int RunRoute(const Options& options);
int RunTest(const Options& options);

// Loads rptset.dll and dscopy.dll and checks that the store can be read; on failure prints the
// reason and returns false.
struct Session {
    Library rptset{"rptset.dll"};
    Library dscopy{"dscopy.dll"};
    Store store;
};
bool OpenSession(Session& session, bool withMonitored);

// Prints "zolctl: <text>" on standard error.
void Complain(std::string_view text);

}  // namespace zolctl
