// zolctl route: where an agent event, or a syslog line, is reported. For a syslog line each item
// of the source is tried against the text with the log monitor's rule: every keyword the item
// sets must occur in the line, byte for byte (case-sensitive; Japanese keywords in the store's
// EUC-JP, the typed line converted to it).
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "destination/destination.h"
#include "frame/rptset_calls.h"
#include "zolctl/zolctl.h"

namespace zolctl {

namespace {

// Where reports to one destination go, as a line of text.
std::string Where(HMODULE rptset, const Destination& d) {
    switch (ClassifyMethod(d.method)) {
        case DestMethod::InBand:
        case DestMethod::OutOfBand:
            return d.address.empty() ? "no address set"
                                     : d.address + " port " + std::to_string(d.port);
        case DestMethod::Snmp: {
            std::vector<std::vector<char>> buffers(TRAP_DEST_MAX,
                                                   std::vector<char>(TRAP_DEST_SIZE, '\0'));
            std::vector<char*> list;
            for (auto& b : buffers)
                list.push_back(b.data());
            int count = 0;
            if (GetTrapSetting(rptset, &count, list.data()) == 0)
                return "trap destinations unreadable";
            std::string where = "traps to";
            for (int i = 0; i < count; ++i)
                where += std::string(i ? ", " : " ") + list[i];
            return count == 0 ? "no trap destination set" : where;
        }
        case DestMethod::Vantrel:
            return VantrelWhere(rptset);
        case DestMethod::Other:
            break;
    }
    return "unknown method";
}

struct RouteLine {
    std::string id;
    const Destination* dest = nullptr;
};

// The destinations of one event or item, printed; answers how many exist.
int PrintDestinations(const Session& s, const Monitored& entry, const std::string& indent) {
    int existing = 0;
    if (entry.destIDs.empty())
        std::cout << indent << "not reported to any destination\n";
    for (const std::string& id : entry.destIDs) {
        const Destination* d = FindDestination(s.store, id);
        if (d == nullptr) {
            std::cout << indent << ForTerminal(id) << ": no such destination ID (not reported)\n";
            continue;
        }
        ++existing;
        std::cout << indent << ForTerminal(d->id) << ": " << ForTerminal(d->method) << ", "
                  << ForTerminal(Where(s.rptset.get(), *d)) << "; hours "
                  << HoursText(s.dscopy.get(), d->hourMask) << "; retry every " << d->retryInterval
                  << " min for " << d->retryTime << " h\n";
    }
    return existing;
}

std::string JsonDestinations(const Session& s, const Monitored& entry, int* existing) {
    std::string out = "[";
    for (std::size_t i = 0; i < entry.destIDs.size(); ++i) {
        const Destination* d = FindDestination(s.store, entry.destIDs[i]);
        out += i ? "," : "";
        if (d == nullptr) {
            out += "{\"id\":" + JsonString(entry.destIDs[i]) + ",\"exists\":false}";
            continue;
        }
        ++*existing;
        out += "{\"id\":" + JsonString(d->id) +
               ",\"exists\":true,\"method\":" + JsonString(d->method) +
               ",\"address\":" + JsonString(d->address) + ",\"port\":" + std::to_string(d->port) +
               ",\"where\":" + JsonString(Where(s.rptset.get(), *d)) +
               ",\"hours\":" + JsonString(HoursText(s.dscopy.get(), d->hourMask)) +
               ",\"hourMask\":" + std::to_string(d->hourMask) +
               ",\"retryInterval\":" + std::to_string(d->retryInterval) +
               ",\"retryTime\":" + std::to_string(d->retryTime) + "}";
    }
    return out + "]";
}

std::string JsonHandling(const Monitored& entry) {
    return "\"source\":" + JsonString(entry.source) + ",\"eventID\":" + JsonString(entry.eventID) +
           ",\"trapName\":" + JsonString(entry.trapName) +
           ",\"action\":" + JsonString(ActionText(entry.action)) +
           ",\"dealMethod\":" + JsonString(DealMethodText(entry.dealMethod));
}

void PrintHandling(const Monitored& entry, const std::string& indent) {
    const std::string deal = DealMethodText(entry.dealMethod);
    std::cout << indent << "handling: action " << ActionText(entry.action) << "; method "
              << (deal.empty() ? "(none set)" : "\"" + ForTerminal(deal) + "\"") << '\n';
}

int RouteEvent(const Session& s, const Options& options) {
    const std::optional<Monitored> found =
        LoadEvent(s.rptset.get(), ForStore(options.args[0]), ForStore(options.args[1]));
    if (!found) {
        if (options.json)
            std::cout << "{\"found\":false,\"destinations\":[]}\n";
        else
            std::cout << "no agent event " << options.args[0] << " " << options.args[1]
                      << " in the catalogue: not reported\n";
        return kExitFindings;
    }
    int existing = 0;
    if (options.json) {
        const std::string dests = JsonDestinations(s, *found, &existing);
        std::cout << "{\"found\":true," << JsonHandling(*found) << ",\"destinations\":" << dests
                  << "}\n";
    } else {
        std::cout << "agent event " << ForTerminal(found->source) << " "
                  << ForTerminal(found->eventID) << " (trap " << ForTerminal(found->trapName)
                  << ")\n";
        PrintHandling(*found, "  ");
        existing = PrintDestinations(s, *found, "  ");
    }
    return existing > 0 ? kExitOk : kExitFindings;
}

// Why an item does not match the line: the first keyword missing from it; empty when every
// keyword the item sets occurs (an item without any keyword matches nothing).
std::string Mismatch(const Monitored& item, const std::string& line) {
    bool any = false;
    for (const std::string& keyword : item.keywords) {
        if (keyword.empty())
            continue;
        any = true;
        if (line.find(keyword) == std::string::npos)
            return "keyword \"" + keyword + "\" not in the line";
    }
    return any ? std::string() : std::string("the item has no keyword");
}

std::string JsonKeywords(const Monitored& item) {
    std::string out = "[";
    for (const std::string& k : item.keywords) {
        if (!k.empty())
            out += (out.size() > 1 ? "," : "") + JsonString(k);
    }
    return out + "]";
}

void PrintItem(const Session& s, const Monitored& item, const std::string& why, int* existing) {
    if (!why.empty()) {
        std::cout << "item " << ForTerminal(item.eventID) << " not matched: " << ForTerminal(why)
                  << '\n';
        return;
    }
    std::cout << "item " << ForTerminal(item.eventID) << " matched (keywords";
    for (const std::string& k : item.keywords) {
        if (!k.empty())
            std::cout << " \"" << ForTerminal(k) << "\"";
    }
    std::cout << "; fires at " << item.count << " matching line(s); item hours "
              << HoursText(s.dscopy.get(), item.timeTable) << ")\n";
    PrintHandling(item, "  ");
    *existing += PrintDestinations(s, item, "  ");
}

int RouteSyslog(const Session& s, const Options& options) {
    const std::string source = ForStore(options.args[0]);
    const std::string line = ForStore(options.args[1]);
    std::vector<Monitored> sourceItems;
    std::string error;
    if (!LoadSourceItems(s.rptset.get(), source, sourceItems, &error)) {
        Complain(error);
        return kExitFailure;
    }
    int existing = 0, items = 0, matched = 0;
    std::string json;
    for (const Monitored& item : sourceItems) {
        ++items;
        const std::string why = Mismatch(item, line);
        matched += why.empty() ? 1 : 0;
        if (options.json) {
            json +=
                std::string(json.empty() ? "" : ",\n ") + "{" + JsonHandling(item) +
                ",\"keywords\":" + JsonKeywords(item) +
                ",\"matched\":" + (why.empty() ? "true" : "false") + ",\"why\":" + JsonString(why) +
                ",\"count\":" + std::to_string(item.count) +
                ",\"hours\":" + JsonString(HoursText(s.dscopy.get(), item.timeTable)) +
                ",\"destinations\":" + (why.empty() ? JsonDestinations(s, item, &existing) : "[]") +
                "}";
        } else if (why.empty() || options.verbose) {
            PrintItem(s, item, why, &existing);
        }
    }
    if (options.json) {
        std::cout << "{\"source\":" << JsonString(source) << ",\"items\":[" << json << "]}\n";
    } else if (items == 0) {
        std::cout << "no syslog item of source " << options.args[0] << ": not reported\n";
    } else if (matched == 0) {
        std::cout << "no item of " << options.args[0] << " (" << items
                  << ") matches the line: not reported"
                  << (options.verbose ? "" : " (--verbose says why)") << '\n';
    }
    return existing > 0 ? kExitOk : kExitFindings;
}

}  // namespace

int RunRoute(const Options& options) {
    Session session;
    if (!OpenSession(session, false))
        return kExitFailure;
    return options.syslog ? RouteSyslog(session, options) : RouteEvent(session, options);
}

}  // namespace zolctl
