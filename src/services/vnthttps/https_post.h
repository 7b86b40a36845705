// One report posted to one URL with libcurl, and what became of it in the administrator's words.
#pragma once

#include <string>

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

// Posts payload (UTF-8 text) as "text/plain; charset=UTF-8" with the report's kind in the
// "X-ZOLVNT-Kind" header. The server's certificate is verified against the system's CAs, or the
// bundle named by CURL_CA_BUNDLE when that is set.
Attempt PostReport(const HttpsTarget& target, const std::string& payload, const std::string& kind);

}  // namespace vnthttps
