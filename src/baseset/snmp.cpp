// SNMP trap report: switching the report by SNMP on or off, the list of trap destinations and the
// dialog that adds one address, all through the report-settings library.
#include <newt.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "baseset/baseset.h"
#include "baseset/baseset_private.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "ui/toolkit.h"

namespace {

constexpr int kTrapListRows = 3;
constexpr int kTrapListWidth = 30;
constexpr int kAddressEntryWidth = 30;

enum SnmpId : int { kOkId = 1, kCancelId, kAddId, kRemoveId };

// The destination list as the library fills it: TRAP_DEST_MAX buffers of TRAP_DEST_SIZE bytes.
class TrapList {
  public:
    // Allocates and empties every buffer; false (after freeing those made) when memory runs out.
    bool allocate() {
        for (std::size_t i = 0; i < buffers_.size(); ++i) {
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
    char** data() { return pointers_.data(); }
    char* at(int i) { return pointers_[static_cast<std::size_t>(i)]; }
    bool contains(const char* address) const {
        for (int i = 0; i < count; ++i) {
            if (std::strcmp(pointers_[static_cast<std::size_t>(i)], address) == 0)
                return true;
        }
        return false;
    }

    // A count the library reports outside the list's room is never trusted for indexing.
    void clampCount() { count = std::clamp(count, 0, TRAP_DEST_MAX); }

    int count = 0;

  private:
    std::array<std::unique_ptr<char, FreeDeleter>, TRAP_DEST_MAX> buffers_;
    std::array<char*, TRAP_DEST_MAX> pointers_{};
};

void Warning(const char* button, const char* textId) {
    msgWindow("Warning", button, CPGetText(textId, ReadString, ZOL_RcFileBuf));
}

void FillListbox(newtComponent listbox, TrapList& list) {
    for (int i = 0; i < list.count; ++i)
        zolui::listboxAppendIndex(listbox, list.at(i), i);
    if (list.count > 0)
        newtListboxSetCurrent(listbox, 0);
}

}  // namespace

int EnterIPpanel(HMODULE hLibRPTSET, char* address) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    zolui::Window window;
    zolui::Form form;
    newtComponent label = form.add(zolui::label(-1, -1, MessageText("SUBBASE_IP_LABEL")));
    newtComponent entry = form.add(zolui::entry(-1, -1, "", kAddressEntryWidth));
    form.setFilter(entry,
                   [](int ch, int cursor) { return EntryIPFilter(nullptr, nullptr, ch, cursor); });
    zolui::Grid buttons(2, 1);
    buttons.set(0, 0, form.add(zolui::button(-1, -1, MessageText("BUTTON_OK_ID")), kOkId),
                {.left = 2}, NEWT_ANCHOR_TOP);
    buttons.set(1, 0, form.add(zolui::button(-1, -1, MessageText("BUTTON_CANCEL_ID")), kCancelId),
                {.left = 2}, NEWT_ANCHOR_TOP);
    zolui::Grid grid(1, 3);
    grid.set(0, 0, label, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, entry, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, std::move(buttons), {.top = 2});
    const std::string title = MessageText("SUBBASE_ADD_TITLE");
    window.openWrapped(grid, title);
    form.addHotKey(15);

