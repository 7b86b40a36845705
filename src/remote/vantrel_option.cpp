// The option data of the remote report service: the list of options the customer holds, with
// Add (the kind chosen from the store's option kind list, its description shown beside it) and
// Delete (after a question). Each add and delete is one library call that lands at once; the list
// is then read again from the store. One option is always held, so the last cannot be deleted.
#include <optional>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "remote/vantrel_data.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

constexpr int kListRows = 8;
constexpr int kKindRows = 5;
constexpr int kListWidth = 40;
constexpr int kDescriptionRows = 3;
constexpr const char* kErrorTitle = "Error";

enum ControlId : int { kAddId = 1, kDeleteId };

void ShowError(const char* id) {
    const std::string text = MessageText(id);
    msgWindow(kErrorTitle, " ok ", text.c_str());
}

// What the screen shows: the kinds the store offers and the codes held.
struct OptionView {
    std::vector<OptionKind> kinds;
    std::vector<std::uint32_t> held;
};

bool ReadView(HMODULE lib, OptionView* view) {
    if (!ReadOptionKinds(lib, &view->kinds)) {
        ShowFuncCallErr("GetVntOptKindList");
        return false;
    }
    if (!ReadOptionsHeld(lib, &view->held)) {
        ShowFuncCallErr("GetVntOptList");
        return false;
    }
    return true;
}

void FillHeldList(newtComponent list, const OptionView& view) {
    zolui::listboxClear(list);
    const std::vector<std::string> rows = HeldOptionRows(view.held, view.kinds);
    for (std::size_t i = 0; i < rows.size(); ++i)
        zolui::listboxAppendIndex(list, rows[i], static_cast<int>(i));
}

// The add dialog: the kinds, and the current one's name and description. The code chosen, or
// nothing when it was left without OK.
std::optional<std::uint32_t> ChooseKind(const std::vector<OptionKind>& kinds) {
    zolui::Dialog dialog;
    newtComponent list = dialog.add(zolui::listbox(kKindRows, NEWT_FLAG_SCROLL, kListWidth));
    for (std::size_t i = 0; i < kinds.size(); ++i)
        zolui::listboxAppendIndex(list, kinds[i].name, static_cast<int>(i));
    newtComponent kind = dialog.add(zolui::label(-1, -1, std::string(kListWidth, ' ')));
    newtComponent description = dialog.add(
        zolui::textbox(-1, -1, kListWidth, kDescriptionRows, NEWT_FLAG_WRAP, kinds[0].description));
    zolui::setLabelText(kind, kinds[0].name);
    dialog.form().onActivate(list, [&] {
        const int row = zolui::listboxCurrentIndex(list);
        if (row < 0 || row >= static_cast<int>(kinds.size()))
            return;
        zolui::setLabelText(kind, kinds[static_cast<std::size_t>(row)].name);
        zolui::setTextboxText(description, kinds[static_cast<std::size_t>(row)].description);
    });

    zolui::Grid shown(2, 2);
    shown.set(0, 0, dialog.add(zolui::label(-1, -1, MessageText("VXOPT_ADD_KIND_ID"))), {},
              NEWT_ANCHOR_LEFT | NEWT_ANCHOR_TOP);
    shown.set(1, 0, kind, {.left = 1}, NEWT_ANCHOR_LEFT);
    shown.set(0, 1, dialog.add(zolui::label(-1, -1, MessageText("VXOPT_DESCRIP_ID"))), {.top = 1},
              NEWT_ANCHOR_LEFT | NEWT_ANCHOR_TOP);
    shown.set(1, 1, description, {.left = 1, .top = 1}, NEWT_ANCHOR_LEFT);
    zolui::Grid grid(1, 4);
    grid.set(0, 0, dialog.add(zolui::label(-1, -1, MessageText("VXOPT_ADD_LIST_ID"))), {},
             NEWT_ANCHOR_LEFT);
    grid.set(0, 1, list, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, std::move(shown), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 3,
             dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                               {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}}),
             {.top = 1});
    dialog.open(grid, MessageText("VXOPT_ADD_TITLE_ID"));
    std::optional<std::uint32_t> chosen;
    auto ok = [&] {
        const int row = zolui::listboxCurrentIndex(list);
        if (row >= 0 && row < static_cast<int>(kinds.size()))
            chosen = kinds[static_cast<std::size_t>(row)].code;
        return zolui::Next::Close;
    };
    dialog.run({{zolui::kOkId, ok}});
    return chosen;
}

