// mailrpt.dll: the remote report service's internet-mail delivery. AMEIMain builds the report of
// the kind asked for, logs in to the POP server first when POP before SMTP is on (then waits the
// configured time), and sends the report to the service's address through the SMTP server of the
// internet-mail base settings. Results and texts follow vntreport's outcome convention.
#include <curl/curl.h>
#include <zolwin.h>

#include <chrono>
#include <thread>
#include <type_traits>

#include "curlx.h"
#include "mail_settings.h"
#include "message.h"
#include "report.h"
#include "transfer.h"
#include "vantrelpkg_api.h"

namespace {

constexpr const char* kMethod = "InternetMail";

vntreport::Outcome Deliver(const vntreport::Report& report) {
    std::string error;
    const std::optional<mailrpt::MailSettings> settings = mailrpt::ReadMailSettings(&error);
    if (!settings)
        return {vntreport::kFailed, error};
    const std::optional<std::string> mail =
        mailrpt::ComposeMail(report, settings->from, settings->to, settings->subject, &error);
    if (!mail)
        return {vntreport::kFailed, error};
    const curlx::Global curl;
    if (!curl.ok())
        return {vntreport::kFailed, "the mail library could not start"};
    if (settings->popBeforeSmtp) {
        const vntreport::Outcome pop = mailrpt::PopLoginOnce(*settings->popBeforeSmtp);
        if (pop.result != vntreport::kSent)
            return pop;
        std::this_thread::sleep_for(std::chrono::seconds(settings->popBeforeSmtp->waitSeconds));
    }
    return mailrpt::SendMail(*settings, *mail);
}

}  // namespace

extern "C" ZOLWIN_API uint32_t AMEIMain(char** errorText, const char* kind) {
    return vntreport::RunDelivery(errorText, kind, kMethod, Deliver);
}
static_assert(std::is_same_v<decltype(AMEIMain), GUIVntReport_fn>);
