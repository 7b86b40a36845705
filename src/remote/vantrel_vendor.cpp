// The vendor data of the remote report service: the distributor (in Japanese chosen from the
// store's list, else typed), the sales contact and the support engineer. Only the distributor is
// required; the two telephone numbers differ on purpose, only the engineer's may hold blanks.
#include <algorithm>
#include <memory>
#include <string>

#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "remote/vantrel_data.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

constexpr int kFieldWidth = 35;
constexpr int kSectionIndent = 2;
constexpr const char* kErrorTitle = "Error";

constexpr std::size_t kDistributorMax = 50, kDeptMax = 60, kPersonMax = 40, kTelMax = 30;

// Copies text into a record field, cut should it not fit (VendFault has passed it before).
template <std::size_t N>
void Put(char (&field)[N], const std::string& text) {
    const std::size_t n = std::min(text.size(), N - 1);
    std::copy(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(n), field);
    field[n] = '\0';
}

struct VendForm {
    newtComponent distributor = nullptr;  // an entry, or in Japanese the list box
    newtComponent salesDept = nullptr, salesPerson = nullptr, salesTel = nullptr;
    newtComponent engineerDept = nullptr, engineer = nullptr, engineerTel = nullptr;
};

newtComponent Field(zolui::Dialog& dialog, const std::string& text) {
    return dialog.add(zolui::entry(-1, -1, text, kFieldWidth, NEWT_FLAG_SCROLL));
}

// Three rows of label and entry.
zolui::Grid Section(zolui::Dialog& dialog, const char* const (&labels)[3],
                    const newtComponent (&fields)[3]) {
    zolui::Grid grid(2, 3);
    for (int row = 0; row < 3; ++row) {
        grid.set(0, row, dialog.add(zolui::label(-1, -1, MessageText(labels[row]))), {},
                 NEWT_ANCHOR_LEFT);
        grid.set(1, row, fields[row], {.left = 1}, NEWT_ANCHOR_LEFT);
    }
    return grid;
}

newtComponent DistributorField(zolui::Dialog& dialog, const VendEntries& shown,
                               const ChoiceRows* list) {
    if (list == nullptr)
        return Field(dialog, shown.distributor);
    newtComponent box = dialog.add(zolui::listbox(1, 0, kFieldWidth));
    for (std::size_t i = 0; i < list->rows.size(); ++i)
        zolui::listboxAppendIndex(box, list->rows[i], static_cast<int>(i));
    zolui::listboxSetCurrentIndex(box, list->current);
    return box;
}