// Add: true when an option was added (the list is then read again).
bool AddOne(HMODULE lib, const OptionView& view) {
    if (view.kinds.empty()) {
        ShowError("IDS_ERROR_MSG_ADD");
        return false;
    }
    const std::optional<std::uint32_t> code = ChooseKind(view.kinds);
    if (!code)
        return false;
    if (const char* refusal = AddOptionRefusal(AddOption(lib, *code))) {
        ShowError(refusal);
        return false;
    }
    return true;
}

bool ConfirmDelete() {
    const std::string title = MessageText("TITTLE_WARNING_ID");
    const std::string text = MessageText("VXOPT_DEL_WARN_ID");
    newtComponent buttons[2] = {zolui::button(-1, -1, MessageText("BUTTON_OK_ID")),
                                zolui::button(-1, -1, MessageText("BUTTON_CANCEL_ID"))};
    const newtComponent ok = buttons[0];
    return SelectFromButtons(title.c_str(), text.c_str(), buttons, 2) == ok;
}

// Delete of the current row: true when an option was deleted.
bool DeleteOne(HMODULE lib, const OptionView& view, int row) {
    if (row < 0 || row >= static_cast<int>(view.held.size())) {
        ShowError("IDS_ERROR_MSG_DELETE");
        return false;
    }
    if (!ConfirmDelete())
        return false;
    const std::uint32_t code = view.held[static_cast<std::size_t>(row)];
    if (const char* refusal = DeleteOptionRefusal(DeleteOption(lib, code))) {
        ShowError(refusal);
        return false;
    }
    return true;
}

}  // namespace

std::vector<std::string> HeldOptionRows(const std::vector<std::uint32_t>& held,
                                        const std::vector<OptionKind>& kinds) {
    std::vector<std::string> rows;
    for (const std::uint32_t code : held) {
        rows.push_back(code < kinds.size() ? kinds[code].name : "(" + std::to_string(code) + ")");
    }
    return rows;
}

const char* AddOptionRefusal(const LibResult& result) {
    if (result.ok() && result.value == VNT_OPT_DONE)
        return nullptr;
    return result.ok() && result.value == VNT_OPT_HELD ? "IDS_ERROR_MSG_ADDOPTION2"
                                                       : "IDS_ERROR_MSG_ADD";
}

const char* DeleteOptionRefusal(const LibResult& result) {
    return result.ok() && result.value == VNT_OPT_DONE ? nullptr : "IDS_ERROR_MSG_DELETE";
}

void VantrelOptionSetting(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p", rptsetLib);
    OptionView view;
    if (!ReadView(rptsetLib, &view)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<the option data cannot be read.");
        return;
    }
    zolui::Dialog dialog;
    newtComponent list = dialog.add(zolui::listbox(kListRows, NEWT_FLAG_SCROLL, kListWidth));
    FillHeldList(list, view);
    zolui::Grid grid(1, 3);
    grid.set(0, 0, dialog.add(zolui::label(-1, -1, MessageText("VXOPT_LIST_ID"))), {},
             NEWT_ANCHOR_LEFT);
    grid.set(0, 1, list, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2,
             dialog.buttonRow({{MessageText("DEST_BUTTON_ADD_ID"), kAddId},
                               {MessageText("DEST_BUTTON_DELETE_ID"), kDeleteId},
                               {MessageText("BUTTON_CLOSE_ID"), zolui::kCancelId}}),
             {.top = 1});
    dialog.open(grid, MessageText("VANTREL_OPTION_ID"));
    dialog.redrawBeforeEachRun();

    // After a change the list is read again; should that fail the screen closes.
    auto changed = [&](bool done) {
        if (!done)
            return zolui::Next::Stay;
        if (!ReadView(rptsetLib, &view))
            return zolui::Next::Close;
        FillHeldList(list, view);
        return zolui::Next::Stay;
    };
    auto add = [&] { return changed(AddOne(rptsetLib, view)); };
    auto del = [&] {
        return changed(DeleteOne(rptsetLib, view, zolui::listboxCurrentIndex(list)));
    };
    dialog.run({{kAddId, add}, {kDeleteId, del}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
