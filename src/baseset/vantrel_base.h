// The remote report service's base screens: the service's switch and delivery method
// (VantrelBaseSetting, declared with the other base-setting screens in baseset.h), and the
// internet-mail delivery's mail server and sender.
#pragma once

#include <zolwin.h>

// Base-setting records that switch the remote report service on, one per delivery method: the
// service reports by the method whose record is enabled.
inline constexpr const char* kVantrelRecordNames[] = {
    "VantrelReport(Internet Mail)",   // VANTREL_INTERNETMAIL
    "VantrelReport(Dial-up)",         // VANTREL_DIALUP
    "VantrelReport(TransToManager)",  // VANTREL_TRANSTOMANAGER
    "VantrelReport(HTTPS)",           // VANTREL_HTTPS
};

// The internet-mail delivery's base screen: SMTP server and port, sender address, date format,
// and the POP before SMTP / SMTP authentication switches with their login dialog. 0, or -1 when
// the screen could not start (after an error box).
int IMailBaseSetting(HINSTANCE hLibRPTSET);
