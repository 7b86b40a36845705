// The delivery tests' servers and helpers.
#include "servers.h"

#include <iconv.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "product_root.h"

namespace deliverytest {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> ReadNumbered(const fs::path& dir, const char* suffix) {
    std::vector<std::string> all;
    for (int n = 1;; ++n) {
        const fs::path file = dir / ("mail-" + std::to_string(n) + suffix);
        if (!fs::exists(file))
            return all;
        all.push_back(zoltest::readFile(file));
    }
}

}  // namespace

SmtpServer::SmtpServer(const SmtpOptions& options)
    : port_(FreePort()),
      process_(
          [&] {
              std::vector<std::string> argv = {"/usr/bin/python3",
                                               ZOL_SOURCE_DIR "/tests/delivery/smtp_server.py",
                                               "--port",
                                               std::to_string(port_),
                                               "--dir",
                                               dir_.path().string()};
              if (!options.user.empty())
                  argv.insert(argv.end(), {"--user", options.user, "--password", options.password});
              if (options.tls != nullptr)
                  argv.insert(argv.end(), {"--cert", options.tls->serverCert().string(), "--key",
                                           options.tls->serverKey().string()});
              return argv;
          }(),
          dir_.path() / "server.log"),
      ready_(WaitForPort(port_)) {}

std::vector<std::string> SmtpServer::Mails() const {
    return ReadNumbered(dir_.path(), ".eml");
}
std::vector<std::string> SmtpServer::Envelopes() const {
    return ReadNumbered(dir_.path(), ".env");
}

namespace {

// Dovecot never runs a mailbox process as root: a test run as root gives the mailbox to
// "nobody".
constexpr uid_t kNobody = 65534;
uid_t MailUid() {
    return getuid() == 0 ? kNobody : getuid();
}
gid_t MailGid() {
    return getuid() == 0 ? kNobody : getgid();
}

std::string DovecotConfig(const fs::path& dir, uint16_t port) {
    const std::string d = dir.string();
    std::ostringstream c;
    c << "protocols = pop3\nlisten = 127.0.0.1\nbase_dir = " << d << "/run\n"
      << "state_dir = " << d << "/state\nlog_path = " << d << "/dovecot.log\n"
      << "ssl = no\ndisable_plaintext_auth = no\nauth_mechanisms = plain login\n"
      << "mail_location = maildir:" << d << "/mail/%u\n"
      << "pop3_uidl_format = %08Xu%08Xv\nauth_verbose = yes\nfirst_valid_uid = 1\n"
      << "passdb {\n  driver = passwd-file\n  args = scheme=PLAIN username_format=%u " << d
      << "/passwd\n}\n"
      << "userdb {\n  driver = static\n  args = uid=" << MailUid() << " gid=" << MailGid()
      << " home=" << d << "/home/%u\n}\n"
      << "service pop3-login {\n  chroot =\n  inet_listener pop3 {\n    port = " << port
      << "\n  }\n  inet_listener pop3s {\n    port = 0\n  }\n}\n"
      << "service anvil {\n  chroot =\n}\nservice imap-login {\n  chroot =\n}\n";
    if (getuid() != 0) {
        const char* user = std::getenv("USER");
        c << "default_internal_user = " << (user ? user : "nobody")
          << "\ndefault_login_user = " << (user ? user : "nobody")
          << "\ndefault_internal_group = " << getgid() << "\n";
    }
    return c.str();
}

}  // namespace

PopServer::PopServer(const std::string& user, const std::string& password)
    : port_(FreePort()),
      config_([&] {
          fs::permissions(dir_.path(),
                          fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
          fs::create_directories(dir_.path() / "mail");
          fs::create_directories(dir_.path() / "home");
          if (chown((dir_.path() / "mail").c_str(), MailUid(), MailGid()) != 0 ||
              chown((dir_.path() / "home").c_str(), MailUid(), MailGid()) != 0)
              throw std::runtime_error("cannot give the mailbox folders to the mail user");
          zoltest::writeFile(dir_.path() / "passwd", user + ":{PLAIN}" + password + "\n");
          zoltest::writeFile(dir_.path() / "dovecot.conf", DovecotConfig(dir_.path(), port_));
          return dir_.path() / "dovecot.conf";
      }()),
      process_({"/usr/sbin/dovecot", "-F", "-c", config_.string()}, dir_.path() / "server.out"),
      ready_(WaitForPort(port_)) {}

std::string PopServer::Log() const {
    return zoltest::readFile(dir_.path() / "dovecot.log") +
           zoltest::readFile(dir_.path() / "server.out");
}

int PopServer::Logins() const {
    const std::string log = zoltest::readFile(dir_.path() / "dovecot.log");
    int count = 0;
    for (std::size_t at = log.find("pop3-login: Info: Login: user=<"); at != std::string::npos;
         at = log.find("pop3-login: Info: Login: user=<", at + 1))
        ++count;
    return count;
}

std::string FromIso2022Jp(const std::string& text) {
    iconv_t cd = iconv_open("UTF-8", "ISO-2022-JP");
    std::string out(text.size() * 4 + 4, '\0');
    char* in = const_cast<char*>(text.data());
    size_t inLeft = text.size();
    char* dst = out.data();
    size_t outLeft = out.size();
    const size_t rc = iconv(cd, &in, &inLeft, &dst, &outLeft);
    iconv_close(cd);
    if (rc == static_cast<size_t>(-1))
        return "<invalid>";
    out.resize(out.size() - outLeft);
    return out;
}

std::string FromBase64(const std::string& text) {
    static const std::string kAlphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        const std::size_t v = kAlphabet.find(c);
        if (v == std::string::npos)
            continue;
        bits = (bits << 6) | static_cast<uint32_t>(v);
        count += 6;
        if (count >= 8) {
            count -= 8;
            out += static_cast<char>((bits >> count) & 0xFF);
        }
    }
    return out;
}

std::string MailBody(const std::string& mail) {
    const std::size_t split = mail.find("\r\n\r\n");
    if (split == std::string::npos)
        return "<no body>";
    const std::string header = mail.substr(0, split);
    std::string body = mail.substr(split + 4);
    if (header.find("Content-Transfer-Encoding: base64") != std::string::npos)
        body = FromBase64(body);
    if (header.find("charset=ISO-2022-JP") != std::string::npos)
        body = FromIso2022Jp(body);
    return body;
}

}  // namespace deliverytest