    for (;;) {
        const zolui::RunResult result = form.run();
        if (result.reason != zolui::RunResult::Reason::Component || result.id == kCancelId)
            break;
        if (result.id != kOkId)
            continue;
        auto* pCheck = BindFromHandle<AMBIMyIPCheck_fn>(hLibRPTSET, "AMBIMyIPCheck");
        if (pCheck == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "GetProcAddress(AMBIMyIPCheck) Failed");
            break;
        }
        const std::string text = zolui::entryText(entry);
        if (pCheck(text.c_str()) != 1) {
            const std::string message = MessageText("IDS_ERR_INVALID_IPADDRESS2");
            msgWindow(title.c_str(), " ok ", message.c_str());
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s", message.c_str());
            continue;
        }
        std::strncpy(address, text.c_str(), TRAP_DEST_SIZE - 1);
        address[TRAP_DEST_SIZE - 1] = '\0';
        break;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}

int SubSNMPPanel(HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    BaseRecordPtr record = NewBaseRecord(BASE_METHOD_SNMP);
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc CPBaseData3 Failed,return %d.", -1);
        return -1;
    }
    // Any result but 0 means the record was not read (a missing function, no such method, a
    // store error): the panel never offers to write a record it could not read.
    if (InitBaseSetting(hLibRPTSET, record.get()) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitBaseSetting() failed.return %d.", -1);
        return -1;
    }
    auto list = std::make_unique<TrapList>();
    if (!list->allocate()) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc lpTrapDest Failed,return %d.", -1);
        return -1;
    }
    if (!GetTrapSetting(hLibRPTSET, &list->count, list->data())) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetTrapSetting() failed.return %d.", -1);
        return -1;
    }
    list->clampCount();

    char enableMark = record->Enable != 0 ? '*' : ' ';
    zolui::Window window;
    zolui::Form form;
    newtComponent enable = form.add(zolui::checkbox(-1, -1, MessageText("BASE_SUB_ENABLE_ID"),
                                                    enableMark, nullptr, &enableMark));
    newtComponent label = form.add(zolui::label(-1, -1, MessageText("BASE_TRAP_LABEL")));
    newtComponent listbox = form.add(newtListbox(-1, -1, kTrapListRows, 0));
    newtListboxSetWidth(listbox, kTrapListWidth);
    FillListbox(listbox, *list);
    newtComponent add =
        form.add(zolui::compactButton(-1, -1, MessageText("GPSET_BUTTON_ADD_ID")), kAddId);
    newtComponent remove =
        form.add(zolui::compactButton(-1, -1, MessageText("GPSET_BUTTON_REMOVE_ID")), kRemoveId);
    newtComponent ok = form.add(zolui::button(-1, -1, MessageText("BUTTON_OK_ID")), kOkId);
    newtComponent cancel =
        form.add(zolui::button(-1, -1, MessageText("BUTTON_CANCEL_ID")), kCancelId);

    zolui::Grid listColumn(1, 2);
    listColumn.set(0, 0, label, {}, NEWT_ANCHOR_LEFT);
    listColumn.set(0, 1, listbox, {}, NEWT_ANCHOR_LEFT);
    zolui::Grid buttonColumn(1, 2);
    buttonColumn.set(0, 0, add, {.top = 1});
    buttonColumn.set(0, 1, remove, {.top = 1});
    zolui::Grid listRow(2, 1);
    listRow.set(0, 0, std::move(listColumn));
    listRow.set(1, 0, std::move(buttonColumn), {.left = 1});
    zolui::Grid okRow(2, 1);
    okRow.set(0, 0, ok, {.left = 3});
    okRow.set(1, 0, cancel, {.left = 3});
    zolui::Grid grid(1, 3);
    grid.set(0, 0, enable, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(listRow), {.top = 1});
    grid.set(0, 2, std::move(okRow), {.top = 2});
    window.openWrapped(grid, MessageText("BASE_SNMP_TITLE"));
    form.addHotKey(15);

    for (;;) {
        // A full redraw of the terminal before every run: the panel has always been drawn so,
        // which also repairs a screen another program wrote over.
        newtSuspend();
        newtResume();
        const zolui::RunResult result = form.run();
        if (result.reason != zolui::RunResult::Reason::Component || result.id == kCancelId)
            break;

        if (result.id == kOkId) {
            record->Enable = enableMark == '*' ? 1 : 0;
            if (!PutBaseSetting(hLibRPTSET, record.get())) {
                ShowFuncCallErr("PutBaseSetting");
                continue;
            }
            if (!SetTrapSetting(hLibRPTSET, list->count, list->data())) {
                ShowFuncCallErr("SetTrapSetting");
                continue;
            }
            break;
        }

        if (result.id == kAddId) {
            // A full list cannot take another address: say so before asking for one.
            if (list->count >= TRAP_DEST_MAX) {
                Warning(" ok ", "SNMP_TRAP_LIST_FULL_ID");
                continue;
            }
            char address[TRAP_DEST_SIZE] = {};
            EnterIPpanel(hLibRPTSET, address);
            if (address[0] == '\0')
                continue;
            if (list->contains(address)) {
                // This box has always had the one-blank button.
                Warning(" ok", "IDS_ERROR_MSG_EXIST");
                continue;
            }
            std::strcpy(list->at(list->count), address);
            zolui::listboxAppendIndex(listbox, address, list->count);
            ++list->count;
            newtListboxSetCurrent(listbox, 0);
            continue;
        }

        if (result.id == kRemoveId) {
            // On an empty list the first (empty) buffer goes to the library, which refuses it.
            const int current = std::max(zolui::listboxCurrentIndex(listbox), 0);
            char address[TRAP_DEST_SIZE] = {};
            std::strcpy(address, list->at(current));
            for (int i = 0; i < list->count; ++i)
                newtListboxDeleteEntry(listbox, reinterpret_cast<void*>(std::intptr_t{i}));
            const bool removed = DelTrapSetting(hLibRPTSET, &list->count, address, list->data());
            list->clampCount();
            if (removed) {
                FillListbox(listbox, *list);
            } else {
                // The listbox stays empty until the panel is opened again.
                ShowFuncCallErr("DelTrapSetting");
            }
        }
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0");
    return 0;
}
