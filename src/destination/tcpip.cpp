// The method screens of destination IDs that report to the management console over TCP/IP: in
// band over the network, and out of band by dialling in (telephone number, user, password). A
// host name is stored as its address; the password is entered hidden, handed to the library as
// typed (which stores it encoded) and wiped wherever this program held a copy.
#include <cstring>
#include <string>

#include "destination/destination.h"
#include "frame/checks.h"
#include "frame/msgfile.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

constexpr int kAddressWidth = 30;
constexpr int kPortWidth = 7;
constexpr int kDialWidth = 20;
// Digits of the port entry that are read.
constexpr std::size_t kPortDigits = 9;
constexpr const char* kErrorTitle = " Error ";

enum ControlId : int { kDefaultId = 1 };

std::string Text(const char* id) {
    return MessageText(id);
}

// Wipes a password entry's own buffer before the form frees it: newt frees it without.
class EntryWiper {
  public:
    explicit EntryWiper(newtComponent entry) : entry_(entry) {}
    ~EntryWiper() {
        if (char* value = newtEntryGetValue(entry_); value != nullptr)
            explicit_bzero(value, std::strlen(value));
    }
    EntryWiper(const EntryWiper&) = delete;
    EntryWiper& operator=(const EntryWiper&) = delete;

  private:
    newtComponent entry_;
};

// The entries both screens have, and the out-of-band screen's dial-in entries (null in band).
struct TcpipForm {
    newtComponent address = nullptr, port = nullptr;
    newtComponent phone = nullptr, user = nullptr, password = nullptr;
};

void NumericOnly(zolui::Dialog& dialog, newtComponent entry) {
    dialog.form().setFilter(
        entry, [](int ch, int cursor) { return EntryNumricFilter(nullptr, nullptr, ch, cursor); });
}

// The address label and entry, one column in.
zolui::Grid AddressRows(zolui::Dialog& dialog, TcpipForm& form, const DestData& record,
                        const char* labelId) {
    zolui::Grid rows(1, 2);
    rows.set(0, 0, dialog.add(zolui::label(-1, -1, Text(labelId))), {.left = 1}, NEWT_ANCHOR_LEFT);
    form.address =
        dialog.add(zolui::entry(-1, -1, record.Address, kAddressWidth, NEWT_FLAG_SCROLL));
    rows.set(0, 1, form.address, {}, NEWT_ANCHOR_LEFT);
    return rows;
}

// The port label, and under it the port entry with the Default button four columns to its right.
zolui::Grid PortRows(zolui::Dialog& dialog, TcpipForm& form, const DestData& record,
                     const char* labelId) {
    form.port =
        dialog.add(zolui::entry(-1, -1, std::to_string(record.Port), kPortWidth, NEWT_FLAG_SCROLL));
    NumericOnly(dialog, form.port);
    zolui::Grid entryRow(2, 1);
    entryRow.set(0, 0, form.port);
    entryRow.set(1, 0, dialog.add(zolui::button(-1, -1, Text("BUTTON_DEFAULT_ID")), kDefaultId),
                 {.left = 4});
    zolui::Grid rows(1, 2);
    rows.set(0, 0, dialog.add(zolui::label(-1, -1, Text(labelId))), {.left = 1}, NEWT_ANCHOR_LEFT);
    rows.set(0, 1, std::move(entryRow), {}, NEWT_ANCHOR_LEFT);
    return rows;
}

// The out-of-band screen's heading and its three dial-in rows.
zolui::Grid DialRows(zolui::Dialog& dialog, TcpipForm& form, const DestData& record) {
    form.phone = dialog.add(zolui::entry(-1, -1, record.Phone, kDialWidth, NEWT_FLAG_SCROLL));
    NumericOnly(dialog, form.phone);
    form.user = dialog.add(zolui::entry(-1, -1, record.User, kDialWidth, NEWT_FLAG_SCROLL));
    form.password = dialog.add(
        zolui::entry(-1, -1, record.Password, kDialWidth, NEWT_FLAG_SCROLL | NEWT_FLAG_PASSWORD));
    const struct {
        const char* labelId;
        newtComponent entry;
    } rows[] = {{"IDSET_OUTBAND_ENTRY_ID", form.phone},
                {"IDSET_OUTBAND_USER_ID", form.user},
                {"IDSET_OUTBAND_PASSWD_ID", form.password}};
    zolui::Grid table(2, 3);
    for (int i = 0; i < 3; ++i) {
        table.set(0, i, dialog.add(zolui::label(-1, -1, Text(rows[i].labelId))), {},
                  NEWT_ANCHOR_LEFT);
        table.set(1, i, rows[i].entry, {.left = 1}, NEWT_ANCHOR_LEFT);
    }
    zolui::Grid block(1, 2);
    block.set(0, 0, dialog.add(zolui::label(-1, -1, Text("IDSET_OUTBAND_LABEL_ID"))), {.left = 1},
              NEWT_ANCHOR_LEFT);
    block.set(0, 1, std::move(table), {}, NEWT_ANCHOR_LEFT);
    return block;
}

