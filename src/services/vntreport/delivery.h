// The delivery libraries of the remote report service, by method, and a report sent through the
// library of the method selected in the store. vntutil.dll answers which library that is
// (VNTGetSelectedDllName) from this same table.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vntreport {

struct DeliveryLibrary {
    uint32_t method;    // VANTREL_INTERNETMAIL ... VANTREL_HTTPS
    const char* file;   // library file in the product's lib folder
    const char* entry;  // its report entry, of type GUIVntReport_fn
};

// Indexed by the method number.
std::span<const DeliveryLibrary> DeliveryLibraries();
// The library of a file name, or null.
const DeliveryLibrary* DeliveryByFile(std::string_view file);

// Sends a report of kind through the library that vntutil.dll's VNTGetSelectedDllName names:
// the delivery entry's result (0 sent, 1 may be tried again, ...) and its text in *errorText
// (malloc'd). When the library or its entry cannot be reached, 4 with a text saying which, and
// the alert-log line is written here (otherwise the delivery library writes it).
uint32_t SendBySelectedMethod(std::string_view kind, char** errorText);

}  // namespace vntreport
