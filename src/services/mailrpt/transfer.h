// The mail's way out over libcurl: the POP login of POP before SMTP and the SMTP transfer, each
// ending in a delivery result (0 sent, 1 may be tried again, 4 failed) and an administrator's
// text. STARTTLS is used when the server offers it; certificates are verified against the
// system's CAs, or the file named by CURL_CA_BUNDLE when it is set.
#pragma once

#include <cstdint>
#include <string>

#include "mail_settings.h"
#include "report.h"

namespace mailrpt {

using vntreport::Outcome;

Outcome PopLoginOnce(const PopLogin& pop);
Outcome SendMail(const MailSettings& settings, const std::string& mail);

}  // namespace mailrpt
