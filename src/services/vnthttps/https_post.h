// One report posted to one URL with libcurl, and what became of it in the administrator's words.
// The posting lives in a module of its own, "vnthttps_post.so", which alone links libcurl and its
// TLS stack: the program loads vnthttps.dll at start-up for the HTTPS settings, and loading
// libcurl there would cost every start tens of milliseconds. vnthttps.dll loads the module only
// while a report is sent.
#pragma once

#include <cstddef>
#include <string>

extern "C" {
// The module's entry "VntHttpsPost": the request, and the reason when not sent (malloc'd, the
// caller frees it). Answers 0 sent, 1 may be tried again, 2 refused (Attempt::Kind's order).
struct VntHttpsPostRequest {
    const char* url;
    int useProxy;
    const char* proxyHost;
    int proxyPort;
    const char* payload;
    std::size_t payloadLength;
    const char* kind;
};
typedef int VntHttpsPost_fn(const VntHttpsPostRequest* request, char** text);
}

namespace vnthttps {

struct HttpsTarget {
    std::string url;
    bool useProxy = false;
    std::string proxyHost;
    int proxyPort = 0;
};

struct Attempt {
    enum class Kind {
        Sent,     // the server accepted the report (2xx)
        Retry,    // the server or the proxy did not answer: may be tried again later
        Refused,  // anything else: unknown host, untrusted certificate, an HTTP error status
    };
    Kind kind = Kind::Refused;
    std::string text;  // why, when not sent
};

inline constexpr const char* kPosterLibrary = "vnthttps_post.so";
inline constexpr const char* kPosterEntry = "VntHttpsPost";

// Posts payload (UTF-8 text) as "text/plain; charset=UTF-8" with the report's kind in the
// "X-ZOLVNT-Kind" header. The server's certificate is verified against the system's CAs, or the
// bundle named by CURL_CA_BUNDLE when that is set. Runs in vnthttps.dll, through the module.
Attempt PostReport(const HttpsTarget& target, const std::string& payload, const std::string& kind);

}  // namespace vnthttps
