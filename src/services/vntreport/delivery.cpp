// Sending a report through the selected method's delivery library.
#include "delivery.h"

#include <zolwin.h>

#include <array>
#include <string>

#include "records.h"
#include "report.h"
#include "vantrelpkg_api.h"

namespace vntreport {
namespace {

constexpr std::array<DeliveryLibrary, 4> kLibraries = {{
    {VANTREL_INTERNETMAIL, "mailrpt.dll", "AMEIMain"},
    {VANTREL_DIALUP, "dialsvc.dll", "AM_Dll_ALV_Vnt"},
    {VANTREL_TRANSTOMANAGER, "vntmgr.dll", "AMVntManReport_E"},
    {VANTREL_HTTPS, "vnthttps.dll", "GUIVntReport"},
}};
static_assert(kLibraries.size() == VANTREL_HTTPS + 1);

constexpr std::size_t kLibraryNameSize = 128;

// A failure before any delivery library ran: its text and the alert-log line.
uint32_t NotSent(std::string_view kind, const char* method, char** errorText,
                 const std::string& text) {
    Report report;
    report.kind = std::string(kind);
    return Finish(errorText, &report, method, kFailed, text);
}

}  // namespace

std::span<const DeliveryLibrary> DeliveryLibraries() {
    return kLibraries;
}

const DeliveryLibrary* DeliveryByFile(std::string_view file) {
    for (const DeliveryLibrary& library : kLibraries) {
        if (file == library.file)
            return &library;
    }
    return nullptr;
}

uint32_t SendBySelectedMethod(std::string_view kind, char** errorText) {
    char name[kLibraryNameSize] = {};
    {
        const ProductLibrary vntutil("vntutil.dll");
        auto* selected = vntutil.Entry<VNTGetSelectedDllName_fn>("VNTGetSelectedDllName");
        if (selected == nullptr)
            return NotSent(
                kind, "unknown", errorText,
                vntutil.loaded() ? "vntutil.dll has no VNTGetSelectedDllName" : vntutil.error());
        if (selected(name, sizeof name) != 0)
            return NotSent(kind, "unknown", errorText,
                           "The delivery method stored for the service is not valid.");
    }
    const DeliveryLibrary* delivery = DeliveryByFile(name);
    if (delivery == nullptr)
        return NotSent(kind, name, errorText, std::string("Unknown delivery library ") + name);
    const ProductLibrary library(delivery->file);
    auto* send = library.Entry<GUIVntReport_fn>(delivery->entry);
    if (send == nullptr)
        return NotSent(kind, delivery->file, errorText,
                       library.loaded()
                           ? std::string(delivery->file) + " has no entry " + delivery->entry
                           : library.error());
    const std::string kindText(kind);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "report %s through %s %s", kindText.c_str(), delivery->file,
              delivery->entry);
    return send(errorText, kindText.c_str());
}

}  // namespace vntreport
