// Fixture of the delivery tests: a product root seeded as a new installation with the
// service's data and the internet-mail settings pointing at a test server, the delivery library
// loaded by file name from lib/ as the program loads it (library_fixture.h).
#pragma once

#include <cstdint>
#include <string>

#include "library_fixture.h"
#include "regpaths.h"

namespace deliverytest {

// "テスト株式会社" in EUC-JP, as a Japanese installation stores it.
inline const std::string kCompanyEuc = "\xa5\xc6\xa5\xb9\xa5\xc8\xb3\xf4\xbc\xb0\xb2\xf1\xbc\xd2";

class DeliveryTest : public LibraryTest {
  protected:
    DeliveryTest() : LibraryTest("deliverytest") {}
    void SetUp() override {
        LibraryTest::SetUp();
        SetText(ZOL_KEY_VNT_SETTING, "USERCODE", "U0001234");
        SetText(ZOL_KEY_VNT_SETTING, "TOKUINMA", "Example Corp.");
        SetText(ZOL_KEY_MAIL_SETTING, "MailFrom", "zol@example.com");
        SetAddress("ETo", "centre@example.com");
    }

    static void SetAddress(const char* name, const std::string& text) {
        SetText(ZOL_KEY_VANTREL_ADDRESS, name, text);
    }
    // A password as the login dialog stores it: encoded with Ras_Encode.
    static void SetPassword(const char* name, std::string plain) {
        Ras_Encode(plain.data(), static_cast<int>(plain.size()));
        SetText(ZOL_KEY_MAIL_SETTING, name, plain);
    }
    static void UseSmtp(uint16_t port, const std::string& server = "127.0.0.1") {
        SetText(ZOL_KEY_MAIL_SETTING, "SMTPServer", server);
        SetDword(ZOL_KEY_MAIL_SETTING, "SMTPPort", port);
    }
    static void SetSmtpLogin(const std::string& user, const std::string& password) {
        SetDword(ZOL_KEY_MAIL_SETTING, "SMTPAuth", 1);
        SetText(ZOL_KEY_MAIL_SETTING, "SMTPAuthUser", user);
        SetPassword("SMTPAuthPass", password);
    }
    static void SetPopLogin(uint16_t port, const std::string& user, const std::string& password,
                            DWORD wait) {
        SetDword(ZOL_KEY_MAIL_SETTING, "POPBeforeSMTP", 1);
        SetText(ZOL_KEY_MAIL_SETTING, "POPServer", "127.0.0.1");
        SetDword(ZOL_KEY_MAIL_SETTING, "POPPort", port);
        SetText(ZOL_KEY_MAIL_SETTING, "POPUser", user);
        SetPassword("POPPass", password);
        SetDword(ZOL_KEY_MAIL_SETTING, "POPTime", wait);
    }

    using Sent = Outcome;
    Sent SendMail(const char* kind) const { return Call("mailrpt.dll", "AMEIMain", kind); }
};

}  // namespace deliverytest
