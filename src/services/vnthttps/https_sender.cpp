// vnthttps.dll's side of posting a report: loads the libcurl module only for the time of one post.
#include <cstdlib>
#include <string>

#include "https_post.h"
#include "report.h"

namespace vnthttps {

Attempt PostReport(const HttpsTarget& target, const std::string& payload, const std::string& kind) {
    const vntreport::ProductLibrary poster(kPosterLibrary);
    auto* post = poster.Entry<VntHttpsPost_fn>(kPosterEntry);
    if (post == nullptr)
        return {Attempt::Kind::Refused, "the HTTPS sender " + std::string(kPosterLibrary) +
                                            " cannot be used" +
                                            (poster.error().empty() ? "" : ": " + poster.error())};
    const VntHttpsPostRequest request{
        target.url.c_str(), target.useProxy ? 1 : 0, target.proxyHost.c_str(),
        target.proxyPort,   payload.data(),          payload.size(),
        kind.c_str()};
    char* text = nullptr;
    const int result = post(&request, &text);
    Attempt attempt;
    attempt.kind = result == 0   ? Attempt::Kind::Sent
                   : result == 1 ? Attempt::Kind::Retry
                                 : Attempt::Kind::Refused;
    if (text != nullptr) {
        attempt.text = text;
        std::free(text);
    }
    return attempt;
}

}  // namespace vnthttps
