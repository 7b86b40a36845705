// The link to the manager of the via-manager method: one TCP connection per report, the frame of
// wire.h sent, one answer line read.
#pragma once

#include <cstdint>
#include <string>

#include "report.h"

namespace vntmgr {

struct ManagerTarget {
    std::string address;  // dotted IPv4 address
    uint32_t port = 0;
};

// The outcome in the delivery convention: 0 acknowledged, 1 may be tried again (the manager
// did not answer), 4 refused, with a text for the administrator.
using Delivery = vntreport::Outcome;

// Sends frame to the manager and waits for its answer to a report of the given kind.
Delivery SendToManager(const ManagerTarget& target, const std::string& frame,
                       const std::string& kind);

}  // namespace vntmgr
