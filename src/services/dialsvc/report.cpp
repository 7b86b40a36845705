// dialsvc.dll: the remote report service's reports sent by dial-up. The line device, the two
// numbers, tone or pulse and the user ID are the dial-up settings of rptset.dll. "T1" dials the
// primary number only, "T2" the secondary only; every other report dials the primary and, when
// that call fails, the secondary.
#include <zolwin.h>

#include <optional>
#include <string>
#include <type_traits>

#include "modem.h"
#include "report.h"
#include "rptset_api.h"
#include "vantrelpkg_api.h"
#include "wire.h"

namespace {

constexpr const char* kMethod = "Dial-up";
constexpr uint32_t kRefused = 4;

std::optional<VntDialData> DialSettings(std::string* why) {
    const vntreport::ProductLibrary rptset("rptset.dll");
    auto* get = rptset.Entry<AMGetDialUpSetting_fn>("AMGetDialUpSetting");
    VntDialData settings{};
    if (get == nullptr || get(&settings) != 0) {
        *why = "the dial-up settings cannot be read";
        return std::nullopt;
    }
    return settings;
}

dialsvc::Delivery Deliver(const vntreport::Report& report, const VntDialData& s) {
    if (s.Device[0] == '\0')
        return {kRefused, "no modem line device is set for dial-up reports", true};
    const std::string frame =
        vntwire::Frame(report.kind, {{"User", s.UserID}, {"Subject", report.subject}}, report.body);
    const bool pulse = s.DialMode == VNT_DIAL_MODE_PULSE;
    std::string numbers[] = {s.PhoneNo1, s.PhoneNo2};
    if (report.kind == "T2" && numbers[1].empty())
        return {kRefused, "no secondary number is set for dial-up reports"};
    if (report.kind == "T2")
        numbers[0].swap(numbers[1]);
    if (report.kind == "T1" || report.kind == "T2")
        numbers[1].clear();
    if (numbers[0].empty())
        return {kRefused, "no number is set for dial-up reports"};
    dialsvc::Delivery first =
        dialsvc::DialAndSend({s.Device, pulse, numbers[0]}, frame, report.kind);
    if (first.result == 0 || first.localFault || numbers[1].empty())
        return first;
    ZOL_TRACE(TRACE_LEVEL_ERROR, "primary number failed (%s); dialling the secondary.",
              first.text.c_str());
    dialsvc::Delivery second =
        dialsvc::DialAndSend({s.Device, pulse, numbers[1]}, frame, report.kind);
    if (second.result != 0) {
        second.result = first.result == 1 && second.result == 1 ? 1 : kRefused;
        second.text = first.text + "; " + second.text;
    }
    return second;
}

}  // namespace

extern "C" ZOLWIN_API uint32_t AM_Dll_ALV_Vnt(char** errorText, const char* kind) {
    return vntreport::RunDelivery(errorText, kind, kMethod, [](const vntreport::Report& report) {
        std::string why;
        const std::optional<VntDialData> settings = DialSettings(&why);
        return settings ? Deliver(report, *settings) : dialsvc::Delivery{kRefused, why};
    });
}
static_assert(std::is_same_v<decltype(AM_Dll_ALV_Vnt), GUIVntReport_fn>);
