// The destination list: every destination ID the alert manager reports to, the selected one's
// method and address, and adding, changing and deleting IDs. Records are read and written whole
// through the report-settings library; a deleted ID also leaves every alert log.
#include <strings.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <string>

#include "destination/destination.h"
#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/logacc_calls.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/screens.h"
#include "frame/startup.h"
#include "ui/dialog.h"
#include "ui/encoding.h"
#include "ui/toolkit.h"

char szMailTo[VNT_MAILTO_SIZE] = {};
std::optional<std::string> OpenMsg;
int SelectFlag = 0;

namespace {

// IDs the product needs whatever the administrator does, compared without regard to case.
constexpr const char* kBuiltInIDs[] = {"TCP_IP In-Band", "TCP_IP Out-of-Band", "SNMP",
                                       "VANTREL REPORT", "VANTRELREPORT"};
constexpr const char* kVantrelPrefix = "VANTRELREPORT";
constexpr int kListRows = 3;
constexpr int kListWidth = 41;
constexpr int kRowWidth = 40;
constexpr int kDetailsHeight = 3;
// Size of the confirmation text.
constexpr std::size_t kSureTextSize = 200;
// Size of the text that stands in for the library's message when the mail settings are unread.
constexpr std::size_t kNoDataSize = 256;
// Key of the "<none>" row of an empty list.
constexpr int kNoEntryKey = -1;

enum ControlId : int { kListId = 1, kAddId, kChangeId, kDeleteId };

std::string Text(const char* id) {
    return MessageText(id);
}

void WarningBox(const char* messageId) {
    const std::string title = Text("TITTLE_WARNING_ID");
    msgWindow(title.c_str(), " ok ", CPGetText(messageId, ReadString, ZOL_RcFileBuf));
}

// The record of a listed ID, first match without regard to case; null when there is none.
const DestData* FindRecord(const char* id) {
    for (int i = 0; i < IDnum && i < DEST_MAX_RECORDS; ++i) {
        if (CPDestData[i] != nullptr && strcasecmp(CPDestData[i]->ID, id) == 0)
            return CPDestData[i];
    }
    return nullptr;
}

// A record holding the current entry's ID, or null (after the box) when memory is short.
DestDataPtr RecordOfCurrent(newtComponent listbox) {
    DestDataPtr record = NewDestRecord();
    if (record == nullptr) {
        ShowFuncCallErr("malloc");
        return record;
    }
    const int index = zolui::listboxCurrentIndex(listbox);
    if (index >= 0 && index < szIDnum)
        CopyField(record->ID, sizeof record->ID, DestList[index]);
    return record;
}

// The list screen's widgets.
struct ListForm {
    newtComponent listbox = nullptr, details = nullptr;
};

// After an edit: the table again, or false (after the box) when it cannot be read. A stale list
// is never shown.
bool Reload(HMODULE lib, const ListForm& form) {
    if (InitialDS(lib) != 0) {
        ShowFuncCallErr("InitialDS");
        return false;
    }
    CheckRadioFunc(form.listbox);
    DisplayMsgFunc(form.listbox, form.details);
    return true;
}

}  // namespace

void SetBoxText(newtComponent textbox, std::string_view text, int height) {
    std::string padded(text);
    for (int i = 0; i < height; ++i)
        padded += "\n ";
    zolui::setTextboxText(textbox, padded);
}

BOOL TestSelected(const char* ID) {
    if (ID == nullptr)
        return FALSE;
    for (const char* builtIn : kBuiltInIDs) {
        if (strcasecmp(ID, builtIn) == 0)
            return TRUE;
    }
    return FALSE;
}

BOOL InitCurrentDestSetting(HMODULE lib, DestData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return ReadDestSetting(lib, record);
}

