// The destination ID editor: the dialog in which an ID is created (named, given a method, an
// address and a schedule, written on OK) or changed (each sub-screen writes what it changes),
// the path by which an ID is deleted, and the one writer of destination records.
#include <strings.h>

#include <string>
#include <vector>

#include "destination/destination.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/screens.h"
#include "frame/startup.h"
#include "frame/textformat.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

VxMLDestData g_VxMLDestData = {};

namespace {

// True once InitMLDestSetting has read g_VxMLDestData: only what was read is ever written back.
bool g_mailRead = false;

constexpr int kIDWidth = 40;
constexpr int kMethodWidth = 40;
constexpr int kAddressWidth = 51;
constexpr int kAddressHeight = 3;

enum ControlId : int { kMethodListId = 1, kAddressId, kScheduleId };

std::string Text(const char* id) {
    return MessageText(id);
}

void WarningBox(const char* messageId) {
    const std::string title = Text("TITTLE_WARNING_ID");
    msgWindow(title.c_str(), " ok ", CPGetText(messageId, ReadString, ZOL_RcFileBuf));
}

// The remote report service's address line by its delivery method; with onlyshow 0 the
// method's own screen first. 0, or the failure AddressSet returns.
int VantrelAddress(DestData* record, HMODULE lib, int onlyshow, std::string* line) {
    int method = 0;
    if (const int rc = GetVntMethod(lib, &method); rc != 0) {
        ShowFuncCallErr("GetVntMethod");
        return rc;
    }
    std::string where;
    if (method == VANTREL_INTERNETMAIL) {
        if (onlyshow == 0) {
            InternetMailSetting(record, lib);
            InitMLDestSetting(lib);  // what the mail screen stored is what the line shows
        }
        where = g_VxMLDestData.MailTo;
    } else if (method == VANTREL_TRANSTOMANAGER) {
        if (onlyshow == 0)
            ViaFWManagerSet(lib);
        char ip[VNT_MAILTO_SIZE] = {};
        const LibResult r = ReadManagerIP(lib, ip);
        if (r.unbound()) {
            ShowFuncCallErr("GetProcAddress for GetManagerIP");
            return -1;
        }
        where = r.ok() ? ip : "0.0.0.0";
    }
    const std::optional<std::string> text = VantrelAddressLine(method, where, Text);
    if (!text) {
        WarningBox("WARN_INVALID_ID");
        return -1;
    }
    *line = *text;
    return 0;
}

// The editor's widgets that its handlers read.
struct EditorForm {
    newtComponent id = nullptr, methods = nullptr, address = nullptr;
};

// Lays out the editor: ID and method, the address box, then the buttons. `buttons` is the
// button row, already made by the caller (create and change dialogs differ there).
void OpenEditor(zolui::Dialog& dialog, EditorForm& form, zolui::Grid buttons) {
    zolui::Grid top(2, 2);
    top.set(0, 0, dialog.add(zolui::label(-1, -1, Text("DEST_IDLIST_ID_ID"))), {},
            NEWT_ANCHOR_LEFT);
    top.set(1, 0, form.id, {.left = 1}, NEWT_ANCHOR_LEFT);
    top.set(0, 1, dialog.add(zolui::label(-1, -1, Text("DEST_IDLIST_METHOD_ID"))), {.top = 1},
            NEWT_ANCHOR_LEFT);
    top.set(1, 1, form.methods, {.left = 1, .top = 1}, NEWT_ANCHOR_LEFT);
    zolui::Grid middle(1, 2);
    middle.set(0, 0, dialog.add(zolui::label(-1, -1, Text("DEST_IDLIST_ADDRESS_ID"))), {},
               NEWT_ANCHOR_LEFT);
    middle.set(0, 1, form.address, {}, NEWT_ANCHOR_LEFT);
    zolui::Grid grid(1, 3);
    grid.set(0, 0, std::move(top), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(middle), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, std::move(buttons), {.top = 1}, NEWT_ANCHOR_LEFT);
    dialog.open(grid, Text("TITTLE_IDSET_ID"));
}

// The ID entry, the method list (one row) and the address box, in focus order. A changed ID
// keeps its name and method: the entry is disabled and the method is shown as a label, which
// newt, unlike a list box with an entry, never gives the focus.
EditorForm MakeEditorWidgets(zolui::Dialog& dialog, const DestData* changed,
                             const std::string& addressLine) {
    EditorForm form;
    const int idFlags = NEWT_FLAG_SCROLL | (changed != nullptr ? NEWT_FLAG_DISABLED : 0);
    form.id =
        dialog.add(zolui::entry(-1, -1, changed != nullptr ? changed->ID : "", kIDWidth, idFlags));
    if (changed != nullptr) {
        form.methods = dialog.add(zolui::label(-1, -1, ListRow(changed->Method, kMethodWidth)));
    } else {
        form.methods = dialog.add(zolui::listbox(1, 0, kMethodWidth), kMethodListId);
    }
    form.address = dialog.add(
        zolui::textbox(-1, -1, kAddressWidth, kAddressHeight, NEWT_FLAG_WRAP, addressLine));
    return form;
}

// The method chosen in the create dialog's list, or "" when the list is empty.
std::string CurrentMethod(newtComponent methods, const std::vector<std::string>& list) {
    const int index = zolui::listboxCurrentIndex(methods);
    return index >= 0 && index < static_cast<int>(list.size()) ? list[index] : std::string();
}

}  // namespace

void InitialDestData(DestData* record) {
    if (record != nullptr)
        DestDataSetDefaults(record);  // Operation 0, every text empty, the default schedule
}

