// The customer pages of the remote report service: page 1 (customer kind, names, department,
// person in charge, user code) and page 2 (post code, address, telephone, mail address), over one
// customer record read when a page opens and freed when it closes. The Japanese fields exist only
// when the system language is Japanese; elsewhere they are shown disabled and never read.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "frame/check_boxes.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "frame/vantrel_calls.h"
#include "remote/vantrel_menu.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

constexpr LANGID kJapanese = 1041;
constexpr int kEntryWidth = 40;
// The address detail has no rule of its own: its entry takes no more than its field can hold,
// with room for one more character of up to three bytes.
constexpr std::size_t kDetailRoom = VNT_TEXT_SIZE - 4;

// The record of the page that is open, and whether it must be read when a page opens.
std::unique_ptr<VntUserData> CPVntUserData;
int m_bInit = 1;
bool g_japanese = false;

std::string Text(const char* id) {
    return MessageText(id);
}

// A stored text as an entry shows it: one line.
std::string Shown(const char* field) {
    std::string text(field, strnlen(field, VNT_TEXT_SIZE));
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

// Shows the box of a broken rule: true when there was none.
bool Passes(const char* faultId) {
    if (faultId == nullptr)
        return true;
    const std::string text = Text(faultId);
    msgWindow("Error", " ok ", text.c_str());
    return false;
}

bool Page2Passes(const CustomerPage2& page) {
    return Passes(CustomerPage2Fault(page, g_japanese)) && CheckMailAddr(page.mail.c_str());
}

// A visit of a page: reads the record when it must be read and checks it once with the page's
// check, so that stored data that break a rule are reported at once; the leaving frees it.
class RecordVisit {
  public:
    RecordVisit(HMODULE lib, int (*check)(const VntUserData*)) {
        g_japanese = GetSystemDefaultLangID() == kJapanese;
        if (m_bInit != 1) {
            ready_ = CPVntUserData != nullptr;
            return;
        }
        CPVntUserData.reset(new (std::nothrow) VntUserData{});
        if (!CPVntUserData) {
            ShowFuncCallErr("malloc");
            return;
        }
        m_bInit = 0;
        if (!InitUserSetting(lib)) {
            ShowFuncCallErr("InitUserSetting");
            return;
        }
        check(CPVntUserData.get());  // only to tell; the page opens all the same
        ready_ = true;
    }
    ~RecordVisit() {
        CPVntUserData.reset();
        m_bInit = 1;
    }
    RecordVisit(const RecordVisit&) = delete;
    RecordVisit& operator=(const RecordVisit&) = delete;
    bool ready() const { return ready_; }

  private:
    bool ready_ = false;
};

newtComponent TextEntry(zolui::Dialog& dialog, const std::string& text, bool enabled) {
    const int flags = NEWT_FLAG_SCROLL | (enabled ? 0 : NEWT_FLAG_DISABLED);
    return dialog.add(zolui::entry(-1, -1, text, kEntryWidth, flags));
}

// Rows of label and entry.
struct Row {
    const char* labelId;
    newtComponent entry;
};
zolui::Grid FieldGrid(zolui::Dialog& dialog, std::initializer_list<Row> rows) {
    zolui::Grid grid(2, static_cast<int>(rows.size()));
    int at = 0;
    for (const Row& row : rows) {
        grid.set(0, at, dialog.add(zolui::label(-1, -1, Text(row.labelId))), {.right = 1},
                 NEWT_ANCHOR_LEFT);
        grid.set(1, at, row.entry, {}, NEWT_ANCHOR_LEFT);
        ++at;
    }
    return grid;
}

zolui::Grid OkCancel(zolui::Dialog& dialog) {
    return dialog.buttonRow(
        {{Text("BUTTON_OK_ID"), zolui::kOkId}, {Text("BUTTON_CANCEL_ID"), zolui::kCancelId}});
}

struct Page1Form {
    zolui::RadioGroup kind;
    newtComponent nameA = nullptr, nameJ = nullptr, department = nullptr, personA = nullptr,
                  personJ = nullptr, userCode = nullptr;
};

// The radio buttons' callback: a personal customer has no department and no person in charge.
void CheckRadioFunc(const Page1Form& form, const VntUserData& record) {
    const bool company = form.kind.currentIndex() == 1;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> company=%d <", company ? 1 : 0);
    const newtFlagsSense sense = company ? NEWT_FLAGS_RESET : NEWT_FLAGS_SET;
    newtEntrySetFlags(form.department, NEWT_FLAG_DISABLED, sense);
    newtEntrySetFlags(form.personA, NEWT_FLAG_DISABLED, sense);
    if (g_japanese)
        newtEntrySetFlags(form.personJ, NEWT_FLAG_DISABLED, sense);
    if (!company)
        return;
    zolui::setEntryText(form.department, Shown(record.Department));
    zolui::setEntryText(form.personA, Shown(record.PersonA));
    if (g_japanese)
        zolui::setEntryText(form.personJ, Shown(record.PersonJ));
}

void BuildPage1(zolui::Dialog& dialog, Page1Form& form, const VntUserData& record) {
    const bool company = record.Kind == 1;
    auto companyText = [company](const char* field) { return company ? Shown(field) : ""; };
    zolui::Grid kinds(2, 1);
    kinds.set(0, 0, dialog.add(form.kind.add(Text("VXUSER_PERSONAL_ID"), !company)), {.right = 2});
    kinds.set(1, 0, dialog.add(form.kind.add(Text("VXUSER_COMPANY_ID"), company)));
    form.nameA = TextEntry(dialog, Shown(record.CustomerNameA), true);
    form.nameJ = TextEntry(dialog, g_japanese ? Shown(record.CustomerNameJ) : "", g_japanese);
    form.department = TextEntry(dialog, companyText(record.Department), company);
    form.personA = TextEntry(dialog, companyText(record.PersonA), company);
    form.personJ =
        TextEntry(dialog, g_japanese ? companyText(record.PersonJ) : "", company && g_japanese);
    form.userCode = TextEntry(dialog, Shown(record.UserCode), false);
    zolui::Grid grid(1, 4);
    grid.set(0, 0, dialog.add(zolui::label(-1, -1, Text("VXUSER_PROPERTY_ID"))), {},
             NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(kinds), {.left = 2}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2,
             FieldGrid(dialog, {{"VXUSER_CUSTOM_M_ID", form.nameA},
                                {"VXUSER_CUSTOM_A_ID", form.nameJ},
                                {"VXUSER_DEPARTMENT_ID", form.department},
                                {"VXUSER_ENGINEER_C_ID", form.personA},
                                {"VXUSER_ENGINEER_G_ID", form.personJ},
                                {"VXUSER_SYSCODE_ID", form.userCode}}),
             {.top = 1});
    grid.set(0, 3, OkCancel(dialog), {.top = 1});
    dialog.open(grid, Text("VANTREL_USERINFO_ID1"));
}

// Page 1 as typed: the fields a personal customer has not keep what the record holds.
CustomerPage1 TypedPage1(const Page1Form& form, const VntUserData& record) {
    CustomerPage1 page = Page1Of(record);
    page.kind = form.kind.currentIndex() == 1 ? 1 : 0;
    page.nameA = zolui::entryText(form.nameA);
    if (g_japanese)
        page.nameJ = zolui::entryText(form.nameJ);
    if (page.kind == 0)
        return page;
    page.department = zolui::entryText(form.department);
    page.personA = zolui::entryText(form.personA);
    if (g_japanese)
        page.personJ = zolui::entryText(form.personJ);
    return page;
}

// Saves a page that passed its checks; the page closes either way.
template <class Page>
zolui::Next Save(HMODULE lib, const Page& page, bool (*apply)(const Page&, VntUserData&)) {
    VntUserData updated = *CPVntUserData;
    if (!apply(page, updated) || !PutVntUserSetting(lib, &updated)) {
        ShowFuncCallErr("PutVntUserSetting");
        return zolui::Next::Close;
    }
    *CPVntUserData = updated;
    return zolui::Next::Close;
}

struct Page2Form {
    newtComponent postCode = nullptr, addressA = nullptr, addressJ = nullptr,
                  addressDetail = nullptr, telephone = nullptr, mail = nullptr;
};

void BuildPage2(zolui::Dialog& dialog, Page2Form& form, const VntUserData& record) {
    form.postCode = dialog.numberEntry(Shown(record.PostCode), kEntryWidth, EntryNumricFilter);
    form.addressA = TextEntry(dialog, Shown(record.AddressA), true);
    form.addressJ = TextEntry(dialog, g_japanese ? Shown(record.AddressJ) : "", g_japanese);
    form.addressDetail =
        TextEntry(dialog, g_japanese ? Shown(record.AddressDetail) : "", g_japanese);
    const newtComponent detail = form.addressDetail;
    dialog.form().setFilter(detail, [detail](int ch, int) {
        const char* text = newtEntryGetValue(detail);
        const bool character = ch > 0 && ch < NEWT_KEY_EXTRA_BASE && ch >= ' ';
        return character && text && zolui::fromNewt(text).size() >= kDetailRoom ? 0 : ch;
    });
    form.telephone = dialog.numberEntry(Shown(record.Telephone), kEntryWidth, EntryNumFilter);
    form.mail = TextEntry(dialog, Shown(record.Mail), true);
    zolui::Grid grid(1, 2);
    grid.set(0, 0,
             FieldGrid(dialog, {{"VXUSER_POSTCODE_ID", form.postCode},
                                {"VXUSER_ADDRESS_D_ID", form.addressA},
                                {"VXUSER_ADDRESS_R_ID", form.addressJ},
                                {"VXUSER_ADDRESS_DETAIL_ID", form.addressDetail},
                                {"VXUSER_TEL_ID", form.telephone},
                                {"VXUSER_MAIL_ID", form.mail}}));
    grid.set(0, 1, OkCancel(dialog), {.top = 1});
    dialog.open(grid, Text("VANTREL_USERINFO_ID2"));
}

CustomerPage2 TypedPage2(const Page2Form& form, const VntUserData& record) {
    CustomerPage2 page = Page2Of(record);
    page.postCode = zolui::entryText(form.postCode);
    page.addressA = zolui::entryText(form.addressA);
    if (g_japanese) {
        page.addressJ = zolui::entryText(form.addressJ);
        page.addressDetail = zolui::entryText(form.addressDetail);
    }
    page.telephone = zolui::entryText(form.telephone);
    page.mail = zolui::entryText(form.mail);
    return page;
}

}  // namespace