int GetDestData(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    std::memset(szMailTo, 0, sizeof szMailTo);
    if (Vantrel_Installed != 1)
        return 0;
    int method = 0;
    if (const int rc = GetVntMethod(lib, &method); rc != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetVntMethod() failed.return %d.", -1);
        return -1;
    }
    switch (method) {
        case VANTREL_INTERNETMAIL:
            return ReadVntTo(lib, szMailTo) ? 0 : -1;
        case VANTREL_DIALUP:
            CopyField(szMailTo, sizeof szMailTo, Text("DEST_DIAL_ID"));
            return 0;
        case VANTREL_TRANSTOMANAGER:
            if (const LibResult r = ReadManagerIP(lib, szMailTo); !r) {
                if (r.unbound())
                    return -1;
                CopyField(szMailTo, sizeof szMailTo, "0.0.0.0");
                ZOL_TRACE(TRACE_LEVEL_ERROR, "pGetManagerIP failed.");
            }
            return 0;
        case VANTREL_HTTPS:
            CopyField(szMailTo, sizeof szMailTo, Text("IDSET_ADD_HTTPS_ID"));
            return 0;
        default:
            ZOL_TRACE(TRACE_LEVEL_ERROR, "unsupport DestID.return %d.", -1);
            return -1;
    }
}

int GetDataFromFD(DestData* record, HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    OpenMsg.reset();
    if (Vantrel_Installed != 1)
        return 0;
    if (strncasecmp(record->ID, kVantrelPrefix, std::strlen(kVantrelPrefix)) == 0 &&
        !CheckInstVantrelFD(lib)) {
        const std::string title = Text("TITTLE_WARNING_ID");
        msgWindowEx(title.c_str(), " ok ",
                    CPGetText("IMAIL_INSERT_FD_ID", ReadString, ZOL_RcFileBuf));
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<no set-up data.return -1.");
        return -1;
    }
    int method = 0;
    if (GetVntMethod(lib, &method) != 0)
        return -1;
    if (method == VANTREL_INTERNETMAIL) {
        std::string message;
        if (!InitMLDestSetting(lib, &message))
            message = std::string(zolui::CutEuc(Text("IDS_VX_SET_NODATA"), kNoDataSize - 1));
        OpenMsg = message;
    } else if (method > VANTREL_HTTPS || method < 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<unsupport Method.return %d", -1);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

void CheckRadioFunc(newtComponent listbox) {
    newtListboxClear(listbox);
    SelectFlag = 0;
    if (szIDnum < 1) {
        zolui::listboxAppendIndex(listbox, "<none>", kNoEntryKey);
    } else {
        for (int i = 0; i < szIDnum && i < DEST_MAX_RECORDS; ++i)
            zolui::listboxAppendIndex(listbox, ListRow(DestDispTable[i], kRowWidth), i);
    }
    newtListboxSetCurrent(listbox, 0);
}

void DisplayMsgFunc(newtComponent listbox, newtComponent details) {
    const int index = zolui::listboxCurrentIndex(listbox);
    std::string text;
    if (SelectFlag != 0) {
        text = Text("DEST_IDLIST_ID_ID") + " " + Text("DEST_IDLIST_NAME1_ID") + "," +
               Text("DEST_IDLIST_NAME2_ID") + "," + Text("DEST_IDLIST_NAME3_ID");
    } else if (index >= 0 && index < szIDnum) {
        // The whole ID finds the record: the display table holds it cut.
        if (const DestData* record = FindRecord(DestList[index])) {
            text = Text("DEST_IDLIST_METHOD_ID") + " " + record->Method + "\n" +
                   Text("DEST_IDLIST_ADDRESS_ID") + " " + ListAddressLine(*record, szMailTo, Text);
        }
    }
    SetBoxText(details, text.empty() ? Text("DEST_HELP_ID") : text, kDetailsHeight);
    newtRefresh();
}

int SureWindow(const char* text) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    std::string line;
    try {
        line = zolui::CutEuc(text != nullptr ? text : "", kSureTextSize - 1);
    } catch (const std::bad_alloc&) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc line failed.return -1.");
        return -1;
    }
    zolui::Dialog dialog;
    newtComponent body = dialog.add(properTextbox("%s", line.c_str()));
    zolui::Grid grid(1, 2);
    grid.set(0, 0, body, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1,
             dialog.buttonRow({{Text("BUTTON_OK_ID"), zolui::kOkId},
                               {Text("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                              2),
             {.top = 1});
    dialog.open(grid, Text("TITTLE_WARNING_ID"));
    const int answer = dialog.run() == zolui::kOkId ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", answer);
    return answer;
}

int DeleteIDAndGID(const DestData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] ID=%s", record->ID);
    if (!LoadLogaccDLL()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<LoadLogaccDLL() failed.return 0.");
        return 0;
    }
    const LibResult r = DeleteIDFromAllLogs(hLibLOGACC, record->ID);
    if (r.unbound())
        FreeLogaccDLL();
    if (!r) {
        // A failed call leaves the library loaded; the list releases it when it closes.
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<AMACETDeleteIDAndGIDAtAllLog failed.return 0.");
        return 0;
    }
    FreeLogaccDLL();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}

void DeleteGroupSetting(newtComponent listbox, int index) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] index=%d", index);
    newtListboxDeleteEntry(listbox, reinterpret_cast<void*>(static_cast<std::intptr_t>(index)));
}

namespace {

// Destination groups: the list never switches to them (SelectFlag stays 0), so this version
// offers no group dialogs; these keep the group branches of the list honest about that.
bool NewGroupSetting() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<destination groups are not offered.");
    return false;
}
void ModifyGroupSetting(int index) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<destination groups are not offered (index %d).", index);
}

