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

// Posts to each URL in turn until one takes the report. 1 only when every URL failed in a way
// that may pass (not reached, no answer).
vntreport::Outcome Post(const vntreport::Report& report, const VntHttpsData& s,
                        const std::vector<Url>& urls) {
    const std::string payload = "Subject: " + report.subject + "\r\n\r\n" + report.body;
    vntreport::Outcome outcome{kRetry, {}};
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

vntreport::Outcome Deliver(const vntreport::Report& report) {
    VntHttpsData settings{};
    if (GetHTTPSSetting(&settings) != 0)
        return {kRefused, "the HTTPS settings cannot be read"};
    std::string why;
    const std::vector<Url> urls = UrlsFor(report.kind, settings, &why);
    return urls.empty() ? vntreport::Outcome{kRefused, why} : Post(report, settings, urls);
}

}  // namespace

extern "C" ZOLWIN_API uint32_t GUIVntReport(char** errorText, const char* kind) {
    return vntreport::RunDelivery(errorText, kind, kMethod, Deliver);
}
static_assert(std::is_same_v<decltype(GUIVntReport), GUIVntReport_fn>);