int CheckVntUserData1(const VntUserData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] record=%p", static_cast<const void*>(record));
    const int result =
        record != nullptr && Passes(CustomerPage1Fault(Page1Of(*record), g_japanese)) ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

int CheckVntUserData2(const VntUserData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] record=%p", static_cast<const void*>(record));
    const int result = record != nullptr && Page2Passes(Page2Of(*record)) ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

BOOL InitUserSetting(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const BOOL result = ReadVntUser(lib, CPVntUserData.get()) ? TRUE : FALSE;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %s.", result ? "TRUE" : "FALSE");
    return result;
}

BOOL PutVntUserSetting(HMODULE lib, VntUserData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const BOOL result = WriteVntUser(lib, record) ? TRUE : FALSE;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %s.", result ? "TRUE" : "FALSE");
    return result;
}

void VantrelUserSetting(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p", rptsetLib);
    const RecordVisit visit(rptsetLib, CheckVntUserData1);
    if (!visit.ready()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<customer record not read.");
        return;
    }
    const VntUserData& record = *CPVntUserData;
    zolui::Dialog dialog;
    Page1Form form;
    BuildPage1(dialog, form, record);
    for (newtComponent button : form.kind.buttons())
        dialog.form().onActivate(button, [&] { CheckRadioFunc(form, record); });
    auto ok = [&] {
        const CustomerPage1 page = TypedPage1(form, record);
        if (!Passes(CustomerPage1Fault(page, g_japanese)))
            return zolui::Next::Stay;
        return Save(rptsetLib, page, ApplyPage1);
    };
    dialog.run({{zolui::kOkId, ok}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}

void VantrelUserSettingNext(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p", rptsetLib);
    const RecordVisit visit(rptsetLib, CheckVntUserData2);
    if (!visit.ready()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<customer record not read.");
        return;
    }
    const VntUserData& record = *CPVntUserData;
    zolui::Dialog dialog;
    Page2Form form;
    BuildPage2(dialog, form, record);
    auto ok = [&] {
        const CustomerPage2 page = TypedPage2(form, record);
        if (!Page2Passes(page))
            return zolui::Next::Stay;
        return Save(rptsetLib, page, ApplyPage2);
    };
    dialog.run({{zolui::kOkId, ok}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
