// The internet-mail delivery's settings, read whole from the store for one report: the SMTP
// server of the internet-mail base settings, the logins of SMTP authentication and POP before
// SMTP, and the service's address. Passwords are held decoded only here, and wiped with it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mailrpt {

// A decoded password: wiped when it goes out of scope.
class Secret {
  public:
    Secret() = default;
    ~Secret();
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    Secret(Secret&& other) noexcept;
    Secret& operator=(Secret&& other) noexcept;

    std::string& text() { return text_; }
    const char* c_str() const { return text_.c_str(); }

  private:
    std::string text_;
};

struct PopLogin {
    std::string server;
    uint32_t port = 110;
    std::string user;
    Secret password;
    uint32_t waitSeconds = 0;
};

struct SmtpLogin {
    std::string user;
    Secret password;
};

struct MailSettings {
    std::string server;  // SMTP server: host name or dotted IPv4 address
    uint32_t port = 25;
    std::string from;
    std::vector<std::string> to;  // the service's addresses
    std::string subject;          // ESubject as UTF-8; empty: the report's own
    std::optional<SmtpLogin> smtpAuth;
    std::optional<PopLogin> popBeforeSmtp;
};

// The settings, or nullopt with *error set to an administrator's text (an empty server, sender
// or address, a value of the wrong type, a store that cannot be read).
std::optional<MailSettings> ReadMailSettings(std::string* error);

}  // namespace mailrpt
