// The machine data of the remote report service: host name, product, manufacturer, licence
// number, operating system (chosen from the store's list) and its version, kept by the library,
// and a free comment the screen writes itself. A field that breaks its rule keeps the form open
// without a message; a comment too long is refused after the record was saved.
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
constexpr int kButtonGap = 6;
constexpr const char* kErrorTitle = "Error";

// Longest text of each field, in bytes of the stored text.
constexpr std::size_t kHostMax = 40, kProductMax = 40, kMakerMax = 16, kLicenseMax = 16,
                      kVersionMax = 32, kOSNameMax = 30;

bool Within(const std::string& text, std::size_t min, std::size_t max) {
    return text.size() >= min && text.size() <= max;
}

// Copies text into a record field; false when it does not fit.
template <std::size_t N>
bool Put(char (&field)[N], const std::string& text) {
    if (text.size() >= N)
        return false;
    std::copy(text.begin(), text.end(), field);
    field[text.size()] = '\0';
    return true;
}

std::string Shown(char* field) {
    MyStringConvert(field);
    return field;
}

struct MachForm {
    newtComponent host = nullptr, product = nullptr, maker = nullptr, license = nullptr;
    newtComponent osList = nullptr, version = nullptr, comment = nullptr;
};

// Every entry scrolls: a field's limit (40) is wider than its entry (35 columns).
newtComponent Field(zolui::Dialog& dialog, const std::string& text) {
    return dialog.add(zolui::entry(-1, -1, text, kFieldWidth, NEWT_FLAG_SCROLL));
}

MachForm OpenMachForm(zolui::Dialog& dialog, const MachEntries& shown, const ChoiceRows& os) {
    MachForm form;
    form.host = Field(dialog, shown.hostName);
    form.product = Field(dialog, shown.productName);
    form.maker = Field(dialog, shown.manufacturer);
    form.license = Field(dialog, shown.licenseNo);
    form.osList = dialog.add(zolui::listbox(1, 0, kFieldWidth));
    for (std::size_t i = 0; i < os.rows.size(); ++i)
        zolui::listboxAppendIndex(form.osList, os.rows[i], static_cast<int>(i));
    zolui::listboxSetCurrentIndex(form.osList, os.current);
    form.version = Field(dialog, shown.osVersion);
    form.comment = Field(dialog, shown.comment);

    const std::pair<const char*, newtComponent> rows[] = {
        {"VXMACH_HOSTNAME_ID", form.host},  {"VXMACH_PRODUCT_ID", form.product},
        {"VXMACH_MANUFACT_ID", form.maker}, {"VXMACH_LICENSE_ID", form.license},
        {"VXMACH_OSNAME_ID", form.osList},  {"VXMACH_VERSION_ID", form.version},
        {"VNT_COMMENT_ID", form.comment},
    };
    zolui::Grid fields(2, 7);
    for (int row = 0; row < 7; ++row) {
        const int top = row == 0 ? 0 : (row == 4 ? 2 : 1);
        fields.set(0, row, dialog.add(zolui::label(-1, -1, MessageText(rows[row].first))),
                   {.top = top}, NEWT_ANCHOR_LEFT);
        fields.set(1, row, rows[row].second, {.left = 1, .top = top}, NEWT_ANCHOR_LEFT);
    }
    zolui::Grid grid(1, 2);
    grid.set(0, 0, std::move(fields));
    grid.set(0, 1,
             dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                               {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                              kButtonGap),
             {.top = 1});
    dialog.open(grid, MessageText("VANTREL_MACHINE_ID"));
    return form;
}

MachEntries ReadMachForm(const MachForm& form, const ChoiceRows& os) {
    MachEntries entries;
    entries.hostName = zolui::entryText(form.host);
    entries.productName = zolui::entryText(form.product);
    entries.manufacturer = zolui::entryText(form.maker);
    entries.licenseNo = zolui::entryText(form.license);
    const int row = zolui::listboxCurrentIndex(form.osList);
    if (row >= 0 && row < static_cast<int>(os.rows.size()))
        entries.osName = os.rows[static_cast<std::size_t>(row)];
    entries.osVersion = zolui::entryText(form.version);
    entries.comment = zolui::entryText(form.comment);
    return entries;
}

