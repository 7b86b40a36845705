// The remote report service's menu: the first reading of the key floppy when none has been read,
// then the data screens, ending the service (stop report) and reading a new key floppy (reopen),
// which first puts every set-up value back to its initial value.
#include <strings.h>

#include <charconv>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/screens.h"
#include "frame/vantrel_calls.h"
#include "remote/vantrel_menu.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

enum ControlId : int { kDataListId = 1, kCeaseListId, kReopenListId };
enum DataRow : int { kUserPage1, kUserPage2, kMachineRow, kOptionRow, kVendorRow };

constexpr int kKeyFdTypeMail = 1;
constexpr int kKeyFdTypeHttps = 2;

// Rows of the data list: the label of each and the screen it opens.
struct DataScreen {
    const char* labelId;
    void (*open)(HMODULE);
};
constexpr DataScreen kDataScreens[] = {
    {"VANTREL_USERINFO_ID1", VantrelUserSetting},  {"VANTREL_USERINFO_ID2", VantrelUserSettingNext},
    {"VANTREL_MACHINE_ID", VantrelMachineSetting}, {"VANTREL_OPTION_ID", VantrelOptionSetting},
    {"VANTREL_SELLER_ID", VantrelVendorSetting},
};

void Box(const char* title, const char* button, const char* textId) {
    const std::string text = MessageText(textId);
    msgWindow(title, button, text.c_str());
}

void WrappedErrorBox(const char* textId) {
    const std::string text = MessageText(textId);
    msgWindowEx("Error", " ok ", text.c_str());
}

void InvalidItemBox() {
    const std::string title = MessageText("TITTLE_WARNING_ID");
    Box(title.c_str(), " ok ", "WARN_INVALID_ID");
}

// What a refused key floppy tells the administrator; false when the result is not a refusal.
bool ShowKeyFloppyRefusal(int result) {
    if (result == KEYFD_BAD_FILE || result == KEYFD_BAD_CONTENT) {
        WrappedErrorBox("IDS_MSG_KEYFD_FAILURE");
        return true;
    }
    if (result == KEYFD_BAD_PATH) {
        Box("Error", " ok ", "IDS_MSG_PATH_FAILURE");
        return true;
    }
    return false;
}

// The first reading of a key floppy: true when one was read and the menu may open.
bool FirstReading(HMODULE lib) {
    for (;;) {
        if (!SetFDPathWin(g_fdPath, kFdPathMax, lib))
            return false;
        const int read = GetKeyFDmsg(lib);
        if (read == KEYFD_READ_FAILED) {
            ShowFuncCallErr("GetKeyFDmsg");
            return false;
        }
        if (!ShowKeyFloppyRefusal(read))
            break;
    }
    if (pgetKeyFdType == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "getKeyFdType is not bound.");
        return false;
    }
    if (pgetKeyFdType() != kKeyFdTypeHttps) {
        Box("Open", " ok ", "HTTPS_OPEN_FILE_NOT_EXIST");
        return true;
    }
    if (SetVntMethod(lib, VANTREL_HTTPS) != 0) {
        ShowFuncCallErr("SetVntMethod");
        return false;
    }
    return true;
}

bool AskOkCancel(const char* textId) {
    const std::string title = MessageText("TITTLE_WARNING_ID");
    const std::string text = MessageText(textId);
    newtComponent buttons[2] = {zolui::button(-1, -1, MessageText("BUTTON_OK_ID")),
                                zolui::button(-1, -1, MessageText("BUTTON_CANCEL_ID"))};
    const newtComponent ok = buttons[0];
    return SelectFromButtons(title.c_str(), text.c_str(), buttons, 2) == ok;
}

struct ServiceMenu {
    newtComponent data = nullptr, cease = nullptr, reopen = nullptr;
};

newtComponent OneRowList(zolui::Dialog& dialog, int rows, const char* labelId, int id) {
    newtComponent list = dialog.add(zolui::listbox(rows, NEWT_FLAG_RETURNEXIT), id);
    zolui::listboxAppendIndex(list, zolui::menuRowText(MessageText(labelId)), 0);
    return list;
}

ServiceMenu OpenServiceMenu(zolui::Dialog& dialog) {
    ServiceMenu menu;
    menu.data = dialog.add(zolui::listbox(5, NEWT_FLAG_RETURNEXIT), kDataListId);
    int row = 0;
    for (const DataScreen& screen : kDataScreens)
        zolui::listboxAppendIndex(menu.data, zolui::menuRowText(MessageText(screen.labelId)),
                                  row++);
    menu.cease = OneRowList(dialog, 2, "VANTREL_CEASE_ID", kCeaseListId);
    menu.reopen = OneRowList(dialog, 1, "VANTREL_REOPEN_ID", kReopenListId);
    newtComponent close =
        dialog.add(zolui::button(-1, -1, MessageText("BUTTON_CLOSE_ID")), zolui::kCancelId);
    zolui::Grid grid(1, 4);
    grid.set(0, 0, menu.data);
    grid.set(0, 1, menu.cease, {.top = 1});
    grid.set(0, 2, menu.reopen, {.top = 1});
    grid.set(0, 3, close, {.top = 1});
    dialog.open(grid, MessageText("VANTREL_MAIN_ID"));
    return menu;
}

// What the menu does after a reopen: stay open, or close after a failure.
zolui::Next AfterReopen(int result) {
    if (result == -1)
        return zolui::Next::Close;
    if (result == -2)
        Box("Open", " ok ", "VANTREL_REOPEN_WARNING_OLDMODE");
    return zolui::Next::Stay;
}

