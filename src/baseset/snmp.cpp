// SNMP trap report: switching the report by SNMP on or off, the list of trap destinations and the
// dialog that adds one address, all through the report-settings library.
#include <newt.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "baseset/baseset.h"
#include "baseset/baseset_private.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

// ---- What the panel's buttons do ----

bool IsUnusableTrapAddress(std::string_view address) {
    return address == "0.0.0.0" || address == "255.255.255.255";
}

const char* AddTrapAddress(TrapPanelState& state, const std::string& address) {
    if (state.shown.size() >= TRAP_DEST_MAX)
        return "SNMP_TRAP_LIST_FULL_ID";
    if (std::find(state.shown.begin(), state.shown.end(), address) != state.shown.end())
        return "IDS_ERROR_MSG_EXIST";
    state.shown.push_back(address);
    state.added.push_back(address);
    return nullptr;
}

void ForgetTrapAddress(TrapPanelState& state, const std::string& address) {
    for (std::vector<std::string>* list : {&state.shown, &state.added}) {
        const auto it = std::find(list->begin(), list->end(), address);
        if (it != list->end())
            list->erase(it);
    }
}

namespace {

constexpr int kTrapListRows = 3;
constexpr int kTrapListWidth = 30;
constexpr int kAddressEntryWidth = 30;

enum SnmpId : int { kAddId = 1, kRemoveId };

// The list in the form the library's trap functions take: TRAP_DEST_MAX buffers of
// TRAP_DEST_SIZE bytes, all allocated and emptied.
class TrapBuffers {
  public:
    // False (after freeing those made) when memory runs out.
    bool allocate() {
        for (std::size_t i = 0; i < TRAP_DEST_MAX; ++i) {
            buffers_[i].reset(static_cast<char*>(std::calloc(TRAP_DEST_SIZE, 1)));
            if (buffers_[i] == nullptr) {
                ZOL_TRACE(TRACE_LEVEL_FAILURE, "malloc lpTrapDest[%zu] Failed", i);
                for (auto& buffer : buffers_)
                    buffer.reset();
                return false;
            }
            pointers_[i] = buffers_[i].get();
        }
        return true;
    }
    char** data() { return pointers_; }
    // The first `count` entries (a count the library reports outside the room is not trusted).
    std::vector<std::string> entries(int count) const {
        const int n = std::clamp(count, 0, TRAP_DEST_MAX);
        return {pointers_, pointers_ + n};
    }
    void fill(const std::vector<std::string>& list) {
        for (std::size_t i = 0; i < list.size() && i < TRAP_DEST_MAX; ++i)
            std::snprintf(pointers_[i], TRAP_DEST_SIZE, "%s", list[i].c_str());
    }

  private:
    std::unique_ptr<char, FreeDeleter> buffers_[TRAP_DEST_MAX];
    char* pointers_[TRAP_DEST_MAX] = {};
};

void Warning(const char* button, const char* textId) {
    msgWindow("Warning", button, CPGetText(textId, ReadString, ZOL_RcFileBuf));
}

void FillListbox(newtComponent listbox, const std::vector<std::string>& list) {
    zolui::listboxClear(listbox);
    for (std::size_t i = 0; i < list.size(); ++i)
        zolui::listboxAppendIndex(listbox, list[i], static_cast<int>(i));
    zolui::listboxSetCurrentIndex(listbox, 0);
}

// Reads the stored list; false (traced) when memory runs out or the library fails.
bool ReadTrapList(HMODULE lib, std::vector<std::string>& list) {
    auto buffers = std::make_unique<TrapBuffers>();
    if (!buffers->allocate()) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc lpTrapDest Failed,return %d.", -1);
        return false;
    }
    int count = 0;
    if (!GetTrapSetting(lib, &count, buffers->data())) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetTrapSetting() failed.return %d.", -1);
        return false;
    }
    list = buffers->entries(count);
    return true;
}

// Add: asks for an address (a full list is said first) and shows it in the list.
void AddPressed(HMODULE lib, TrapPanelState& state, newtComponent listbox) {
    if (state.shown.size() >= TRAP_DEST_MAX) {
        Warning(" ok ", "SNMP_TRAP_LIST_FULL_ID");
        return;
    }
    char address[TRAP_DEST_SIZE] = {};
    EnterIPpanel(lib, address);
    if (address[0] == '\0')
        return;
    if (const char* refusal = AddTrapAddress(state, address)) {
        // The box of a duplicate has always had the one-blank button.
        Warning(" ok", refusal);
        return;
    }
    zolui::listboxAppendIndex(listbox, address, static_cast<int>(state.shown.size()) - 1);
    zolui::listboxSetCurrentIndex(listbox, 0);
}

// Remove: the current address leaves the store at once, through the library. On an empty list
// the first (empty) buffer goes to the library, which refuses it. A refusal leaves the listbox
// empty until the panel is opened again, as it always has.
void RemovePressed(HMODULE lib, TrapPanelState& state, newtComponent listbox) {
    const int current = zolui::listboxCurrentIndex(listbox);
    const std::string address = current >= 0 && current < static_cast<int>(state.shown.size())
                                    ? state.shown[static_cast<std::size_t>(current)]
                                    : "";
    zolui::listboxClear(listbox);
    auto buffers = std::make_unique<TrapBuffers>();
    int count = static_cast<int>(state.shown.size());
    bool removed = buffers->allocate();
    if (removed) {
        buffers->fill(state.shown);
        removed = DelTrapSetting(lib, &count, address.c_str(), buffers->data()) != 0;
    }
    if (!removed) {
        ShowFuncCallErr("DelTrapSetting");
        return;
    }
    ForgetTrapAddress(state, address);
    FillListbox(listbox, state.shown);
}