// What the OK does after SaveMachine: Stay or Close, with the box its outcome shows.
zolui::Next AfterMachSave(MachSave outcome) {
    switch (outcome) {
        case MachSave::Refused:
            return zolui::Next::Stay;
        case MachSave::RecordFailed:
            ShowFuncCallErr("PutVntMachSetting");
            return zolui::Next::Close;
        case MachSave::CommentTooLong: {
            const std::string text = MessageText("COMMENT_ERROR_ID");
            msgWindow(kErrorTitle, " ok ", text.c_str());
            return zolui::Next::Stay;
        }
        case MachSave::CommentUnbound:
            ShowFuncCallErr("GetProcAddress(AMAMRegWrite)");
            return zolui::Next::Close;
        case MachSave::CommentFailed:
            ShowFuncCallErr("AMAMRegWrite");
            return zolui::Next::Close;
        case MachSave::Saved:
            break;
    }
    return zolui::Next::Close;
}

// Empties the operating-system list on every way out of the screen.
struct OSListGuard {
    ~OSListGuard() {
        OSName.clear();
        OSLen = 0;
    }
};

}  // namespace

ChoiceRows MakeChoiceRows(const std::vector<std::string>& offered, const std::string& stored) {
    ChoiceRows choice{offered, 0};
    const auto found = std::find(offered.begin(), offered.end(), stored);
    if (found != offered.end()) {
        choice.current = static_cast<int>(found - offered.begin());
    } else if (!stored.empty()) {
        choice.rows.push_back(stored);
        choice.current = static_cast<int>(choice.rows.size()) - 1;
    }
    return choice;
}

MachEntries MachEntriesFrom(const VntMachData& record) {
    return {record.HostName,
            record.ProductName,
            record.Manufacturer,
            record.LicenseNo,
            record.OSName,
            record.OSVersion,
            {}};
}

bool MachEntriesValid(const MachEntries& e) {
    return Within(e.hostName, 1, kHostMax) && Within(e.productName, 1, kProductMax) &&
           Within(e.manufacturer, 1, kMakerMax) && Within(e.licenseNo, 1, kLicenseMax) &&
           Within(e.osVersion, 0, kVersionMax) && Within(e.osName, 1, kOSNameMax);
}

int CheckMachData(const VntMachData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const int valid = record != nullptr && MachEntriesValid(MachEntriesFrom(*record)) ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", valid);
    return valid;
}

MachSave SaveMachine(const MachEntries& e, const MachWriters& write) {
    if (!MachEntriesValid(e))
        return MachSave::Refused;
    VntMachData record{};
    // Every field fits once the rules passed.
    Put(record.HostName, e.hostName);
    Put(record.ProductName, e.productName);
    Put(record.Manufacturer, e.manufacturer);
    Put(record.LicenseNo, e.licenseNo);
    Put(record.OSName, e.osName);
    Put(record.OSVersion, e.osVersion);
    if (!write.record(&record))
        return MachSave::RecordFailed;
    if (e.comment.size() > kCommentMax)
        return MachSave::CommentTooLong;
    const LibResult written = write.comment(e.comment);
    if (written.unbound())
        return MachSave::CommentUnbound;
    return written.ok() ? MachSave::Saved : MachSave::CommentFailed;
}

void VantrelMachineSetting(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p", rptsetLib);
    auto CPVntMachData = std::make_unique<VntMachData>();
    if (!InitMachSetting(rptsetLib, CPVntMachData.get())) {
        ShowFuncCallErr("InitMachSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitMachSetting failed.");
        return;
    }
    CheckMachData(CPVntMachData.get());
    const OSListGuard osGuard;
    if (!InitInfo(rptsetLib)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitInfo failed.");
        return;
    }
    MachEntries shown;
    shown.hostName = Shown(CPVntMachData->HostName);
    shown.productName = Shown(CPVntMachData->ProductName);
    shown.manufacturer = Shown(CPVntMachData->Manufacturer);
    shown.licenseNo = Shown(CPVntMachData->LicenseNo);
    shown.osVersion = Shown(CPVntMachData->OSVersion);
    std::string comment = ReadMachComment();
    shown.comment = Shown(comment.data());
    const ChoiceRows os = MakeChoiceRows(OSName, Shown(CPVntMachData->OSName));

    zolui::Dialog dialog;
    const MachForm form = OpenMachForm(dialog, shown, os);
    const MachWriters writers{
        [rptsetLib](VntMachData* r) { return PutVntMachSetting(rptsetLib, r) == TRUE; },
        [rptsetLib](const std::string& text) { return WriteMachComment(rptsetLib, text); }};
    auto ok = [&] { return AfterMachSave(SaveMachine(ReadMachForm(form, os), writers)); };
    dialog.run({{zolui::kOkId, ok}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