zolui::Next AddID(const ListForm& form, HMODULE rptsetLib, HMODULE dscopyLib) {
    if (SelectFlag != 0) {
        NewGroupSetting();
        return zolui::Next::Stay;
    }
    DestDataPtr record = NewDestRecord();
    if (record == nullptr) {
        ShowFuncCallErr("malloc");
        return zolui::Next::Close;
    }
    if (!OpenMsg && GetDataFromFD(record.get(), rptsetLib) == -1)
        return zolui::Next::Stay;
    NewIDSetting(record.get(), rptsetLib, dscopyLib);
    record.reset();
    return Reload(rptsetLib, form) ? zolui::Next::Stay : zolui::Next::Close;
}

zolui::Next ChangeID(const ListForm& form, HMODULE rptsetLib, HMODULE dscopyLib) {
    if (SelectFlag != 0) {
        ModifyGroupSetting(zolui::listboxCurrentIndex(form.listbox));
        return zolui::Next::Stay;
    }
    if (szIDnum < 1) {
        WarningBox("WARN_INVALID_ID");
        return zolui::Next::Stay;
    }
    DestDataPtr record = RecordOfCurrent(form.listbox);
    if (record == nullptr)
        return zolui::Next::Close;
    // A record that cannot be read is never edited: its defaults would be written over it.
    if (!InitCurrentDestSetting(rptsetLib, record.get())) {
        ShowFuncCallErr("InitCurrentDestSetting");
        return zolui::Next::Stay;
    }
    if (GetDataFromFD(record.get(), rptsetLib) == -1)
        return zolui::Next::Stay;
    ModifyIDSetting(record.get(), rptsetLib, dscopyLib);
    record.reset();
    if (GetDestData(rptsetLib) != 0) {
        ShowFuncCallErr("GetDestData");
        return zolui::Next::Close;
    }
    return Reload(rptsetLib, form) ? zolui::Next::Stay : zolui::Next::Close;
}

