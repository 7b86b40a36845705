// One call through a Hayes modem on a serial line: reset, dial, the report in the frame of
// wire.h, the service centre's answer, hang up.
#pragma once

#include <cstdint>
#include <string>

#include "report.h"

namespace dialsvc {

struct DialPlan {
    std::string device;  // the serial line, e.g. "/dev/ttyS0"
    bool pulse = false;  // ATDP instead of ATDT
    std::string number;  // as stored; only what a modem dials is sent (digits, '*', '#', ',')
};

// 0 sent, 1 may be tried again, 4 refused; localFault when the line itself failed, so that
// another number would fail the same way.
using Delivery = vntreport::Outcome;

// The dial string of a stored number: its digits and the modem's own dial characters.
std::string DialString(const std::string& number);

// Dials plan.number on plan.device and sends frame, a report of the given kind.
Delivery DialAndSend(const DialPlan& plan, const std::string& frame, const std::string& kind);

}  // namespace dialsvc
