// vntmgr.dll: the remote report service's reports sent via the manager. The manager's address
// and port are the via-manager settings of rptset.dll; the state of the last report is kept in
// ManVntStatus (1 acknowledged by the manager, 0 not) beside them.
#include <zolwin.h>

#include <cstring>
#include <optional>
#include <string>
#include <type_traits>

#include "manager_link.h"
#include "regpaths.h"
#include "report.h"
#include "rptset_api.h"
#include "store.h"
#include "vantrelpkg_api.h"
#include "wire.h"

namespace {

constexpr const char* kMethod = "TransToManager";
constexpr const char* kStatusValue = "ManVntStatus";
constexpr uint32_t kRefused = 4;

// The manager of the via-manager settings, or nullopt with the administrator's text.
std::optional<vntmgr::ManagerTarget> ManagerFromSettings(std::string* why) {
    const vntreport::ProductLibrary rptset("rptset.dll");
    auto* getIp = rptset.Entry<GetManagerIP_fn>("GetManagerIP");
    auto* getPort = rptset.Entry<GetManagerPort_fn>("GetManagerPort");
    if (getIp == nullptr || getPort == nullptr) {
        *why = "the via-manager settings cannot be read (rptset.dll)";
        return std::nullopt;
    }
    char ip[VNT_MAILTO_SIZE] = {};
    uint32_t port = 0;
    if (getIp(ip) != 0 || ip[0] == '\0') {
        *why = "no manager address is set for the via-manager method";
        return std::nullopt;
    }
    if (getPort(&port) != 0) {
        *why = "the manager's port cannot be read";
        return std::nullopt;
    }
    return vntmgr::ManagerTarget{ip, port};
}

void KeepStatus(bool acknowledged) {
    const DWORD status = acknowledged ? 1 : 0;
    if (vntcore::WriteDword(ZOL_KEY_VANTREL_ADDRESS, kStatusValue, status) != ERROR_SUCCESS)
        ZOL_TRACE(TRACE_LEVEL_ERROR, "%s=%u could not be stored.", kStatusValue, status);
}

vntreport::Outcome Deliver(const vntreport::Report& report) {
    std::string why;
    const std::optional<vntmgr::ManagerTarget> target = ManagerFromSettings(&why);
    vntreport::Outcome outcome{kRefused, why};
    if (target) {
        const std::string frame =
            vntwire::Frame(report.kind, {{"Subject", report.subject}}, report.body);
        outcome = vntmgr::SendToManager(*target, frame, report.kind);
    }
    KeepStatus(outcome.result == vntreport::kSent);
    return outcome;
}

}  // namespace

extern "C" ZOLWIN_API uint32_t AMVntManReport_E(char** errorText, const char* kind) {
    return vntreport::RunDelivery(errorText, kind, kMethod, Deliver);
}
static_assert(std::is_same_v<decltype(AMVntManReport_E), GUIVntReport_fn>);
