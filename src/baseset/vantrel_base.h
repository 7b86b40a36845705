// The remote report service's base screens: the service's switch and delivery method
// (VantrelBaseSetting, declared with the other base-setting screens in baseset.h), and the
// internet-mail delivery's mail server and sender; with what their OK does, without a screen.
#pragma once

#include <zolwin.h>

#include <functional>
#include <optional>

#include "baseset/mailserver_input.h"
#include "records.h"

// Base-setting records that switch the remote report service on, one per delivery method: the
// service reports by the method whose record is enabled.
inline constexpr const char* kVantrelRecordNames[] = {
    "VantrelReport(Internet Mail)",   // VANTREL_INTERNETMAIL
    "VantrelReport(Dial-up)",         // VANTREL_DIALUP
    "VantrelReport(TransToManager)",  // VANTREL_TRANSTOMANAGER
    "VantrelReport(HTTPS)",           // VANTREL_HTTPS
};

// What the service's base screen holds when OK is pressed.
struct VantrelBaseState {
    bool enabled = false;  // the service's switch
    int chosen = -1;       // the chosen delivery method (VANTREL_*), -1 while none is
};
// The refusal of OK ("WARN_INVALID_ID": the service switched on without a method), or null. OK
// stores the chosen method with the switch, or keeps the stored method while none is chosen.
const char* CheckVantrelBase(const VantrelBaseState& state);

// The steps of OK that reach beyond the screen, given as functions so that their order can be
// driven without a terminal.
struct ServiceSwitchSteps {
    std::function<bool()> keyFloppyRead;        // CheckInstVantrelFD
    std::function<int(int method)> openMethod;  // the method's screen: 1 saved, 0 left, -1 failed
    std::function<bool(int method, bool on)> store;  // SetVntReport
};
enum class SwitchOutcome {
    Refused,      // messageId says why; nothing stored
    NotSaved,     // the method's screen was left without storing: nothing stored
    StoreFailed,  // the switch could not be stored
    Stored,
};
struct SwitchResult {
    SwitchOutcome outcome;
    const char* messageId = nullptr;
};
// OK of the service's base screen. Switching off stores at once. Switching on is refused until
// the key floppy has been read ("IMAIL_INSERT_FD_ID"), then opens the chosen method's screen and
// stores the method and the switch only once that screen has stored the method's settings, so
// that the service is never on by a method that is not set up.
SwitchResult ApplyServiceSwitch(const VantrelBaseState& state, const ServiceSwitchSteps& steps);

// The internet-mail delivery's base screen: SMTP server and port, sender address, date format,
// and the POP before SMTP / SMTP authentication switches with their login dialog. 1 when OK
// stored the record, 0 when left without storing, -1 when the screen could not start (after an
// error box).
int IMailBaseSetting(HMODULE lib);

// What the internet-mail base screen holds when OK is pressed.
struct MailBaseState {
    mailinput::MailBaseInput input;  // server, port and sender as typed
    int dateFormat = -1;             // the chosen date format (0 local, 1 universal), -1 none
    bool pop = false;                // POP before SMTP
    bool auth = false;               // SMTP authentication
};
// The checks of OK in order (mailinput::CheckMailBaseInput), then the state put into record: the
// first refusal leaves record as it was. A date format the screen does not know stays as stored
// while neither is chosen.
std::optional<mailinput::Refusal> ApplyMailBase(const MailBaseState& state,
                                                const mailinput::ServerCheck& checkServer,
                                                AMBIBaseData& record);
