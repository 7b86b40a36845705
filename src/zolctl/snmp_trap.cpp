// The SNMP method's test report. The trap is the product's test notification under net-snmp's
// experimental arc (NET-SNMP-MIB::netSnmpPlaypen, 1.3.6.1.4.1.8072.9999): trap OID
// .9999.1.1, with one text variable .9999.1.2 saying which destination ID was tested from where.
#include "zolctl/snmp_trap.h"

#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "frame/rptset_calls.h"

#ifdef ZOLCTL_HAVE_NETSNMP
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#endif

namespace zolctl {

namespace {

constexpr unsigned kTrapPort = 162;

struct Target {
    std::string address;
    unsigned port = kTrapPort;
};

std::vector<Target> TrapTargets(HMODULE rptset, const Destination& d) {
    if (!d.address.empty())
        return {{d.address, d.port}};
    std::vector<std::vector<char>> buffers(TRAP_DEST_MAX, std::vector<char>(TRAP_DEST_SIZE, '\0'));
    std::vector<char*> list;
    for (auto& b : buffers)
        list.push_back(b.data());
    int count = 0;
    std::vector<Target> targets;
    if (GetTrapSetting(rptset, &count, list.data()) != 0) {
        for (int i = 0; i < count && i < TRAP_DEST_MAX; ++i)
            targets.push_back({list[i], kTrapPort});
    }
    return targets;
}

std::string Community(HMODULE rptset) {
    BaseData record{};
    std::snprintf(record.MethodName, sizeof record.MethodName, "%s", BASE_METHOD_SNMP);
    if (InitBaseSetting(rptset, &record) != 0 || record.Option[0] == '\0')
        return "public";
    return record.Option;
}

#ifdef ZOLCTL_HAVE_NETSNMP

// net-snmp's library state for one run: no configuration files or MIBs read (the trap needs
// none), shut down on every path out.
class SnmpLibrary {
  public:
    SnmpLibrary() {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE, 1);
        netsnmp_set_mib_directory("");
        init_snmp("zolctl");
    }
    ~SnmpLibrary() { snmp_shutdown("zolctl"); }
    SnmpLibrary(const SnmpLibrary&) = delete;
    SnmpLibrary& operator=(const SnmpLibrary&) = delete;
};

class SnmpSession {
  public:
    SnmpSession(const std::string& peer, const std::string& community) : peer_(peer) {
        netsnmp_session config;
        snmp_sess_init(&config);
        config.version = SNMP_VERSION_2c;
        config.peername = peer_.data();
        config.community = reinterpret_cast<u_char*>(const_cast<char*>(community.c_str()));
        config.community_len = community.size();
        session_ = snmp_open(&config);
    }
    ~SnmpSession() {
        if (session_ != nullptr)
            snmp_close(session_);
    }
    SnmpSession(const SnmpSession&) = delete;
    SnmpSession& operator=(const SnmpSession&) = delete;
    netsnmp_session* get() const { return session_; }

  private:
    std::string peer_;
    netsnmp_session* session_ = nullptr;
};

std::string TrapText(const Destination& d) {
    char host[256] = {};
    ::gethostname(host, sizeof host - 1);
    return "Test report from zolctl on " + std::string(host) + " to destination ID " + d.id;
}

// One trap: empty when it was handed to the network, else why not.
std::string SendTrap(const Target& target, const std::string& community, const std::string& text) {
    SnmpSession session("udp:" + target.address + ":" + std::to_string(target.port), community);
    if (session.get() == nullptr)
        return "cannot open an SNMP session to " + target.address;
    netsnmp_pdu* pdu = snmp_pdu_create(SNMP_MSG_TRAP2);
    const oid upTime[] = {1, 3, 6, 1, 2, 1, 1, 3, 0};
    const oid trapOid[] = {1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};
    const oid textOid[] = {1, 3, 6, 1, 4, 1, 8072, 9999, 1, 2};
    if (snmp_add_var(pdu, upTime, OID_LENGTH(upTime), 't', "0") != 0 ||
        snmp_add_var(pdu, trapOid, OID_LENGTH(trapOid), 'o', "1.3.6.1.4.1.8072.9999.1.1") != 0 ||
        snmp_add_var(pdu, textOid, OID_LENGTH(textOid), 's', text.c_str()) != 0) {
        snmp_free_pdu(pdu);
        return "the trap could not be built";
    }
    if (snmp_send(session.get(), pdu) == 0) {
        snmp_free_pdu(pdu);
        return "the trap to " + target.address + " could not be sent";
    }
    return {};
}

#endif

}  // namespace

TrapResult SendTestTraps(HMODULE rptset, const Destination& d) {
    const std::vector<Target> targets = TrapTargets(rptset, d);
    if (targets.empty())
        return {false, "not sent: no trap destination is set"};
#ifdef ZOLCTL_HAVE_NETSNMP
    SnmpLibrary library;
    const std::string community = Community(rptset);
    std::string sentTo;
    for (const Target& target : targets) {
        const std::string failure = SendTrap(target, community, TrapText(d));
        if (!failure.empty())
            return {false, "not sent: " + failure};
        sentTo += (sentTo.empty() ? "" : ", ") + target.address + ":" + std::to_string(target.port);
    }
    return {true, "SNMPv2c trap sent to " + sentTo};
#else
    (void)Community;
    return {false, "not sent: this zolctl was built without net-snmp, so it sends no traps"};
#endif
}

}  // namespace zolctl
