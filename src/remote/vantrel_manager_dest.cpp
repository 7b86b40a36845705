// The manager the remote report service reports through (via-manager method): its address and
// port, checked as the manager's port range demands and stored together in one library call. A
// host name is stored as its address.
#include <string>

#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/screens.h"
#include "remote/vantrel_dest.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

constexpr int kAddressWidth = 30;
constexpr int kPortWidth = 7;
// Longest address the screen takes, in bytes.
constexpr std::size_t kMaxHostLength = 256;
// A port text that cannot be a port stands for this one, which the range check refuses.
constexpr std::int32_t kNoPort = 0;
constexpr std::uint32_t kMaxPort = 65535;
constexpr const char* kErrorTitle = " Error ";

enum ControlId : int { kDefaultId = 1 };

std::string Text(const char* id) {
    return MessageText(id);
}

struct ManagerForm {
    newtComponent address = nullptr, port = nullptr;
};

ManagerForm OpenManagerForm(zolui::Dialog& dialog, const std::string& ip, std::uint32_t port) {
    ManagerForm form;
    form.address = dialog.add(zolui::entry(-1, -1, ip, kAddressWidth, NEWT_FLAG_SCROLL));
    form.port =
        dialog.add(zolui::entry(-1, -1, std::to_string(port), kPortWidth, NEWT_FLAG_SCROLL));
    dialog.form().setFilter(form.port, [](int ch, int cursor) {
        return EntryNumricFilter(nullptr, nullptr, ch, cursor);
    });
    zolui::Grid portRow(2, 1);
    portRow.set(0, 0, form.port);
    portRow.set(1, 0, dialog.add(zolui::button(-1, -1, Text("BUTTON_DEFAULT_ID")), kDefaultId),
                {.left = 4});
    zolui::Grid grid(1, 6);
    grid.set(0, 0, dialog.add(zolui::label(-1, -1, Text("FWMANAGER_BAST_TEXT_ID"))), {},
             NEWT_ANCHOR_LEFT);
    grid.set(0, 1, dialog.add(zolui::label(-1, -1, Text("IDSET_INBAND_IP_ID"))),
             {.left = 1, .top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, form.address, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 3, dialog.add(zolui::label(-1, -1, Text("IDSET_INBAND_PORT_ID"))),
             {.left = 1, .top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 4, std::move(portRow), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 5,
             dialog.buttonRow({{Text("BUTTON_OK_ID"), zolui::kOkId},
                               {Text("BUTTON_CANCEL_ID"), zolui::kCancelId}}),
             {.top = 1});
    dialog.open(grid, Text("FWMANAGERL_DEST_TITLE_ID"));
    return form;
}

}  // namespace

const char* CheckViaManagerEntries(const ViaManagerEntries& entries, HMODULE lib,
                                   ViaManagerValues* out) {
    if (entries.address.empty())
        return "FWMANAGER_IP_EMPTY_ID";
    if (entries.port.empty())
        return "FWMANAGER_PORT_EMPTY_ID";
    if (entries.address.size() > kMaxHostLength) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "Host too long:%s", entries.address.c_str());
        return "IDS_ERR_HOST_TOO_LONG";
    }
    const std::uint32_t port = checks::ParseDecimal(entries.port).value_or(kNoPort);
    const std::int32_t checked = port > kMaxPort ? kNoPort : static_cast<std::int32_t>(port);
    char ip[kMaxHostLength + 1] = {};
    switch (CheckPortAndIP(lib, checked, entries.address.c_str(), ip, 1)) {
        case 0:
            break;
        case -1:
            return "IDS_ERR_NOT_LANGE_PORTNUMBER";
        default:
            return "IDS_ERR_INVALID_IPADDRESS";
    }
    out->ip = ip;
    out->port = port;
    return nullptr;
}

int ViaFWManagerSet(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p", rptsetLib);
    char ip[VNT_MAILTO_SIZE] = {};
    if (ReadManagerIP(rptsetLib, ip).unbound()) {
        ShowFuncCallErr("GetProcAddress for GetManagerIP");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetManagerIP is not bound.return -1.");
        return -1;
    }
    // No manager stored yet leaves the address empty for the administrator to fill in.
    std::uint32_t port = DEST_DEFAULT_PORT;
    if (!ReadManagerPort(rptsetLib, &port)) {
        ShowFuncCallErr("GetManagerPort");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetManagerPort failed.return -1.");
        return -1;
    }
    zolui::Dialog dialog;
    const ManagerForm form = OpenManagerForm(dialog, ip, port);
    auto useDefault = [&] {
        zolui::setEntryText(form.port, std::to_string(DEST_DEFAULT_PORT));
        return zolui::Next::Stay;
    };
    auto ok = [&] {
        const ViaManagerEntries entries{zolui::entryText(form.address),
                                        zolui::entryText(form.port)};
        ViaManagerValues values;
        if (const char* refusal = CheckViaManagerEntries(entries, rptsetLib, &values)) {
            const std::string text = Text(refusal);
            msgWindow(kErrorTitle, " ok ", text.c_str());
            return zolui::Next::Stay;
        }
        if (!WriteManagerAddress(rptsetLib, values.ip.c_str(), values.port)) {
            ShowFuncCallErr("SetManagerAddress");
            return zolui::Next::Stay;
        }
        return zolui::Next::Close;
    };
    const int closedBy = dialog.run({{kDefaultId, useDefault}, {zolui::kOkId, ok}});
    const int saved = closedBy == zolui::kOkId ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", saved);
    return saved;
}
