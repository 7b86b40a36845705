// The scale store of the benchmarks: 100 destination IDs (the seeded ten and 90 more), 2,000 agent
// events in 100 sources and 1,000 syslog items in 50 sources, every third event or item bound to
// one to three destinations. The seeded catalogues are replaced; everything is written in one
// store transaction through the platform layer.
#pragma once

#include <zolwin.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "product_root.h"
#include "records.h"
#include "regpaths.h"

namespace zolbench {

inline constexpr int kScaleDestinations = 100;
inline constexpr int kScaleAgentSources = 100;
inline constexpr int kScaleEventsPerSource = 20;
inline constexpr int kScaleSyslogSources = 50;
inline constexpr int kScaleItemsPerSource = 20;

namespace scale {

inline void Check(LONG r, const char* what) {
    if (r != ERROR_SUCCESS) {
        std::fprintf(stderr, "%s failed: %ld\n", what, static_cast<long>(r));
        std::exit(1);
    }
}
inline void SetText(HKEY key, const char* name, const std::string& text) {
    Check(RegSetValueEx(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                        static_cast<DWORD>(text.size() + 1)),
          "RegSetValueEx");
}
inline void SetDword(HKEY key, const char* name, DWORD value) {
    Check(RegSetValueEx(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), 4),
          "RegSetValueEx");
}
inline HKEY Create(const std::string& path) {
    HKEY key = nullptr;
    Check(RegCreateKey(HKEY_LOCAL_MACHINE, path.c_str(), &key), "RegCreateKey");
    return key;
}

}  // namespace scale

// The name of generated destination d: "Dest000" upwards.
inline std::string ScaleDestID(int d) {
    char name[32];
    std::snprintf(name, sizeof name, "Dest%03d", d);
    return name;
}

// Every third event or item reports to one to three destinations.
inline void BindScaleDestinations(const std::string& eventKey, int n, int destinations) {
    if (n % 3 != 0)
        return;
    HKEY dest = scale::Create(eventKey + "\\Dest");
    for (int k = 0; k <= n % 3 + (n % 7 == 0 ? 2 : 0); ++k)
        scale::SetDword(dest, ScaleDestID((n + k * 37) % destinations).c_str(), 1);
    RegCloseKey(dest);
}

inline void AddScaleDestinations(int count) {
    for (int d = 0; d < count; ++d) {
        HKEY k = scale::Create(std::string(ZOL_KEY_ID_LIST) + "\\" + ScaleDestID(d));
        scale::SetText(k, "Method", "MANAGER (SNMP)");
        scale::SetText(k, "Address", "192.0.2." + std::to_string(d + 1));
        scale::SetDword(k, "Port", 162);
        scale::SetDword(k, "HourMask", 0xFFFFFF);
        scale::SetDword(k, "RetryInterval", 5);
        scale::SetDword(k, "RetryTime", 72);
        RegCloseKey(k);
    }
}

inline void AddScaleAgentEvents(int destinations, int& n) {
    for (int s = 0; s < kScaleAgentSources; ++s) {
        for (int e = 0; e < kScaleEventsPerSource; ++e, ++n) {
            char path[256];
            std::snprintf(path, sizeof path, "%s\\AgentSource%03d\\%c%07X", ZOL_KEY_AGENTEVENT, s,
                          "48C"[e % 3], n);
            HKEY k = scale::Create(path);
            scale::SetText(k, "TrapName", "zolTrapOfEvent" + std::to_string(n));
            scale::SetText(k, "DealMethod",
                           n % 2 ? NO_US_DEALMETHOD : "Check the unit in the event.");
            scale::SetDword(k, "Action", n % 3);
            scale::SetDword(k, "ErrKind", 1 + n % 4);
            scale::SetDword(k, "Level", n % 9);
            RegCloseKey(k);
            BindScaleDestinations(path, n, destinations);
        }
    }
}

inline void AddScaleSyslogItems(int destinations, int& n) {
    for (int s = 0; s < kScaleSyslogSources; ++s) {
        for (int e = 0; e < kScaleItemsPerSource; ++e, ++n) {
            char path[256];
            std::snprintf(path, sizeof path, "%s\\syslog-source-%02d\\%c%07X", ZOL_KEY_SYSLOG, s,
                          "48C"[e % 3], n);
            HKEY k = scale::Create(path);
            scale::SetText(k, "Keyword1", "I/O error");
            scale::SetText(k, "Keyword2", n % 2 ? "" : "sector " + std::to_string(n));
            scale::SetText(k, "TrapName", "sysTrapOfItem" + std::to_string(n));
            scale::SetText(k, "DealMethod", NO_US_DEALMETHOD);
            scale::SetDword(k, "Count", 1 + n % 5);
            scale::SetDword(k, "TimeTable", 0xFFFFFF);
            RegCloseKey(k);
            BindScaleDestinations(path, n, destinations);
        }
    }
}

// Fills the root's store at scale. Returns the number of generated destination IDs.
inline int FillScaleStore(const zoltest::ProductRoot& root) {
    for (const char* key : {ZOL_KEY_AGENTEVENT, ZOL_KEY_SYSLOG}) {
        const std::string path = std::string("HKLM\\") + key;
        zoltest::run({root.bin("zolreg").string(), "delete", path, "/f"}, root.env());
    }
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    scale::Check(ZolRegBeginTransaction(), "ZolRegBeginTransaction");
    const int seeded = 10;  // built-in destination IDs of default.reg
    const int destinations = kScaleDestinations - seeded;
    AddScaleDestinations(destinations);
    int n = 0;
    AddScaleAgentEvents(destinations, n);
    AddScaleSyslogItems(destinations, n);
    scale::Check(ZolRegCommitTransaction(), "ZolRegCommitTransaction");
    ZolRegCloseStore();
    return destinations;
}

}  // namespace zolbench