BOOL PutDestSetting(DestData* record, HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const LibResult r = WriteDestSetting(lib, record);
    if (r.unbound()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<SetDestSetting is not bound.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_INFO, "pSetDestSetting return %d.", r.value);
    if (r.value == -3 || r.value == -2) {
        const std::string text = FormatText(Text("ERR_DEST_EXIST_ID"), {record->ID});
        msgWindow("Error", " ok ", text.c_str());
    } else if (r.value == -1) {
        ShowFuncCallErr("SetDestSetting");
    } else {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
        return TRUE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return FALSE.");
    return FALSE;
}

BOOL DeleteIDSetting(DestData* record, HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    record->Operation = DEST_OP_DELETE;
    return PutDestSetting(record, lib);
}

BOOL InitMLDestSetting(HMODULE lib, std::string* message) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const BOOL read = ReadMLDestSetting(lib, &g_VxMLDestData, message);
    g_mailRead = g_mailRead || read == TRUE;
    return read;
}

BOOL PutMLDestSetting(DestData* record, HMODULE lib, int flag) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p flag=%d", lib, flag);
    // Mail settings this program never read are not written back over the stored ones.
    const int recordOnly = flag != 0 || !g_mailRead ? 1 : 0;
    return WriteMLDestSetting(lib, &g_VxMLDestData, record, recordOnly);
}

int AddressSet(DestData* record, HMODULE lib, int onlyshow, int status, std::string* line) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p onlyshow=%d status=%d", lib, onlyshow, status);
    const DestMethod method = ClassifyMethod(record->Method);
    if (onlyshow == 0 && method == DestMethod::InBand)
        InBandSetting(record, lib, status);
    if (onlyshow == 0 && method == DestMethod::OutOfBand)
        OutofBandSetting(record, lib, status);
    if (method == DestMethod::Vantrel && Vantrel_Installed == 1) {
        const int rc = VantrelAddress(record, lib, onlyshow, line);
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", rc);
        return rc;
    }
    const std::optional<std::string> text = ManagerAddressLine(*record, Text);
    if (!text) {
        WarningBox("WARN_INVALID_ID");
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<method has no address.return -1.");
        return -1;
    }
    *line = *text;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

void NewIDSetting(DestData* record, HMODULE rptsetLib, HMODULE dscopyLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p dscopyLib=%p", rptsetLib, dscopyLib);
    InitialDestData(record);
    record->Operation = DEST_OP_CREATE;
    const std::vector<std::string> methods = BuildMethodList(DestList, szIDnum);

    zolui::Dialog dialog;
    EditorForm form = MakeEditorWidgets(dialog, nullptr, "");
    for (std::size_t i = 0; i < methods.size(); ++i)
        zolui::listboxAppendIndex(form.methods, ListRow(methods[i], kMethodWidth),
                                  static_cast<int>(i));
    OpenEditor(dialog, form,
               dialog.buttonRow({{Text("IDSET_BUTTON_ADD_ID"), kAddressId},
                                 {Text("IDSET_BUTTON_SCH_ID"), kScheduleId},
                                 {Text("BUTTON_OK_ID"), zolui::kOkId},
                                 {Text("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                                1));
    dialog.redrawBeforeEachRun();  // repaints what a sub-screen left

    auto named = [&] {
        if (!zolui::entryText(form.id).empty())
            return true;
        WarningBox("WARN_NOIDNAME_ID");
        return false;
    };
    auto address = [&] {
        CopyField(record->Method, sizeof record->Method, CurrentMethod(form.methods, methods));
        std::string line;
        if (named() && AddressSet(record, rptsetLib, 0, 0, &line) == 0)
            SetBoxText(form.address, line, kAddressHeight);
        return zolui::Next::Stay;
    };
    auto schedule = [&] {
        if (named())
            SchduleSet(record, dscopyLib, rptsetLib, 0);
        return zolui::Next::Stay;
    };
    auto ok = [&] {
        CopyField(record->ID, sizeof record->ID, zolui::entryText(form.id));
        if (!named())
            return zolui::Next::Stay;
        CopyField(record->Method, sizeof record->Method, CurrentMethod(form.methods, methods));
        return PutDestSetting(record, rptsetLib) ? zolui::Next::Close : zolui::Next::Stay;
    };
    const int closedBy =
        dialog.run({{kAddressId, address}, {kScheduleId, schedule}, {zolui::kOkId, ok}});
    // Only a written ID goes back to the list.
    if (closedBy != zolui::kOkId)
        record->ID[0] = '\0';
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<%s.", closedBy == zolui::kOkId ? "created" : "cancelled");
}

void ModifyIDSetting(DestData* record, HMODULE rptsetLib, HMODULE dscopyLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p dscopyLib=%p", rptsetLib, dscopyLib);
    std::string line;
    if (AddressSet(record, rptsetLib, 1, 1, &line) == -1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<AddressSet() return -1.");
        return;
    }
    record->Operation = DEST_OP_CHANGE;

    zolui::Dialog dialog;
    EditorForm form = MakeEditorWidgets(dialog, record, line);
    OpenEditor(dialog, form,
               dialog.buttonRow({{Text("IDSET_BUTTON_ADD_ID"), kAddressId},
                                 {Text("IDSET_BUTTON_SCH_ID"), kScheduleId},
                                 {Text("BUTTON_CLOSE_ID"), zolui::kCancelId}},
                                1));
    dialog.redrawBeforeEachRun();

    auto address = [&] {
        // A failing address screen only says so; the dialog stays.
        if (AddressSet(record, rptsetLib, 0, 1, &line) == 0)
            SetBoxText(form.address, line, kAddressHeight);
        return zolui::Next::Stay;
    };
    auto schedule = [&] {
        SchduleSet(record, dscopyLib, rptsetLib, 1);
        return zolui::Next::Stay;
    };
    dialog.run({{kAddressId, address}, {kScheduleId, schedule}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
