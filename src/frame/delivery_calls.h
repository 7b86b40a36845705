// Calls of the remote report service's delivery entries: "mailrpt.dll" "AMEIMain", "dialsvc.dll"
// "AM_Dll_ALV_Vnt", "vntmgr.dll" "AMVntManReport_E" and the HTTPS library's "GUIVntReport". Every
// entry has the signature of GUIVntReport_fn: it takes the address of an error text, which it
// may set to a malloc'd text, and the kind of report, and answers 0 sent, 1 may be tried again,
// 2 and 3 failures that are only logged, anything else a failure with its error text.
#pragma once

#include <zolwin.h>

#include <cstdint>
#include <string>

#include "vantrelpkg_api.h"

using DeliveryEntry_fn = GUIVntReport_fn;

// Kinds of report the settings screens send: a test to the primary destination (number or URL)
// and one to the secondary.
inline constexpr const char* kTestPrimaryKind = "T1";
inline constexpr const char* kTestSecondaryKind = "T2";

// The delivery entry's outcomes the program tells apart.
inline constexpr uint32_t kDeliverySent = 0;
inline constexpr uint32_t kDeliveryRetry = 1;

// What one call of a delivery entry gave.
struct DeliveryOutcome {
    enum class Status { NotLoaded, NoEntry, Called };
    Status status = Status::NotLoaded;
    uint32_t result = 0;    // the entry's answer, when called
    std::string errorText;  // the library's own error text, empty when it gave none
};

// Loads "%ZolDir%/lib/<library>", calls its entry with kind and releases both the error text
// and the library before it returns.
DeliveryOutcome CallDeliveryEntry(const char* library, const char* entry, const char* kind);

// The same with a library the program holds already (the HTTPS library of the package); a null
// handle is NotLoaded.
DeliveryOutcome CallLoadedDeliveryEntry(HMODULE lib, const char* entry, const char* kind);