zolui::Next DeleteID(const ListForm& form, HMODULE rptsetLib) {
    if (SelectFlag == 0 && szIDnum < 1) {
        WarningBox("WARN_INVALID_ID");
        return zolui::Next::Stay;
    }
    const int index = zolui::listboxCurrentIndex(form.listbox);
    if (SelectFlag == 0 && TestSelected(DestList[index])) {
        WarningBox("WARN_CANNOTDEL_ID");
        return zolui::Next::Stay;
    }
    const int sure = SureWindow(CPGetText("WARN_SUREDEL_ID", ReadString, ZOL_RcFileBuf));
    if (sure != 1)
        return sure == 0 ? zolui::Next::Stay : zolui::Next::Close;
    if (SelectFlag != 0) {
        DeleteGroupSetting(form.listbox, index);
        return zolui::Next::Stay;
    }
    DestDataPtr record = RecordOfCurrent(form.listbox);
    if (record == nullptr)
        return zolui::Next::Close;
    if (DeleteIDSetting(record.get(), rptsetLib)) {
        newtListboxDeleteEntry(form.listbox,
                               reinterpret_cast<void*>(static_cast<std::intptr_t>(index)));
        newtListboxSetCurrent(form.listbox, 0);
    }
    // The logs lose the ID even when the library kept it: a half-deleted ID must not keep
    // entries that name it.
    DeleteIDAndGID(record.get());
    record.reset();
    return Reload(rptsetLib, form) ? zolui::Next::Stay : zolui::Next::Close;
}

// Lays out the list screen: list, details, the three action buttons and Close.
ListForm OpenListForm(zolui::Dialog& dialog) {
    ListForm form;
    form.listbox = dialog.add(
        zolui::listbox(kListRows, NEWT_FLAG_SCROLL | NEWT_FLAG_RETURNEXIT, kListWidth), kListId);
    form.details = dialog.add(
        zolui::textbox(-1, -1, kListWidth, kDetailsHeight, NEWT_FLAG_WRAP, Text("DEST_HELP_ID")));
    zolui::Grid list(1, 2);
    list.set(0, 0, dialog.add(zolui::label(-1, -1, Text("DEST_LABEL_NAME_ID"))), {},
             NEWT_ANCHOR_LEFT);
    list.set(0, 1, form.listbox, {}, NEWT_ANCHOR_LEFT);
    zolui::Grid details(1, 2);
    details.set(0, 0, dialog.add(zolui::label(-1, -1, Text("DEST_LABEL_MSG_ID"))), {},
                NEWT_ANCHOR_LEFT);
    details.set(0, 1, form.details, {}, NEWT_ANCHOR_LEFT);
    zolui::Grid grid(1, 4);
    grid.set(0, 0, std::move(list), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(details), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2,
             dialog.buttonRow({{Text("DEST_BUTTON_ADD_ID"), kAddId},
                               {Text("DEST_BUTTON_MODITY_ID"), kChangeId},
                               {Text("DEST_BUTTON_DELETE_ID"), kDeleteId}},
                              1),
             {.top = 1});
    grid.set(0, 3, dialog.buttonRow({{Text("BUTTON_CLOSE_ID"), zolui::kCancelId}}));
    dialog.open(grid, Text("TITTLE_DESTSET_ID"));
    return form;
}

}  // namespace

void DestinationSetting(HMODULE rptsetLib, HMODULE dscopyLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p dscopyLib=%p", rptsetLib, dscopyLib);
    if (GetDestData(rptsetLib) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetDestData() failed .");
        return;
    }
    zolui::Dialog dialog;
    const ListForm form = OpenListForm(dialog);
    auto show = [form] { DisplayMsgFunc(form.listbox, form.details); };
    dialog.form().onActivate(form.listbox, show);
    CheckRadioFunc(form.listbox);
    show();
    dialog.redrawBeforeEachRun();  // repaints what the editor and its sub-screens left
    dialog.run({{kListId,
                 [&] {
                     show();
                     return zolui::Next::Stay;
                 }},
                {kAddId, [&] { return AddID(form, rptsetLib, dscopyLib); }},
                {kChangeId, [&] { return ChangeID(form, rptsetLib, dscopyLib); }},
                {kDeleteId, [&] { return DeleteID(form, rptsetLib); }}});
    OpenMsg.reset();
    FreeLogaccDLL();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