// Runs either screen once its form is open: Default sets the port at once (kept in the record
// even when the screen is then cancelled), OK checks and stores.
BOOL RunTcpipForm(zolui::Dialog& dialog, const TcpipForm& form, DestData* record, HMODULE lib,
                  int status) {
    auto useDefault = [&] {
        record->Port = DEST_DEFAULT_PORT;
        zolui::setEntryText(form.port, std::to_string(DEST_DEFAULT_PORT));
        return zolui::Next::Stay;
    };
    auto ok = [&] {
        TcpipEntries entries;
        entries.outOfBand = form.password != nullptr;
        entries.address = zolui::entryText(form.address);
        entries.port = zolui::entryText(form.port);
        if (entries.outOfBand) {
            entries.phone = zolui::entryText(form.phone);
            entries.user = zolui::entryText(form.user);
            entries.password = zolui::entryText(form.password);
        }
        if (const Refusal refusal = ApplyTcpipEntries(entries, lib, *record)) {
            const std::string text = RefusalText(refusal, Text);
            msgWindow(kErrorTitle, " ok ", text.c_str());
            return zolui::Next::Stay;
        }
        // A refused write has shown its message; the values stay for another try.
        if (status == 1 && !PutDestSetting(record, lib))
            return zolui::Next::Stay;
        return zolui::Next::Close;
    };
    const int closedBy = dialog.run({{kDefaultId, useDefault}, {zolui::kOkId, ok}});
    return closedBy == zolui::kOkId ? TRUE : FALSE;
}

zolui::Grid OkCancel(zolui::Dialog& dialog, int gap) {
    return dialog.buttonRow(
        {{Text("BUTTON_OK_ID"), zolui::kOkId}, {Text("BUTTON_CANCEL_ID"), zolui::kCancelId}}, gap);
}

}  // namespace

TcpipEntries::~TcpipEntries() {
    explicit_bzero(password.data(), password.size());
}

Refusal ApplyTcpipEntries(const TcpipEntries& entries, HMODULE lib, DestData& record) {
    if (entries.address.empty())
        return {"FWMANAGER_IP_EMPTY_ID", {}};
    if (entries.port.empty())
        return {"FWMANAGER_PORT_EMPTY_ID", {}};
    if (entries.address.size() > kMaxHostLength) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "Host too long:%s", entries.address.c_str());
        return {"IDS_ERR_HOST_TOO_LONG", {}};
    }
    char ip[kMaxHostLength + 1] = {};
    if (CheckPortAndIP(lib, 0, entries.address.c_str(), ip, 0) != 0)
        return {"IDS_ERR_INVALID_IPADDRESS", {}};
    CopyField(record.Address, sizeof record.Address, ip);
    // The port is not range-checked on these screens; the entry takes digits only.
    record.Port =
        checks::ParseDecimal(std::string_view(entries.port).substr(0, kPortDigits)).value_or(0);
    if (entries.outOfBand) {
        CopyField(record.User, sizeof record.User, entries.user);
        CopyField(record.Password, sizeof record.Password, entries.password);
        CopyField(record.Phone, sizeof record.Phone, entries.phone);
    }
    return {};
}

BOOL InBandSetting(DestData* record, HMODULE lib, int status) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p status=%d", lib, status);
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return FALSE.");
        return FALSE;
    }
    zolui::Dialog dialog;
    TcpipForm form;
    zolui::Grid grid(1, 3);
    grid.set(0, 0, AddressRows(dialog, form, *record, "IDSET_INBAND_IP_ID"), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, PortRows(dialog, form, *record, "IDSET_INBAND_PORT_ID"), {.top = 1},
             NEWT_ANCHOR_LEFT);
    grid.set(0, 2, OkCancel(dialog, 3), {.top = 1});
    dialog.open(grid, Text("TITTLE_INBAND_ID"));
    const BOOL saved = RunTcpipForm(dialog, form, record, lib, status);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %s.", saved ? "TRUE" : "FALSE");
    return saved;
}

BOOL OutofBandSetting(DestData* record, HMODULE lib, int status) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p status=%d", lib, status);
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return FALSE.");
        return FALSE;
    }
    zolui::Dialog dialog;
    TcpipForm form;
    zolui::Grid grid(1, 4);
    grid.set(0, 0, AddressRows(dialog, form, *record, "IDSET_OUTBAND_IP_ID"), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, DialRows(dialog, form, *record), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, PortRows(dialog, form, *record, "IDSET_OUTBAND_PORT_ID"), {.top = 1},
             NEWT_ANCHOR_LEFT);
    grid.set(0, 3, OkCancel(dialog, 4), {.top = 1});
    // Declared after the dialog: the entry's buffer is wiped before the form frees it.
    const EntryWiper wiper(form.password);
    dialog.open(grid, Text("TITTLE_OUTBAND_ID"));
    const BOOL saved = RunTcpipForm(dialog, form, record, lib, status);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %s.", saved ? "TRUE" : "FALSE");
    return saved;
}
