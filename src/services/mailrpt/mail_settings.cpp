// Reading the internet-mail delivery's settings for one report under one read snapshot.
#include "mail_settings.h"

#include <zolwin.h>
#include <zolwin_transaction.h>

#include <utility>

#include "regpaths.h"
#include "report.h"
#include "store.h"

namespace mailrpt {

Secret::~Secret() {
    vntreport::Wipe(&text_);
}
Secret::Secret(Secret&& other) noexcept : text_(std::move(other.text_)) {
    vntreport::Wipe(&other.text_);
}
Secret& Secret::operator=(Secret&& other) noexcept {
    if (this != &other) {
        vntreport::Wipe(&text_);
        text_ = std::move(other.text_);
        vntreport::Wipe(&other.text_);
    }
    return *this;
}

namespace {

constexpr const char* kMailKey = ZOL_KEY_MAIL_SETTING;
constexpr const char* kAddressKey = ZOL_KEY_VANTREL_ADDRESS;

// Reads values; the first failure leaves its administrator's text in error().
class Reader {
  public:
    std::string Text(const char* key, const char* name) {
        std::string text;
        switch (vntcore::ReadText(key, name, &text)) {
            case vntcore::Read::Ok:
            case vntcore::Read::Missing:
                break;
            case vntcore::Read::WrongType:
                Fail(std::string("the stored value ") + name + " has the wrong type");
                break;
            case vntcore::Read::Failed:
                Fail(std::string("the settings store cannot be read (") + name + ")");
                break;
        }
        return text;
    }
    uint32_t Number(const char* key, const char* name, uint32_t fallback) {
        const std::optional<DWORD> value = vntcore::ReadDwordOr(key, name, fallback);
        if (!value)
            Fail(std::string("the stored value ") + name + " has the wrong type");
        return value.value_or(fallback);
    }
    // A stored password, decoded in place.
    Secret Password(const char* name) {
        Secret secret;
        if (vntcore::ReadText(kMailKey, name, &secret.text()) == vntcore::Read::Failed)
            Fail(std::string("the settings store cannot be read (") + name + ")");
        Ras_Decode(secret.text().data(), static_cast<int>(secret.text().size()));
        return secret;
    }
    void Fail(std::string text) {
        if (error_.empty())
            error_ = std::move(text);
    }
    const std::string& error() const { return error_; }

  private:
    std::string error_;
};

// "a@x, b@y; c@z" as its addresses.
std::vector<std::string> SplitAddresses(const std::string& list) {
    std::vector<std::string> addresses;
    std::string current;
    for (const char c : list + ",") {
        if (c == ',' || c == ';' || c == ' ' || c == '\t') {
            if (!current.empty())
                addresses.push_back(std::move(current));
            current.clear();
        } else {
            current += c;
        }
    }
    return addresses;
}

void ReadLogins(Reader& reader, MailSettings* settings) {
    if (reader.Number(kMailKey, "SMTPAuth", 0) == 1) {
        SmtpLogin login;
        login.user = reader.Text(kMailKey, "SMTPAuthUser");
        login.password = reader.Password("SMTPAuthPass");
        settings->smtpAuth = std::move(login);
    }
    if (reader.Number(kMailKey, "POPBeforeSMTP", 0) == 1) {
        PopLogin pop;
        pop.server = reader.Text(kMailKey, "POPServer");
        pop.port = reader.Number(kMailKey, "POPPort", 110);
        pop.user = reader.Text(kMailKey, "POPUser");
        pop.password = reader.Password("POPPass");
        pop.waitSeconds = reader.Number(kMailKey, "POPTime", 0);
        if (pop.server.empty())
            reader.Fail("POP before SMTP is on but no POP server is set");
        settings->popBeforeSmtp = std::move(pop);
    }
}

// The first setting the mail cannot go without, in the administrator's words; empty when none.
std::string MissingSetting(const MailSettings& settings) {
    if (settings.server.empty())
        return "no SMTP server is set in the internet-mail base settings";
    if (settings.port < 1 || settings.port > 65535)
        return "the SMTP port of the internet-mail base settings is not 1 to 65535";
    if (settings.from.empty())
        return "no sender address is set in the internet-mail base settings";
    if (settings.to.empty())
        return "no address is set for the service's reports";
    return {};
}

}  // namespace

std::optional<MailSettings> ReadMailSettings(std::string* error) {
    const zolwin::ReadSnapshot snapshot;
    Reader reader;
    MailSettings settings;
    settings.server = reader.Text(kMailKey, "SMTPServer");
    settings.port = reader.Number(kMailKey, "SMTPPort", 25);
    settings.from = reader.Text(kMailKey, "MailFrom");
    // The service's address; before one is set on the destination screen, the service
    // centre's address from the key floppy.
    std::string to = reader.Text(kAddressKey, "ETo");
    if (to.empty())
        to = reader.Text(vntcore::kSetupKey, "MAILADRS");
    settings.to = SplitAddresses(to);
    const std::string subject = reader.Text(kAddressKey, "ESubject");
    if (const auto utf8 = vntreport::EucJpToUtf8(subject))
        settings.subject = *utf8;
    else
        reader.Fail("the stored subject (ESubject) is not valid EUC-JP text");
    ReadLogins(reader, &settings);
    std::string missing = reader.error().empty() ? MissingSetting(settings) : reader.error();
    if (!missing.empty()) {
        *error = std::move(missing);
        return std::nullopt;
    }
    return settings;
}

}  // namespace mailrpt
