// libcurl transfers of the mail delivery and the mapping of their failures to results.
#include "transfer.h"

#include <curl/curl.h>
#include <zolwin.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "curlx.h"
#include "report.h"

namespace mailrpt {
namespace {

constexpr long kConnectTimeoutSeconds = 30;
constexpr long kTransferTimeoutSeconds = 120;

// Which server a transfer talks to, for the texts.
struct Peer {
    const char* what;  // "SMTP" or "POP"
    std::string host;
    uint32_t port;
};

// The options every transfer shares: time limits, TLS when offered, verified certificates.
void CommonOptions(CURL* curl, char* errorBuffer) {
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kConnectTimeoutSeconds);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, kTransferTimeoutSeconds);
    curl_easy_setopt(curl, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_TRY));
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, errorBuffer);
    // A private CA (documented in the README): the PEM file named by CURL_CA_BUNDLE.
    if (const char* ca = std::getenv("CURL_CA_BUNDLE"); ca != nullptr && *ca != '\0')
        curl_easy_setopt(curl, CURLOPT_CAINFO, ca);
}

std::string Url(const char* scheme, const Peer& peer) {
    return std::string(scheme) + "://" + peer.host + ":" + std::to_string(peer.port) + "/";
}

std::string Where(const Peer& peer) {
    return peer.host + ":" + std::to_string(peer.port);
}

// A transfer's failure in the administrator's words. reply is the server's last reply code.
Outcome Failure(CURLcode code, long reply, const Peer& peer, std::string_view detail) {
    const std::string server = std::string("the ") + peer.what + " server " + Where(peer);
    switch (code) {
        case CURLE_COULDNT_CONNECT:
        case CURLE_OPERATION_TIMEDOUT:
        case CURLE_GOT_NOTHING:
            return {vntreport::kRetry, server + " cannot be reached now; try again later"};
        case CURLE_COULDNT_RESOLVE_HOST:
            return {vntreport::kFailed, "unknown host " + peer.host};
        case CURLE_LOGIN_DENIED:
            return {vntreport::kFailed,
                    std::string("the ") + peer.what + " server refused the login"};
        case CURLE_PEER_FAILED_VERIFICATION:
            return {vntreport::kFailed,
                    "the " + std::string(peer.what) + " server's certificate is not trusted"};
        case CURLE_SSL_CACERT_BADFILE:
            return {vntreport::kFailed, std::getenv("CURL_CA_BUNDLE") != nullptr
                                            ? "the CA file named by CURL_CA_BUNDLE cannot be read"
                                            : "the system's CA certificates cannot be read"};
        case CURLE_SSL_CONNECT_ERROR:
            return {vntreport::kFailed, "the TLS handshake with " + server + " failed"};
        default:
            break;
    }
    if (reply >= 400 && reply < 500)
        return {vntreport::kRetry, server + " cannot take the report now (reply " +
                                       std::to_string(reply) + "); try again later"};
    std::string text = server + " failed: " + curl_easy_strerror(code);
    if (!detail.empty())
        text += " (" + std::string(detail) + ")";
    return {vntreport::kFailed, text};
}

long LastReply(CURL* curl) {
    long reply = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &reply);
    return reply;
}

// Hands the mail to libcurl piece by piece.
struct Upload {
    std::string_view rest;
};
size_t ReadMail(char* buffer, size_t size, size_t count, void* userdata) {
    auto* upload = static_cast<Upload*>(userdata);
    const size_t n = std::min(size * count, upload->rest.size());
    std::memcpy(buffer, upload->rest.data(), n);
    upload->rest.remove_prefix(n);
    return n;
}

// A refused envelope: which address the server would not take.
Outcome EnvelopeRefusal(std::string_view detail, long reply, const MailSettings& settings) {
    const bool temporary = reply >= 400 && reply < 500;
    const uint32_t result = temporary ? vntreport::kRetry : vntreport::kFailed;
    const std::string code = " (reply " + std::to_string(reply) + ")";
    if (detail.starts_with("RCPT")) {
        std::string all;
        for (const std::string& to : settings.to)
            all += (all.empty() ? "" : ", ") + to;
        return {result, "the SMTP server refused the recipient " + all + code};
    }
    return {result, "the SMTP server refused the sender " + settings.from + code};
}

}  // namespace

Outcome PopLoginOnce(const PopLogin& pop) {
    const Peer peer{"POP", pop.server, pop.port};
    const curlx::Easy curl(curl_easy_init());
    if (!curl)
        return {vntreport::kFailed, "the mail library could not start (no memory)"};
    char errorBuffer[CURL_ERROR_SIZE] = {};
    CommonOptions(curl.get(), errorBuffer);
    const std::string url = Url("pop3", peer);
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_USERNAME, pop.user.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PASSWORD, pop.password.c_str());
    // Log in and say NOOP: nothing is read or deleted from the mailbox.
    curl_easy_setopt(curl.get(), CURLOPT_CUSTOMREQUEST, "NOOP");
    curl_easy_setopt(curl.get(), CURLOPT_NOBODY, 1L);
    const CURLcode code = curl_easy_perform(curl.get());
    if (code == CURLE_OK)
        return {vntreport::kSent, {}};
    ZOL_TRACE(TRACE_LEVEL_ERROR, "POP login to %s failed: %d %s", Where(peer).c_str(),
              static_cast<int>(code), errorBuffer);
    return Failure(code, LastReply(curl.get()), peer, errorBuffer);
}

Outcome SendMail(const MailSettings& settings, const std::string& mail) {
    const Peer peer{"SMTP", settings.server, settings.port};
    const curlx::Easy curl(curl_easy_init());
    if (!curl)
        return {vntreport::kFailed, "the mail library could not start (no memory)"};
    char errorBuffer[CURL_ERROR_SIZE] = {};
    CommonOptions(curl.get(), errorBuffer);
    const std::string url = Url("smtp", peer);
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
    const std::string from = "<" + settings.from + ">";
    curl_easy_setopt(curl.get(), CURLOPT_MAIL_FROM, from.c_str());
    curlx::List recipients;
    for (const std::string& to : settings.to) {
        if (!curlx::Append(recipients, "<" + to + ">"))
            return {vntreport::kFailed, "the mail library could not start (no memory)"};
    }
    curl_easy_setopt(curl.get(), CURLOPT_MAIL_RCPT, recipients.get());
    if (settings.smtpAuth) {
        curl_easy_setopt(curl.get(), CURLOPT_USERNAME, settings.smtpAuth->user.c_str());
        curl_easy_setopt(curl.get(), CURLOPT_PASSWORD, settings.smtpAuth->password.c_str());
    }
    Upload upload{mail};
    curl_easy_setopt(curl.get(), CURLOPT_READFUNCTION, ReadMail);
    curl_easy_setopt(curl.get(), CURLOPT_READDATA, &upload);
    curl_easy_setopt(curl.get(), CURLOPT_UPLOAD, 1L);
    const CURLcode code = curl_easy_perform(curl.get());
    if (code == CURLE_OK)
        return {vntreport::kSent, {}};
    const long reply = LastReply(curl.get());
    ZOL_TRACE(TRACE_LEVEL_ERROR, "SMTP to %s failed: %d reply %ld %s", Where(peer).c_str(),
              static_cast<int>(code), reply, errorBuffer);
    const std::string_view detail = errorBuffer;
    if (detail.starts_with("RCPT") || detail.starts_with("MAIL"))
        return EnvelopeRefusal(detail, reply, settings);
    return Failure(code, reply, peer, detail);
}

}  // namespace mailrpt