// OK: the switch, then this visit's additions applied to the list as stored now; a failed write
// keeps the panel open.
zolui::Next SavePanel(HMODULE lib, const TrapPanelState& state, BaseData& record) {
    record.Enable = state.enabled ? 1 : 0;
    if (!PutBaseSetting(lib, &record)) {
        ShowFuncCallErr("PutBaseSetting");
        return zolui::Next::Stay;
    }
    if (!ApplyTrapSetting(lib, state.added, {})) {
        ShowFuncCallErr("ApplyTrapSetting");
        return zolui::Next::Stay;
    }
    return zolui::Next::Close;
}

// The switch, the list with its Add and Remove buttons, OK and Cancel, in focus order.
zolui::Grid BuildTrapPanel(zolui::Dialog& dialog, char& enableMark, const TrapPanelState& state,
                           newtComponent& listbox) {
    newtComponent enable = dialog.add(zolui::checkbox(-1, -1, MessageText("BASE_SUB_ENABLE_ID"),
                                                      enableMark, nullptr, &enableMark));
    newtComponent label = dialog.add(zolui::label(-1, -1, MessageText("BASE_TRAP_LABEL")));
    listbox = dialog.add(zolui::listbox(kTrapListRows, 0, kTrapListWidth));
    FillListbox(listbox, state.shown);
    newtComponent add =
        dialog.add(zolui::compactButton(-1, -1, MessageText("GPSET_BUTTON_ADD_ID")), kAddId);
    newtComponent remove =
        dialog.add(zolui::compactButton(-1, -1, MessageText("GPSET_BUTTON_REMOVE_ID")), kRemoveId);

    zolui::Grid listColumn(1, 2);
    listColumn.set(0, 0, label, {}, NEWT_ANCHOR_LEFT);
    listColumn.set(0, 1, listbox, {}, NEWT_ANCHOR_LEFT);
    zolui::Grid buttonColumn(1, 2);
    buttonColumn.set(0, 0, add, {.top = 1});
    buttonColumn.set(0, 1, remove, {.top = 1});
    zolui::Grid listRow(2, 1);
    listRow.set(0, 0, std::move(listColumn));
    listRow.set(1, 0, std::move(buttonColumn), {.left = 1});
    zolui::Grid grid(1, 3);
    grid.set(0, 0, enable, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(listRow), {.top = 1});
    grid.set(0, 2,
             dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                               {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                              3, 3),
             {.top = 2});
    return grid;
}

// The address entry's verdict: null when it may be added, else the message to show.
const char* AddressRefusal(const std::string& text, int validIP) {
    if (validIP != 1)
        return "IDS_ERR_INVALID_IPADDRESS2";
    if (IsUnusableTrapAddress(text))
        return "SNMP_TRAP_ADDRESS_ERR_ID";
    return nullptr;
}

}  // namespace

int EnterIPpanel(HMODULE lib, char* address) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    zolui::Dialog dialog;
    newtComponent label = dialog.add(zolui::label(-1, -1, MessageText("SUBBASE_IP_LABEL")));
    newtComponent entry = dialog.numberEntry("", kAddressEntryWidth, EntryIPFilter);
    zolui::Grid grid(1, 3);
    grid.set(0, 0, label, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, entry, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2,
             dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                               {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                              2, 2),
             {.top = 2});
    const std::string title = MessageText("SUBBASE_ADD_TITLE");
    dialog.open(grid, title);

    auto ok = [&] {
        const std::string text = zolui::entryText(entry);
        const int validIP = IPAddressCheck(lib, text.c_str());
        if (validIP == -1) {
            // Without the library's check no address is taken; the dialog closes empty.
            ZOL_TRACE(TRACE_LEVEL_ERROR, "GetProcAddress(AMBIMyIPCheck) Failed");
            return zolui::Next::Close;
        }
        if (const char* refusal = AddressRefusal(text, validIP)) {
            const std::string message = MessageText(refusal);
            msgWindow(title.c_str(), " ok ", message.c_str());
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s", message.c_str());
            return zolui::Next::Stay;
        }
        std::snprintf(address, TRAP_DEST_SIZE, "%s", text.c_str());
        return zolui::Next::Close;
    };
    dialog.run({{zolui::kOkId, ok}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}

int SubSNMPPanel(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    BaseRecordPtr record = NewBaseRecord(BASE_METHOD_SNMP);
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc CPBaseData3 Failed,return %d.", -1);
        return -1;
    }
    // Any result but 0 means the record was not read (a missing function, no such method, a
    // store error): the panel never offers to write a record it could not read.
    if (InitBaseSetting(lib, record.get()) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitBaseSetting() failed.return %d.", -1);
        return -1;
    }
    TrapPanelState state;
    if (!ReadTrapList(lib, state.shown))
        return -1;

    // Build.
    char enableMark = record->Enable != 0 ? '*' : ' ';
    zolui::Dialog dialog;
    newtComponent listbox = nullptr;
    dialog.open(BuildTrapPanel(dialog, enableMark, state, listbox), MessageText("BASE_SNMP_TITLE"));
    // The whole terminal is drawn again before every run: the panel has always been drawn so,
    // which also repairs a screen another program wrote over.
    dialog.redrawBeforeEachRun();

    // Handlers and save.
    auto stay = [](auto action) {
        return [action] {
            action();
            return zolui::Next::Stay;
        };
    };
    dialog.run({
        {kAddId, stay([&] { AddPressed(lib, state, listbox); })},
        {kRemoveId, stay([&] { RemovePressed(lib, state, listbox); })},
        {zolui::kOkId,
         [&] {
             state.enabled = enableMark == '*';
             return SavePanel(lib, state, *record);
         }},
    });
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0");
    return 0;
}
