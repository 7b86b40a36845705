// Real servers for the delivery tests, on loopback high ports, run as the test's own children:
// each object starts its server and stops it when it goes out of scope (on every exit path; a
// child also dies with the test process through PR_SET_PDEATHSIG).
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "test_process.h"

namespace deliverytest {

struct SmtpOptions {
    std::string user;  // empty: no authentication
    std::string password;
    const TestCa* tls = nullptr;  // STARTTLS offered with this certificate
};

// aiosmtpd (tests/delivery/smtp_server.py) writing what it accepts into its folder.
class SmtpServer {
  public:
    explicit SmtpServer(const SmtpOptions& options = {});
    uint16_t port() const { return port_; }
    bool ready() const { return ready_; }
    // The raw messages received so far, in order, and their envelopes.
    std::vector<std::string> Mails() const;
    std::vector<std::string> Envelopes() const;

  private:
    TempDir dir_;
    uint16_t port_;
    ChildProcess process_;
    bool ready_;
};

// dovecot's POP3 server with one user, its mailbox in a temporary folder.
class PopServer {
  public:
    PopServer(const std::string& user, const std::string& password);
    uint16_t port() const { return port_; }
    bool ready() const { return ready_; }
    // Successful logins of user so far, from dovecot's log.
    int Logins() const;
    // dovecot's log, for a failing test's message.
    std::string Log() const;

  private:
    TempDir dir_;
    uint16_t port_;
    std::filesystem::path config_;
    ChildProcess process_;
    bool ready_;
};

// Decodes ISO-2022-JP into UTF-8 ("<invalid>" when it is not).
std::string FromIso2022Jp(const std::string& text);
// Decodes base64 (whitespace ignored).
std::string FromBase64(const std::string& text);
// The decoded body of a mail: after the blank line, base64 decoded when the header says so,
// ISO-2022-JP converted when the charset says so.
std::string MailBody(const std::string& mail);

}  // namespace deliverytest
