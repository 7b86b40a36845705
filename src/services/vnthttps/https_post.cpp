// vnthttps_post.so: posting a report with libcurl and mapping libcurl's outcome to the delivery
// convention.
#include "https_post.h"

#include <curl/curl.h>
#include <zolwin.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

#include "curlx.h"

namespace vnthttps {

namespace {

constexpr long kConnectSeconds = 10;
constexpr long kTransferSeconds = 60;

// The host named by url, for messages ("" when it cannot be parsed).
std::string HostOf(const std::string& url) {
    const curlx::Url parsed(curl_url());
    if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK)
        return {};
    char* host = nullptr;
    if (curl_url_get(parsed.get(), CURLUPART_HOST, &host, 0) != CURLUE_OK)
        return {};
    const curlx::Text owned(host);
    return owned.get();
}

size_t DropBody(char*, size_t size, size_t count, void*) {
    return size * count;
}

Attempt Retry(std::string text) {
    return {Attempt::Kind::Retry, std::move(text)};
}
Attempt Refused(std::string text) {
    return {Attempt::Kind::Refused, std::move(text)};
}

// libcurl's failure in the administrator's words.
Attempt FromCurlError(CURLcode rc, CURL* curl, const HttpsTarget& t, const char* detail) {
    const std::string host = HostOf(t.url);
    const std::string proxy = t.proxyHost + ":" + std::to_string(t.proxyPort);
    long proxyStatus = 0;
    curl_easy_getinfo(curl, CURLINFO_HTTP_CONNECTCODE, &proxyStatus);
    if (t.useProxy && proxyStatus >= 400)
        return Refused("the proxy " + proxy + " refused the connection to " + host + " (status " +
                       std::to_string(proxyStatus) + ")");
    switch (rc) {
        case CURLE_COULDNT_RESOLVE_HOST:
            return Refused("unknown host " + host);
        case CURLE_COULDNT_RESOLVE_PROXY:
            return Refused("unknown proxy host " + t.proxyHost);
        case CURLE_PEER_FAILED_VERIFICATION:
            return Refused("the HTTPS server's certificate is not trusted (" + host + ")");
        case CURLE_SSL_CONNECT_ERROR:
            return Refused("the secure connection to " + host + " failed: " + detail);
        case CURLE_URL_MALFORMAT:
        case CURLE_UNSUPPORTED_PROTOCOL:
            return Refused("the URL is not a valid https:// URL");
        case CURLE_COULDNT_CONNECT:
            return Retry(t.useProxy ? "the proxy " + proxy + " or the HTTPS server " + host +
                                          " cannot be reached"
                                    : "the HTTPS server " + host + " cannot be reached");
        case CURLE_OPERATION_TIMEDOUT:
            return Retry("the HTTPS server " + host + " did not answer in time");
        case CURLE_GOT_NOTHING:
        case CURLE_SEND_ERROR:
        case CURLE_RECV_ERROR:
            return Retry("the connection to " + host + " broke: " + detail);
        default:
            return Refused("the report could not be posted to " + host + ": " + detail);
    }
}

void SetOptions(CURL* curl, const HttpsTarget& t, const std::string& payload, curl_slist* headers,
                char* errorBuffer) {
    curl_easy_setopt(curl, CURLOPT_URL, t.url.c_str());
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "https");
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, kTransferSeconds);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 2L);
    // libcurl itself does not read CURL_CA_BUNDLE (the curl tool does): honour it the same way,
    // so that a private service centre's CA can be named without touching the system's store.
    if (const char* bundle = std::getenv("CURL_CA_BUNDLE"); bundle != nullptr && *bundle != '\0')
        curl_easy_setopt(curl, CURLOPT_CAINFO, bundle);
    if (t.useProxy) {
        const std::string proxy = "http://" + t.proxyHost + ":" + std::to_string(t.proxyPort);
        curl_easy_setopt(curl, CURLOPT_PROXY, proxy.c_str());  // libcurl copies the text
        curl_easy_setopt(curl, CURLOPT_HTTPPROXYTUNNEL, 1L);
    } else {
        curl_easy_setopt(curl, CURLOPT_PROXY, "");  // never a proxy from the environment
    }
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, payload.data());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(payload.size()));
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, DropBody);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, errorBuffer);
}

Attempt Post(const HttpsTarget& target, const std::string& payload, const std::string& kind) {
    const curlx::Easy curl(curl_easy_init());
    if (!curl)
        return Refused("the HTTPS library could not start (libcurl)");
    curlx::List headers;
    if (!curlx::Append(headers, "Content-Type: text/plain; charset=UTF-8") ||
        !curlx::Append(headers, "X-ZOLVNT-Kind: " + kind) ||
        !curlx::Append(headers, "Expect:"))  // no 100-continue round trip
        return Refused("the HTTPS library ran out of memory");
    char errorBuffer[CURL_ERROR_SIZE] = {};
    SetOptions(curl.get(), target, payload, headers.get(), errorBuffer);
    const CURLcode rc = curl_easy_perform(curl.get());
    if (rc != CURLE_OK) {
        const char* detail = errorBuffer[0] != '\0' ? errorBuffer : curl_easy_strerror(rc);
        return FromCurlError(rc, curl.get(), target, detail);
    }
    long status = 0;
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
    if (status >= 200 && status < 300)
        return {Attempt::Kind::Sent, {}};
    return Refused("the HTTPS server " + HostOf(target.url) + " answered with status " +
                   std::to_string(status));
}

}  // namespace

}  // namespace vnthttps

extern "C" ZOLWIN_API int VntHttpsPost(const VntHttpsPostRequest* request, char** text) {
    using vnthttps::Attempt;
    Attempt a{Attempt::Kind::Refused, "the HTTPS request is incomplete"};
    if (request != nullptr && request->url != nullptr && request->payload != nullptr &&
        request->kind != nullptr) {
        const vnthttps::HttpsTarget target{request->url, request->useProxy != 0,
                                           request->proxyHost ? request->proxyHost : "",
                                           request->proxyPort};
        a = vnthttps::Post(target, std::string(request->payload, request->payloadLength),
                           request->kind);
    }
    if (text != nullptr && !a.text.empty())
        *text = strdup(a.text.c_str());
    return static_cast<int>(a.kind);
}
static_assert(std::is_same_v<decltype(VntHttpsPost), VntHttpsPost_fn>);
