// The SNMP method's test report: an SNMPv2c trap sent through net-snmp's library.
#pragma once

#include <zolwin.h>

#include <string>

#include "zolctl/zolctl.h"

namespace zolctl {

struct TrapResult {
    bool sent = false;
    std::string text;  // what happened, for the administrator
};

// A destination with an address of its own gets the trap there, at its port; any other SNMP
// destination gets one trap per address of the trap destination list ("GetTrapDest"), at UDP
// port 162. The community is the "MANAGER (SNMP)" method's option ("public" when empty).
TrapResult SendTestTraps(HMODULE rptset, const Destination& d);

}  // namespace zolctl