VendForm OpenVendForm(zolui::Dialog& dialog, const VendEntries& shown, const ChoiceRows* list) {
    VendForm f;
    f.distributor = DistributorField(dialog, shown, list);
    f.salesDept = Field(dialog, shown.salesDept);
    f.salesPerson = Field(dialog, shown.salesPerson);
    f.salesTel = Field(dialog, shown.salesTel);
    f.engineerDept = Field(dialog, shown.engineerDept);
    f.engineer = Field(dialog, shown.engineer);
    f.engineerTel = Field(dialog, shown.engineerTel);
    dialog.form().setFilter(f.salesTel, [](int ch, int cursor) {
        return EntryNumFilter(nullptr, nullptr, ch, cursor);
    });
    dialog.form().setFilter(f.engineerTel, [](int ch, int cursor) {
        return EntryTelFilter(nullptr, nullptr, ch, cursor);
    });

    zolui::Grid name(2, 1);
    name.set(0, 0, dialog.add(zolui::label(-1, -1, MessageText("VXVEND_NAME_ID"))));
    name.set(1, 0, f.distributor, {.left = 1});
    zolui::Grid grid(1, 6);
    grid.set(0, 0, std::move(name), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, dialog.add(zolui::label(-1, -1, MessageText("VXVEND_SALES_ID"))),
             {.left = kSectionIndent, .top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2,
             Section(dialog, {"VXVEND_DEPART_ID", "VXVEND_SELLER_ID", "VXVEND_TEL_ID"},
                     {f.salesDept, f.salesPerson, f.salesTel}),
             {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 3, dialog.add(zolui::label(-1, -1, MessageText("VXVEND_SE_ID"))),
             {.left = kSectionIndent, .top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 4,
             Section(dialog, {"VXVEND_DEPART_SE_ID", "VXVEND_ENGINEER_SE_ID", "VXVEND_TEL_SE_ID"},
                     {f.engineerDept, f.engineer, f.engineerTel}),
             {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 5,
             dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                               {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}}),
             {.top = 1});
    dialog.open(grid, MessageText("VANTREL_SELLER_ID"));
    return f;
}

VendEntries ReadVendForm(const VendForm& f, const ChoiceRows* list) {
    VendEntries e;
    if (list == nullptr) {
        e.distributor = zolui::entryText(f.distributor);
    } else {
        const int row = zolui::listboxCurrentIndex(f.distributor);
        if (row >= 0 && row < static_cast<int>(list->rows.size()))
            e.distributor = list->rows[static_cast<std::size_t>(row)];
    }
    e.salesDept = zolui::entryText(f.salesDept);
    e.salesPerson = zolui::entryText(f.salesPerson);
    e.salesTel = zolui::entryText(f.salesTel);
    e.engineerDept = zolui::entryText(f.engineerDept);
    e.engineer = zolui::entryText(f.engineer);
    e.engineerTel = zolui::entryText(f.engineerTel);
    return e;
}

void ShowError(const char* id) {
    const std::string text = MessageText(id);
    msgWindow(kErrorTitle, " ok ", text.c_str());
}

// Empties the distributor list on every way out of the screen.
struct VendListGuard {
    ~VendListGuard() {
        VendData.clear();
        VendLen = 0;
    }
};

}  // namespace

VendEntries VendEntriesFrom(const VntVendData& r) {
    return {r.Distributor,  r.SalesDept, r.SalesPerson, r.SalesTel,
            r.EngineerDept, r.Engineer,  r.EngineerTel};
}

const char* VendFault(const VendEntries& e) {
    if (e.distributor.empty() || e.distributor.size() > kDistributorMax)
        return "IDS_ERROR_MSG_DISTRIBUTOR";
    if (e.salesDept.size() > kDeptMax)
        return "IDS_ERROR_MSG_SELLERDEPT";
    if (e.salesPerson.size() > kPersonMax)
        return "IDS_ERROR_MSG_SELLERNAME";
    if (e.salesTel.size() > kTelMax)
        return "IDS_ERROR_MSG_SELLERTELNUM";
    if (!checks::IsTelephoneText(e.salesTel, false))
        return "IDS_ERROR_MSG_BADSELLERTELNUM";
    if (e.engineerDept.size() > kDeptMax)
        return "IDS_ERROR_MSG_SEDEPT";
    if (e.engineer.size() > kPersonMax)
        return "IDS_ERROR_MSG_SENAME";
    if (e.engineerTel.size() > kTelMax)
        return "IDS_ERROR_MSG_SETELNUM";
    if (!checks::IsTelephoneText(e.engineerTel, true))
        return "IDS_ERROR_MSG_BADSETELNUM";
    return nullptr;
}

VntVendData VendRecordFrom(const VendEntries& e) {
    VntVendData r{};
    Put(r.Distributor, e.distributor);
    Put(r.SalesDept, e.salesDept);
    Put(r.SalesPerson, e.salesPerson);
    Put(r.SalesTel, e.salesTel);
    Put(r.EngineerDept, e.engineerDept);
    Put(r.Engineer, e.engineer);
    Put(r.EngineerTel, e.engineerTel);
    return r;
}

int CheckVntVendData(const VntVendData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]record is NULL.return 0.");
        return 0;
    }
    if (const char* fault = VendFault(VendEntriesFrom(*record))) {
        ShowError(fault);
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<%s.return 0.", fault);
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}

void VantrelVendorSetting(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p", rptsetLib);
    const bool japanese = GetSystemDefaultLangID() == LANGID_JAPANESE;
    auto record = std::make_unique<VntVendData>();
    const VendListGuard listGuard;
    if (!InitVendSetting(rptsetLib, record.get(), japanese)) {
        ShowFuncCallErr("InitVendSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitVendSetting failed.");
        return;
    }
    // A stored rule break is reported at once; the screen opens all the same.
    CheckVntVendData(record.get());
    for (char* field :
         {record->Distributor, record->SalesDept, record->SalesPerson, record->SalesTel,
          record->EngineerDept, record->Engineer, record->EngineerTel}) {
        MyStringConvert(field);
    }
    const VendEntries shown = VendEntriesFrom(*record);
    const ChoiceRows list = MakeChoiceRows(VendData, shown.distributor);

    zolui::Dialog dialog;
    const VendForm form = OpenVendForm(dialog, shown, japanese ? &list : nullptr);
    auto ok = [&] {
        const VendEntries typed = ReadVendForm(form, japanese ? &list : nullptr);
        if (const char* fault = VendFault(typed)) {
            ShowError(fault);
            return zolui::Next::Stay;
        }
        VntVendData out = VendRecordFrom(typed);
        if (!PutVntVendSetting(rptsetLib, &out))
            ShowFuncCallErr("PutVntVendSetting");
        return zolui::Next::Close;
    };
    dialog.run({{zolui::kOkId, ok}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