void RunServiceMenu(HMODULE lib) {
    zolui::Dialog dialog;
    const ServiceMenu menu = OpenServiceMenu(dialog);
    auto openData = [&] {
        const int row = zolui::listboxCurrentIndex(menu.data);
        if (row < 0 || row >= static_cast<int>(std::size(kDataScreens))) {
            InvalidItemBox();
            return zolui::Next::Stay;
        }
        kDataScreens[row].open(lib);
        return zolui::Next::Stay;
    };
    auto cease = [&] {
        if (AskOkCancel("IDS_MSG_ASK"))
            StopService(lib);
        return zolui::Next::Stay;
    };
    auto reopen = [&] { return AfterReopen(VantrelReopen(lib)); };
    dialog.run({{kDataListId, openData}, {kCeaseListId, cease}, {kReopenListId, reopen}});
}

// One row of the initial-value table written to its key, which must exist.
LONG WriteInitialRow(const VntInitRow& row, int index) {
    HKEY key = nullptr;
    if (const LONG rc = RegOpenKeyEx(HKEY_LOCAL_MACHINE, row.key, 0, KEY_ALL_ACCESS, &key);
        rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "[%d] open of %s failed (%d).", index, row.key, rc);
        return rc;
    }
    const std::unique_ptr<std::remove_pointer_t<HKEY>, decltype(&RegCloseKey)> guard(key,
                                                                                     RegCloseKey);
    if (row.type == REG_SZ)
        return RegSetValueEx(key, row.name, 0, REG_SZ, reinterpret_cast<const BYTE*>(row.value),
                             static_cast<DWORD>(std::strlen(row.value) + 1));
    DWORD number = 0;
    const char* end = row.value + std::strlen(row.value);
    if (const auto parsed = std::from_chars(row.value, end, number);
        parsed.ec != std::errc() || parsed.ptr != end) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "[%d] %s is not a number: %s.", index, row.name, row.value);
        return ERROR_INVALID_PARAMETER;
    }
    return RegSetValueEx(key, row.name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                         sizeof number);
}

// After a reopen with a floppy for HTTPS (or of an unknown type): the method becomes HTTPS.
int ReopenedForHttps(HMODULE lib) {
    if (SetVntMethod(lib, VANTREL_HTTPS) != 0) {
        ShowFuncCallErr("SetVntMethod");
        return -1;
    }
    Box("Open", " ok ", "VANTREL_REOPEN_SUCCEED");
    return 0;
}

// After a reopen with a floppy for mail delivery: a method of HTTPS becomes internet mail.
int ReopenedForMail(HMODULE lib) {
    int method = 0;
    if (GetVntMethod(lib, &method) != 0) {
        ShowFuncCallErr("GetVntMethod");
        return -1;
    }
    if (method == VANTREL_HTTPS && SetVntMethod(lib, VANTREL_INTERNETMAIL) != 0) {
        ShowFuncCallErr("SetVntMethod");
        return -1;
    }
    const std::string text = MessageText("HTTPS_OPEN_FILE_NOT_EXIST");
    msgWindowEx("Open", " ok ", text.c_str());
    return 0;
}

}  // namespace

int InitKeyFDmsg() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    int index = 0;
    for (const VntInitRow* row = InitFDRegList; row->key[0] != '\0'; ++row, ++index) {
        if (row->type != REG_SZ && row->type != REG_DWORD) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "[%d] Unknow type: %u of %s.", index, row->type,
                      row->name);
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<return -1.");
            return -1;
        }
        if (const LONG rc = WriteInitialRow(*row, index); rc != ERROR_SUCCESS) {
            const int result = strcasecmp(row->name, "InstVantrelKeyFD") == 0 ? -2 : -1;
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<[%d] %s not written (%d).return %d.", index, row->name,
                      rc, result);
            return result;
        }
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

int VantrelReopen(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (!SetFDPathWin(g_fdPath, kFdPathMax, lib)) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<cancelled.return 1.");
        return 1;
    }
    if (const int reset = InitKeyFDmsg(); reset != 0) {
        ShowFuncCallErr("Vantrel Reopen");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitKeyFDmsg failed.return %d.", reset);
        return reset;
    }
    const int read = GetKeyFDmsg(lib);
    if (read == KEYFD_READ_FAILED || ShowKeyFloppyRefusal(read)) {
        // The program has always named this failure after the method read.
        if (read == KEYFD_READ_FAILED)
            ShowFuncCallErr("GetVntMethod");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetKeyFDmsg gave %d.return -1.", read);
        return -1;
    }
    if (pgetKeyFdType == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<getKeyFdType is not bound.return -1.");
        return -1;
    }
    const int result =
        pgetKeyFdType() == kKeyFdTypeMail ? ReopenedForMail(lib) : ReopenedForHttps(lib);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

void VantrelReportSetting(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p", rptsetLib);
    std::memset(g_fdPath, 0, sizeof g_fdPath);
    if (BindFromHandle<CheckKeyFDFlag_fn>(rptsetLib, rptset::kCheckKeyFDFlag.name) == nullptr)
        msgWindow("Error", "ok", "Get CheckKeyFDFlag address failed!");
    if (!CheckInstVantrelFD(rptsetLib) && !FirstReading(rptsetLib)) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<no key floppy read.");
        return;
    }
    RunServiceMenu(rptsetLib);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
