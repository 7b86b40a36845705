// Checks of the mail-server screens' typed fields: plain functions, unit-tested without a screen.
#include "baseset/mailserver_input.h"

#include "frame/checks.h"

#include <cstring>

namespace mailinput {

namespace {

constexpr std::uint32_t kMaxPort = 65535;

// A registry text field holds at most REG_TEXT_SIZE - 1 bytes.
bool tooLong(const std::string& text) {
    return text.size() >= REG_TEXT_SIZE;
}

// Copies a checked text (shorter than the field) with its terminator.
void copyField(char (&field)[REG_TEXT_SIZE], std::string_view text) {
    std::memset(field, 0, sizeof field);
    std::memcpy(field, text.data(), text.size());
}

// One text field's two checks: empty, then too long.
std::optional<Refusal> checkText(const std::string& text, const char* emptyId, const char* longId,
                                 Box box) {
    if (text.empty())
        return Refusal{emptyId, box};
    if (tooLong(text))
        return Refusal{longId, box};
    return std::nullopt;
}

bool isPort(const std::optional<std::uint32_t>& port) {
    return port && *port >= 1 && *port <= kMaxPort;
}

}  // namespace

std::optional<Refusal> CheckPopInput(const PopInput& in, const ServerCheck& checkServer,
                                     POPParam* record, std::uint32_t* wait) {
    if (auto r = checkText(in.server, "POP_MAILSRV_EMPTY", "MAILSV_LENGTH_ERROR", Box::Warning))
        return r;
    if (checkServer(in.server) != 0)
        return Refusal{"IDS_ERR_INVALID_IPADDRESS", Box::Warning};
    if (auto r = checkText(in.user, "POP_ACCOUNT_EMPTY", "ACCOUNT_LENGTH_ERROR", Box::Warning))
        return r;
    if (auto r = checkText(in.password, "POP_PASSWORD_EMPTY", "PASSWD_LENGTH_ERROR", Box::Warning))
        return r;
    if (in.port.empty())
        return Refusal{"POP_PORT_EMPTY", Box::Warning};
    const auto port = checks::ParseDecimal(in.port);
    if (!isPort(port))
        return Refusal{"POP_PORT_ERR", Box::WarningWide};
    if (in.wait.empty())
        return Refusal{"POP_LATENCY_EMPTY", Box::WarningShort};
    const auto seconds = checks::ParseDecimal(in.wait);
    if (!seconds || *seconds > kMaxPopWait)
        return Refusal{"LATENCY_TIME_ERR", Box::WarningShort};

    std::memset(record, 0, sizeof *record);
    copyField(record->Server, in.server);
    copyField(record->User, in.user);
    copyField(record->Password, in.password);
    record->Port = *port;
    *wait = *seconds;
    return std::nullopt;
}

std::optional<Refusal> CheckSmtpInput(const SmtpInput& in, SMTPParam* record) {
    if (auto r = checkText(in.user, "SMTP_ACNT_EMPTY", "SMTP_ACNT_LENGTH", Box::WarningShort))
        return r;
    if (auto r = checkText(in.password, "SMTP_PASS_EMPTY", "SMTP_PASS_LENGTH", Box::WarningShort))
        return r;
    std::memset(record, 0, sizeof *record);
    copyField(record->User, in.user);
    copyField(record->Password, in.password);
    return std::nullopt;
}

std::optional<Refusal> CheckMailBaseInput(const MailBaseInput& in, const ServerCheck& checkServer,
                                          AMBIBaseData* record) {
    if (auto r = checkText(in.server, "IMAIL_BASE_SMTP_ERR1", "IMAIL_BASE_SMTP_ERR2", Box::Warning))
        return r;
    if (checkServer(in.server) != 0)
        return Refusal{"IDS_ERR_INVALID_IPADDRESS", Box::Warning};
    const auto port = checks::ParseDecimal(in.port);
    if (!isPort(port))
        return Refusal{"IMAIL_BASE_PORT_ERR1", Box::Warning};
    if (const char* fault = SingleMailAddrFault(in.sender.c_str()))
        return Refusal{fault, Box::MailAddress};
    // The address check allows blanks around the address; they are not part of it.
    const std::string_view sender = checks::TrimBlanks(in.sender);
    if (sender.size() >= REG_TEXT_SIZE)
        return Refusal{"IMAIL_BASE_MLFROM_ERR1", Box::Warning};

    copyField(record->SMTPServer, in.server);
    copyField(record->MailFrom, sender);
    record->SMTPPort = *port;
    return std::nullopt;
}

}  // namespace mailinput
