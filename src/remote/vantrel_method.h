// The remote report service's dial-up and HTTPS method screens: what their OK turns the typed
// values into, and what a test report's outcome shows, without a screen.
#pragma once

#include <zolwin.h>

#include <string>

#include "frame/delivery_calls.h"
#include "records.h"

// ---- Dial-up ----

// What the dial-up screen's fields hold on OK.
struct DialUpEntries {
    std::string primary, secondary, user, device, redial;
    int mode = 0;  // the chosen radio button: 0 tone, 1 pulse; -1 none
};
// The checks of OK in the screen's order: the message ID of the first refusal (record left as
// it was), or null with the typed values put into record.
const char* ApplyDialUpEntries(const DialUpEntries& entries, VntDialData& record);

// ---- HTTPS ----

// What the HTTPS screen's fields hold on OK.
struct HttpsEntries {
    std::string url1, url2;
    bool continueReport = false;
};
// The checks of OK: the primary URL, then the secondary one (required while the secondary is
// tried after the primary); the first refusal's message ID, or null with record filled.
const char* ApplyHttpsEntries(const HttpsEntries& entries, VntHttpsData& record);

// What the proxy dialog's fields hold on OK.
struct ProxyEntries {
    bool use = false;
    std::string host, port;
};
// The proxy's checks: a host is required while the proxy is used, never holds a blank and fits
// the store; the port is always 1 to 65535. The first refusal's message ID, or null with record
// filled.
const char* ApplyProxyEntries(const ProxyEntries& entries, VntHttpsData& record);

// ---- Test reports ----

// The box that tells a test report's outcome: its title, the message ID of its text and what
// that text is formatted with (a library or function name; empty when nothing), and the
// library's own error text shown under it.
struct TestReportBox {
    const char* title;
    const char* messageId;
    std::string argument;
    std::string detail;
};
TestReportBox TestReportOutcomeBox(const DeliveryOutcome& outcome, const char* library,
                                   const char* entry);

// Sends one test report through the delivery entry and shows its outcome box.
void ShowTestReport(const DeliveryOutcome& outcome, const char* library, const char* entry);
