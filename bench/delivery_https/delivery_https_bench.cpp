// Time from the call of the HTTPS delivery entry ("GUIVntReport" of vnthttps.dll, a stop report)
// to the report accepted by a local HTTPS server (Python's http.server with TLS and a test CA),
// median of N calls; beside it the report builder alone and a bare libcurl POST of the same
// payload over a new connection, the protocol's own round trips.
// Usage: delivery_https_bench [rounds] (default 20); it makes and removes its own product root.
#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "net_servers.h"
#include "product_root.h"
#include "regpaths.h"
#include "report.h"
#include "store_reader.h"
#include "vantrelpkg_api.h"
#include "zolwin.h"

namespace {

using Clock = std::chrono::steady_clock;

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.empty() ? -1 : v[v.size() / 2];
}

// Milliseconds of each of rounds calls of f; empty when one call failed.
std::vector<double> Time(int rounds, const std::function<bool()>& f) {
    std::vector<double> ms;
    for (int i = 0; i < rounds; ++i) {
        const auto start = Clock::now();
        if (!f())
            return {};
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    return ms;
}

size_t Drop(char*, size_t size, size_t count, void*) {
    return size * count;
}

bool BarePost(const std::string& url, const std::string& caFile, const std::string& payload) {
    const std::unique_ptr<CURL, void (*)(CURL*)> c(curl_easy_init(), curl_easy_cleanup);
    curl_easy_setopt(c.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(c.get(), CURLOPT_CAINFO, caFile.c_str());
    curl_easy_setopt(c.get(), CURLOPT_POSTFIELDS, payload.c_str());
    curl_easy_setopt(c.get(), CURLOPT_WRITEFUNCTION, Drop);
    if (curl_easy_perform(c.get()) != CURLE_OK)
        return false;
    long status = 0;
    curl_easy_getinfo(c.get(), CURLINFO_RESPONSE_CODE, &status);
    return status == 200;
}

void Report(const char* what, const std::vector<double>& ms) {
    if (ms.empty()) {
        std::printf("%-44s failed\n", what);
        return;
    }
    std::printf("%-44s median %7.2f ms  min %7.2f  max %7.2f  (n=%zu)\n", what, Median(ms),
                *std::min_element(ms.begin(), ms.end()), *std::max_element(ms.begin(), ms.end()),
                ms.size());
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    zoltest::ProductRoot root;
    const nettest::TestCa ca;
    const nettest::HttpsServer server(ca);
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    zoltest::ScopedEnv bundle("CURL_CA_BUNDLE", ca.caCert().string());
    const zoltest::StoreReader store(root);
    if (store.setText(ZOL_KEY_HTTPS_SETTING, "HTTPD1URL", server.url()) != ERROR_SUCCESS ||
        store.setText(ZOL_KEY_VNT_SETTING, "USERCODE", "B0000001") != ERROR_SUCCESS) {
        std::fprintf(stderr, "the store cannot be set up\n");
        return 1;
    }
    TraceLogInit(0, "delivery_https_bench", 0, 0, 0);
    const std::string lib = (root.path() / "lib" / "vnthttps.dll").string();
    const std::unique_ptr<void, void (*)(void*)> module(
        LoadLibrary(lib.c_str()), [](void* m) { FreeLibrary(static_cast<HMODULE>(m)); });
    auto* send = module ? reinterpret_cast<GUIVntReport_fn*>(
                              GetProcAddress(static_cast<HMODULE>(module.get()), "GUIVntReport"))
                        : nullptr;
    if (send == nullptr) {
        std::fprintf(stderr, "vnthttps.dll or GUIVntReport not found\n");
        return 1;
    }
    std::string why;
    const auto sample = vntreport::BuildReport("E", &why);
    if (!sample) {
        std::fprintf(stderr, "no report: %s\n", why.c_str());
        return 1;
    }
    const std::string payload = "Subject: " + sample->subject + "\r\n\r\n" + sample->body;
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    std::printf("HTTPS delivery to %s, %zu-byte report, %d rounds\n", server.url().c_str(),
                payload.size(), rounds);
    Report("GUIVntReport(\"E\"): call to accepted", Time(rounds, [&] {
               char* text = nullptr;
               const uint32_t result = send(&text, "E");
               std::free(text);
               return result == 0;
           }));
    Report("  of which BuildReport (store to text)", Time(rounds, [&] {
               std::string error;
               return vntreport::BuildReport("E", &error).has_value();
           }));
    Report("bare libcurl POST, new connection",
           Time(rounds, [&] { return BarePost(server.url(), ca.caCert().string(), payload); }));
    return server.bodies().size() == static_cast<std::size_t>(rounds) * 2 ? 0 : 1;
}
