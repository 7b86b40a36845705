// Checks of what the administrator typed into the mail-server screens (the internet-mail base
// screen and the POP / SMTP login dialog), without newt: each check answers the message of the
// first refused field, in the order the screens check them, and fills the record only when every
// field passed.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "records.h"

namespace mailinput {

// How a refusal is shown. The login dialog keeps three box styles on purpose: administrators'
// guides quote them.
enum class Box {
    Warning,       // msgWindow, title "WARNING", button " ok "
    WarningWide,   // msgWindowEx, title "WARNING", button "ok"
    WarningShort,  // msgWindow, title "WARNING", button "ok"
    MailAddress,   // msgWindow, title "IMAIL_DEST_TITLE_ID", button " ok ": the mail checks' box
};

struct Refusal {
    const char* messageId;
    Box box;
};

// Answers CheckPortAndIP's result for a server name or address (0 = usable).
using ServerCheck = std::function<int(const std::string& server)>;

// POP before SMTP half of the login dialog, as typed.
struct PopInput {
    std::string server, user, password, port, wait;
};
// SMTP authentication half.
struct SmtpInput {
    std::string user, password;
};

// The longest wait after the POP login, in seconds.
inline constexpr std::uint32_t kMaxPopWait = 60;

// Server, account, password, port, wait: the first refusal, or nothing with *record and *wait
// filled. checkServer runs only once the server is neither empty nor too long.
std::optional<Refusal> CheckPopInput(const PopInput& in, const ServerCheck& checkServer,
                                     POPParam* record, std::uint32_t* wait);
// Account, password: the first refusal, or nothing with *record filled.
std::optional<Refusal> CheckSmtpInput(const SmtpInput& in, SMTPParam* record);

// The internet-mail base screen's typed fields.
struct MailBaseInput {
    std::string server, port, sender;
};

// Server (empty, too long, then checkServer), port, then sender (the single mail-address check
// of frame/checks.h): the first refusal, or nothing with the server, port and sender (without its
// surrounding blanks) written into *record; its other fields are left alone. The sender's
// refusals are shown as the mail checks show theirs (Box::MailAddress), the others as
// Box::Warning.
std::optional<Refusal> CheckMailBaseInput(const MailBaseInput& in, const ServerCheck& checkServer,
                                          AMBIBaseData* record);

}  // namespace mailinput
