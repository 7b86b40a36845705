// vnthttps.dll: sending a report over HTTPS. The report goes to the first URL of the HTTPS
// settings and, when that fails and the settings say to continue, to the second; the test kinds
// "T1" and "T2" address one URL each. The proxy of the settings is used when it is switched on.
#include <zolwin.h>

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "https_post.h"
#include "report.h"
#include "vantrelpkg_api.h"

// The library's own settings reader (settings.cpp).
extern "C" ZOLWIN_API int GetHTTPSSetting(VntHttpsData* record);

namespace {

constexpr const char* kMethod = "HTTPS";
constexpr uint32_t kSent = 0;
constexpr uint32_t kRetry = 1;
constexpr uint32_t kRefused = 4;

struct Url {
    int index;  // 1 or 2, as the settings number them
    std::string url;
};

// The URLs a report of this kind goes to, in order; empty with *why set when there is none.
std::vector<Url> UrlsFor(const std::string& kind, const VntHttpsData& s, std::string* why) {
    std::vector<Url> urls;
    const bool secondOnly = kind == "T2";
    const bool firstOnly = kind == "T1";
    if (!secondOnly && s.Url1[0] != '\0')
        urls.push_back({1, s.Url1});
    if (!firstOnly && s.Url2[0] != '\0' && (secondOnly || s.ContinueReport == 1))
        urls.push_back({2, s.Url2});
    if (urls.empty())
        *why = secondOnly ? "no second URL is set for HTTPS reports"
                          : "no first URL is set for HTTPS reports";
    return urls;
}

struct Delivery {
    uint32_t result = kRefused;
    std::string text;
};

// Posts to each URL in turn until one takes the report. 1 only when every URL failed in a way
// that may pass (not reached, no answer).
Delivery Deliver(const vntreport::Report& report, const VntHttpsData& s,
                 const std::vector<Url>& urls) {
    const std::string payload = "Subject: " + report.subject + "\r\n\r\n" + report.body;
    Delivery outcome{kRetry, {}};
    for (const Url& u : urls) {
        const vnthttps::HttpsTarget target{u.url, s.ProxyUse == 1, s.ProxyAddr,
                                           static_cast<int>(s.ProxyPort)};
        const vnthttps::Attempt a = vnthttps::PostReport(target, payload, report.kind);
        ZOL_TRACE(TRACE_LEVEL_TRACE, "URL %d: %s", u.index,
                  a.kind == vnthttps::Attempt::Kind::Sent ? "sent" : a.text.c_str());
        if (a.kind == vnthttps::Attempt::Kind::Sent)
            return {kSent, {}};
        if (a.kind == vnthttps::Attempt::Kind::Refused)
            outcome.result = kRefused;
        if (!outcome.text.empty())
            outcome.text += "; ";
        outcome.text += "URL " + std::to_string(u.index) + ": " + a.text;
    }
    return outcome;
}

}  // namespace

extern "C" ZOLWIN_API uint32_t GUIVntReport(char** errorText, const char* kind) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] kind=%s", kind ? kind : "(null)");
    std::string why;
    const std::optional<vntreport::Report> report = vntreport::BuildReport(kind ? kind : "", &why);
    if (!report) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<BuildReport failed.return %u.", kRefused);
        return vntreport::Finish(errorText, nullptr, kMethod, kRefused, why);
    }
    VntHttpsData settings{};
    Delivery outcome{kRefused, "the HTTPS settings cannot be read"};
    if (GetHTTPSSetting(&settings) == 0) {
        const std::vector<Url> urls = UrlsFor(report->kind, settings, &why);
        outcome = urls.empty() ? Delivery{kRefused, why} : Deliver(*report, settings, urls);
    }
    ZOL_TRACE(outcome.result == kSent ? TRACE_LEVEL_TRACE : TRACE_LEVEL_ERROR, "<return %u.",
              outcome.result);
    return vntreport::Finish(errorText, &*report, kMethod, outcome.result, outcome.text);
}
static_assert(std::is_same_v<decltype(GUIVntReport), GUIVntReport_fn>);
