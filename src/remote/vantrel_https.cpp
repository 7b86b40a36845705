// The remote report service's HTTPS method screen: the two report URLs, whether the secondary one
// is tried when the primary fails, and the proxy (its own dialog), stored together through the
// HTTPS library on OK; and the test reports through that library's report entry.
#include <string>

#include "frame/delivery_calls.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "frame/vnthttps_calls.h"
#include "remote/vantrel_method.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

constexpr const char* kHttpsLibrary = "vnthttps.dll";
constexpr const char* kHttpsEntry = "GUIVntReport";

constexpr int kUrlWidth = 56;
constexpr int kHostWidth = 30;
constexpr int kPortWidth = 7;

enum ControlId : int { kProxyId = 1, kTestPrimaryId, kTestSecondaryId };

std::string Text(const char* id) {
    return MessageText(id);
}

void WarningBox(const char* textId) {
    const std::string title = Text("TITTLE_WARNING_ID");
    const std::string text = Text(textId);
    msgWindow(title.c_str(), " ok ", text.c_str());
}

char Mark(bool on) {
    return on ? '*' : ' ';
}

// ---- Proxy dialog ----

struct ProxyFields {
    char use = ' ';
    newtComponent host = nullptr, port = nullptr;
};

zolui::Grid BuildProxyDialog(zolui::Dialog& dialog, const VntHttpsData& record, ProxyFields& f) {
    f.use = Mark(record.ProxyUse == 1);
    newtComponent use =
        dialog.add(zolui::checkbox(-1, -1, Text("SPECIFY_PROXY_ID"), f.use, nullptr, &f.use));
    f.host = dialog.add(zolui::entry(-1, -1, record.ProxyAddr, kHostWidth, NEWT_FLAG_SCROLL));
    f.port = dialog.numberEntry(std::to_string(record.ProxyPort), kPortWidth);
    dialog.enableWhileChecked(use, &f.use, {f.host, f.port});
    zolui::Grid fields(2, 2);
    fields.set(0, 0, dialog.add(zolui::label(-1, -1, Text("LABEL_PROXY_HOST_ID"))), {.right = 1},
               NEWT_ANCHOR_LEFT);
    fields.set(1, 0, f.host, {}, NEWT_ANCHOR_LEFT);
    fields.set(0, 1, dialog.add(zolui::label(-1, -1, Text("LABEL_HTTPS_PORT_ID"))), {.right = 1},
               NEWT_ANCHOR_LEFT);
    fields.set(1, 1, f.port, {}, NEWT_ANCHOR_LEFT);
    zolui::Grid grid(1, 3);
    grid.set(0, 0, use, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(fields), {.left = 2, .top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2,
             dialog.buttonRow({{Text("BUTTON_OK_ID"), zolui::kOkId},
                               {Text("BUTTON_CANCEL_ID"), zolui::kCancelId}}),
             {.top = 1});
    return grid;
}

// The proxy of the HTTPS screen: OK puts the checked values into record, which the HTTPS screen
// stores with the rest on its own OK; Cancel leaves record as it was.
void ProxyDialog(VntHttpsData& record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    zolui::Dialog dialog;
    ProxyFields f;
    dialog.open(BuildProxyDialog(dialog, record, f), Text("TITLE_PROXY_SETTING_ID"));
    dialog.run({{zolui::kOkId, [&] {
                     const ProxyEntries entries{f.use != ' ', zolui::entryText(f.host),
                                                zolui::entryText(f.port)};
                     if (const char* refusal = ApplyProxyEntries(entries, record)) {
                         WarningBox(refusal);
                         return zolui::Next::Stay;
                     }
                     return zolui::Next::Close;
                 }}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}

// ---- HTTPS screen ----

struct HttpsFields {
    newtComponent url1 = nullptr, url2 = nullptr;
    char next = ' ';
};

HttpsEntries ReadHttpsFields(const HttpsFields& f) {
    return {zolui::entryText(f.url1), zolui::entryText(f.url2), f.next != ' '};
}

zolui::Grid BuildHttpsScreen(zolui::Dialog& dialog, const VntHttpsData& stored, HttpsFields& f) {
    auto label = [&](const char* id) { return dialog.add(zolui::label(-1, -1, Text(id))); };
    zolui::Grid grid(1, 8);
    grid.set(0, 0, label("LABEL_HTTPS_FIRST_ID"), {}, NEWT_ANCHOR_LEFT);
    f.url1 = dialog.add(zolui::entry(-1, -1, stored.Url1, kUrlWidth, NEWT_FLAG_SCROLL));
    grid.set(0, 1, f.url1, {.left = 2}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, label("LABEL_HTTPS_SECOND_ID"), {.top = 1}, NEWT_ANCHOR_LEFT);
    f.url2 = dialog.add(zolui::entry(-1, -1, stored.Url2, kUrlWidth, NEWT_FLAG_SCROLL));
    grid.set(0, 3, f.url2, {.left = 2}, NEWT_ANCHOR_LEFT);
    f.next = Mark(stored.ContinueReport == 1);
    grid.set(0, 4,
             dialog.add(zolui::checkbox(-1, -1, Text("LABEL_HTTPS_CONTINUE_REPORT_ID"), f.next,
                                        nullptr, &f.next)),
             {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 5,
             dialog.add(zolui::compactButton(-1, -1, Text("BUTTON_PROXY_SETTING_ID")), kProxyId),
             {.top = 1}, NEWT_ANCHOR_LEFT);
    zolui::Grid tests(2, 1);
    tests.set(0, 0,
              dialog.add(zolui::compactButton(-1, -1, Text("BUTTON_FIRST_REPORT_TEST_ID")),
                         kTestPrimaryId),
              {.right = 2});
    tests.set(1, 0,
              dialog.add(zolui::compactButton(-1, -1, Text("BUTTON_SECONDARY_REPORT_TEST_ID")),
                         kTestSecondaryId));
    grid.set(0, 6, std::move(tests), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 7,
             dialog.buttonRow({{Text("BUTTON_OK_ID"), zolui::kOkId},
                               {Text("BUTTON_CANCEL_ID"), zolui::kCancelId}}),
             {.top = 1});
    return grid;
}

// OK: the URL checks, then the record (with the proxy as its dialog left it) written whole.
zolui::Next SaveHttps(HMODULE lib, const HttpsEntries& entries, const VntHttpsData& working) {
    VntHttpsData record = working;
    if (const char* refusal = ApplyHttpsEntries(entries, record)) {
        WarningBox(refusal);
        return zolui::Next::Stay;
    }
    if (!PutHTTPSParam(lib, record)) {
        ShowFuncCallErr("SetHTTPSSetting");
        return zolui::Next::Stay;
    }
    return zolui::Next::Close;
}

// A test report to one of the stored URLs, through the HTTPS library's report entry.
zolui::Next TestHttps(HMODULE lib, const char* kind) {
    ShowTestReport(CallLoadedDeliveryEntry(lib, kHttpsEntry, kind), kHttpsLibrary, kHttpsEntry);
    return zolui::Next::Stay;
}

}  // namespace

// The HTTPS library is the package's, loaded while the main menu runs; rptsetLib is not used.
int VantrelHTTPSSetting(HMODULE /*rptsetLib*/) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibVNTHTTPS=%p", hLibVNTHTTPS);
    const HMODULE lib = hLibVNTHTTPS;
    VntHttpsData working{};
    if (!GetHTTPSParam(lib, &working)) {
        ShowFuncCallErr("GetHTTPSSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetHTTPSSetting failed.return -1.");
        return -1;
    }

    // Build.
    zolui::Dialog dialog;
    HttpsFields f;
    dialog.open(BuildHttpsScreen(dialog, working, f), Text("TITLE_HTTPS_BASE_SETTING_ID"));

    // Handlers and save.
    const int closedBy = dialog.run({
        {kProxyId,
         [&] {
             ProxyDialog(working);
             return zolui::Next::Stay;
         }},
        {kTestPrimaryId, [&] { return TestHttps(lib, kTestPrimaryKind); }},
        {kTestSecondaryId, [&] { return TestHttps(lib, kTestSecondaryKind); }},
        {zolui::kOkId, [&] { return SaveHttps(lib, ReadHttpsFields(f), working); }},
    });
    const int saved = closedBy == zolui::kOkId ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", saved);
    return saved;
}
