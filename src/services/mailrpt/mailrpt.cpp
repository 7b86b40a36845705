// mailrpt.dll: the remote report service's internet-mail delivery. AMEIMain builds the report of
// the kind asked for, logs in to the POP server first when POP before SMTP is on (then waits the
// configured time), and sends the report to the service's address through the SMTP server of the
// internet-mail base settings. Results and texts follow vntreport's outcome convention.
#include <curl/curl.h>
#include <zolwin.h>

#include <chrono>
#include <thread>
#include <type_traits>

#include "mail_settings.h"
#include "message.h"
#include "report.h"
#include "transfer.h"
#include "vantrelpkg_api.h"

namespace {

constexpr const char* kMethod = "InternetMail";

// libcurl's process-wide state for the length of one report (reference-counted by libcurl).
class CurlGlobal {
  public:
    CurlGlobal() : ok_(curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK) {}
    ~CurlGlobal() {
        if (ok_)
            curl_global_cleanup();
    }
    CurlGlobal(const CurlGlobal&) = delete;
    CurlGlobal& operator=(const CurlGlobal&) = delete;
    bool ok() const { return ok_; }

  private:
    bool ok_;
};

mailrpt::Outcome Deliver(const vntreport::Report& report) {
    std::string error;
    const std::optional<mailrpt::MailSettings> settings = mailrpt::ReadMailSettings(&error);
    if (!settings)
        return {vntreport::kFailed, error};
    const std::optional<std::string> mail =
        mailrpt::ComposeMail(report, settings->from, settings->to, settings->subject, &error);
    if (!mail)
        return {vntreport::kFailed, error};
    const CurlGlobal curl;
    if (!curl.ok())
        return {vntreport::kFailed, "the mail library could not start"};
    if (settings->popBeforeSmtp) {
        const mailrpt::Outcome pop = mailrpt::PopLoginOnce(*settings->popBeforeSmtp);
        if (pop.result != vntreport::kSent)
            return pop;
        std::this_thread::sleep_for(std::chrono::seconds(settings->popBeforeSmtp->waitSeconds));
    }
    return mailrpt::SendMail(*settings, *mail);
}

}  // namespace

extern "C" ZOLWIN_API uint32_t AMEIMain(char** errorText, const char* kind) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] kind=%s", kind != nullptr ? kind : "(null)");
    std::string error;
    const std::optional<vntreport::Report> report =
        vntreport::BuildReport(kind != nullptr ? kind : "", &error);
    if (!report) {
        const uint32_t result =
            vntreport::Finish(errorText, nullptr, kMethod, vntreport::kFailed, error);
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<no report.return %u.", result);
        return result;
    }
    const mailrpt::Outcome outcome = Deliver(*report);
    const uint32_t result =
        vntreport::Finish(errorText, &*report, kMethod, outcome.result, outcome.text);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %u.", result);
    return result;
}
static_assert(std::is_same_v<decltype(AMEIMain), GUIVntReport_fn>);
