// Fixture of the delivery tests: a product root seeded as a new installation with the
// service's data and the internet-mail settings pointing at a test server, the delivery library
// loaded by file name from lib/ as the program loads it, and readers of the alert log and trace.
#pragma once

#include <gtest/gtest.h>
#include <zolwin.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>

#include "product_root.h"
#include "regpaths.h"
#include "vantrelpkg_api.h"

namespace deliverytest {

// "テスト株式会社" in EUC-JP, as a Japanese installation stores it.
inline const std::string kCompanyEuc = "\xa5\xc6\xa5\xb9\xa5\xc8\xb3\xf4\xbc\xb0\xb2\xf1\xbc\xd2";

class DeliveryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(TraceLogInit(0, "deliverytest", 0, 5, 0), 0);
        SetText(ZOL_KEY_VNT_SETTING, "USERCODE", "U0001234");
        SetText(ZOL_KEY_VNT_SETTING, "TOKUINMA", "Example Corp.");
        SetText(ZOL_KEY_MAIL_SETTING, "MailFrom", "zol@example.com");
        SetAddress("ETo", "centre@example.com");
    }
    void TearDown() override { ZolRegCloseStore(); }

    static void SetRaw(const std::string& path, const char* name, DWORD type,
                       const std::string& data) {
        HKEY key = nullptr;
        ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, path.c_str(), &key), ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueEx(key, name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                                static_cast<DWORD>(data.size())),
                  ERROR_SUCCESS);
        RegCloseKey(key);
    }
    static void SetText(const std::string& key, const char* name, const std::string& text) {
        SetRaw(key, name, REG_SZ, std::string(text.c_str(), text.size() + 1));
    }
    static void SetDword(const std::string& key, const char* name, DWORD value) {
        SetRaw(key, name, REG_DWORD, std::string(reinterpret_cast<const char*>(&value), 4));
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

    struct Sent {
        uint32_t result = 99;
        std::string text;
    };
    // Calls entry `entry` of library `file` from lib/ with the kind, as the program does.
    Sent Send(const char* file, const char* entry, const char* kind) const {
        const std::string path = (root_.path() / "lib" / file).string();
        HMODULE lib = LoadLibrary(path.c_str());
        EXPECT_NE(lib, nullptr) << ZolLastLoadError();
        Sent sent;
        if (lib == nullptr)
            return sent;
        auto* send = reinterpret_cast<GUIVntReport_fn*>(GetProcAddress(lib, entry));
        EXPECT_NE(send, nullptr) << entry;
        char* text = nullptr;
        if (send != nullptr)
            sent.result = send(&text, kind);
        if (text != nullptr) {
            sent.text = text;
            std::free(text);
        }
        FreeLibrary(lib);
        return sent;
    }
    Sent SendMail(const char* kind) const { return Send("mailrpt.dll", "AMEIMain", kind); }

    // The alert log's lines without their time stamps.
    std::string AlertLines() const {
        std::string lines;
        const std::filesystem::path folder = root_.path() / "log" / "alert";
        if (!std::filesystem::exists(folder))
            return lines;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            std::istringstream in(zoltest::readFile(entry.path()));
            for (std::string line; std::getline(in, line);)
                lines += line.substr(line.find('\t') + 1) + "\n";
        }
        return lines;
    }
    std::string Trace() const { return zoltest::readFile(root_.traceFile("deliverytest")); }
    const zoltest::ProductRoot& root() const { return root_; }

  private:
    zoltest::ProductRoot root_{true};
    zoltest::ScopedEnv zolDir_{"ZolDir", root_.path().string()};
};

}  // namespace deliverytest
