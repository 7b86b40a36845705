// How long a stop report takes by mail: from the call of mailrpt.dll's AMEIMain (loaded from the
// product root as the program loads it) until it returns with the report accepted by a local
// SMTP server (aiosmtpd on loopback), and how much of that is the library's own work: building
// the report from the store and converting it for a Japanese mail, with no network at all.
// Usage: delivery_mail_bench [rounds] (default 20); it makes and removes its own product root
// and server.
#include <zolwin.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "product_root.h"
#include "regpaths.h"
#include "report.h"
#include "servers.h"
#include "vantrelpkg_api.h"

namespace {

using Clock = std::chrono::steady_clock;

void SetText(const char* key, const char* name, const std::string& text) {
    HKEY k = nullptr;
    RegCreateKey(HKEY_LOCAL_MACHINE, key, &k);
    RegSetValueEx(k, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                  static_cast<DWORD>(text.size() + 1));
    RegCloseKey(k);
}

void SetDword(const char* key, const char* name, DWORD value) {
    HKEY k = nullptr;
    RegCreateKey(HKEY_LOCAL_MACHINE, key, &k);
    RegSetValueEx(k, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
    RegCloseKey(k);
}

void Report(const char* what, std::vector<double> ms) {
    std::sort(ms.begin(), ms.end());
    std::printf("%-52s median %8.3f ms  min %8.3f  max %8.3f  (n=%zu)\n", what, ms[ms.size() / 2],
                ms.front(), ms.back(), ms.size());
}

template <class F>
double Time(F f) {
    const auto start = Clock::now();
    f();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    zoltest::ProductRoot root(true);
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    TraceLogInit(0, "deliverybench", 0, 0, 0);
    deliverytest::SmtpServer smtp;
    if (!smtp.ready()) {
        std::fprintf(stderr, "the SMTP server did not start\n");
        return 1;
    }
    SetText(ZOL_KEY_VNT_SETTING, "USERCODE", "U0001234");
    SetText(ZOL_KEY_VNT_SETTING, "TOKUINMN", "\xa5\xc6\xa5\xb9\xa5\xc8\xb3\xf4\xbc\xb0");
    SetText(ZOL_KEY_MAIL_SETTING, "SMTPServer", "127.0.0.1");
    SetDword(ZOL_KEY_MAIL_SETTING, "SMTPPort", smtp.port());
    SetText(ZOL_KEY_MAIL_SETTING, "MailFrom", "zol@example.com");
    SetText(ZOL_KEY_VANTREL_ADDRESS, "ETo", "centre@example.com");

    const std::string path = (root.path() / "lib" / "mailrpt.dll").string();
    std::vector<double> sent;
    for (int i = 0; i < rounds; ++i) {
        uint32_t result = 99;
        sent.push_back(Time([&] {
            HMODULE lib = LoadLibrary(path.c_str());
            auto* send = reinterpret_cast<GUIVntReport_fn*>(GetProcAddress(lib, "AMEIMain"));
            char* text = nullptr;
            result = send != nullptr ? send(&text, "E") : 99;
            std::free(text);
            FreeLibrary(lib);
        }));
        if (result != 0) {
            std::fprintf(stderr, "round %d: result %u\n", i, result);
            return 1;
        }
    }
    if (smtp.Mails().size() != static_cast<std::size_t>(rounds)) {
        std::fprintf(stderr, "%zu mails arrived of %d\n", smtp.Mails().size(), rounds);
        return 1;
    }
    Report("AMEIMain to the local SMTP server (load, send, free)", sent);

    SetDword(ZOL_KEY_VNT_SETTING, "VntLang", LANGID_JAPANESE);
    std::vector<double> build;
    for (int i = 0; i < rounds * 10; ++i) {
        build.push_back(Time([] {
            const auto report = vntreport::BuildReport("E", nullptr);
            if (!report || !vntreport::Utf8ToIso2022Jp(report->body))
                std::abort();
        }));
    }
    Report("report built from the store + ISO-2022-JP (no network)", build);
    ZolRegCloseStore();
    return 0;
}
