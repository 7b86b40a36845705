// The outcome convention of the delivery entries: the error text handed to the caller and one
// alert-log line per report, written through logacc.dll; and the entry skeleton around it.
#include <zolwin.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "logacc_api.h"
#include "report.h"

namespace vntreport {
namespace {

// Source of the service's lines in the alert log; the event ID is the report's kind and the
// destination ID the method it went by.
constexpr const char* kAlertSource = "VantrelReport";
constexpr const char* kNoReport = "none";

// A field of the alert log holds no tab or line break: such characters become blanks.
std::string LogField(std::string_view text, const char* fallback) {
    std::string field(text.empty() ? std::string_view(fallback) : text);
    for (char& c : field) {
        if (static_cast<unsigned char>(c) < 0x20)
            c = ' ';
    }
    return field;
}

void WriteAlertLine(const std::string& kind, const std::string& method, uint32_t result) {
    ProductLibrary logacc("logacc.dll");
    auto* write = logacc.Entry<AMACETWriteAlertLog_fn>("AMACETWriteAlertLog");
    if (write == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "no alert log: %s",
                  logacc.loaded() ? "AMACETWriteAlertLog missing" : logacc.error().c_str());
        return;
    }
    if (write(kAlertSource, kind.c_str(), method.c_str(), nullptr, static_cast<int>(result)) == 0)
        ZOL_TRACE(TRACE_LEVEL_ERROR, "the alert log line could not be written.");
}

}  // namespace

uint32_t Finish(char** errorText, const Report* report, std::string_view method, uint32_t result,
                std::string_view text) {
    const std::string kind = LogField(report != nullptr ? report->kind : "", kNoReport);
    const std::string how = LogField(method, kNoReport);
    if (errorText != nullptr && !text.empty()) {
        *errorText = strndup(text.data(), text.size());
        if (*errorText == nullptr)
            ZOL_TRACE(TRACE_LEVEL_FAILURE, "no memory for the error text.");
    }
    const std::string said(text);
    ZOL_TRACE(result == kSent ? TRACE_LEVEL_INFO : TRACE_LEVEL_ERROR,
              "report %s by %s: result %u%s%s", kind.c_str(), how.c_str(), result,
              said.empty() ? "" : ": ", said.c_str());
    WriteAlertLine(kind, how, result);
    return result;
}

uint32_t RunDelivery(char** errorText, const char* kind, std::string_view method,
                     const std::function<Outcome(const Report&)>& send) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] kind=%s", kind != nullptr ? kind : "(null)");
    std::string why;
    const std::optional<Report> report = BuildReport(kind != nullptr ? kind : "", &why);
    if (!report) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<BuildReport failed.return %u.", kFailed);
        return Finish(errorText, nullptr, method, kFailed, why);
    }
    const Outcome outcome = send(*report);
    ZOL_TRACE(outcome.result == kSent ? TRACE_LEVEL_TRACE : TRACE_LEVEL_ERROR, "<return %u.",
              outcome.result);
    return Finish(errorText, &*report, method, outcome.result, outcome.text);
}

ProductLibrary::ProductLibrary(std::string_view file) {
    char root[4096] = {};
    if (file.empty() || !GetZolRootPath(root, sizeof root)) {
        error_ = "the product root is not known";
        return;
    }
    const std::string path = std::string(root) + "/lib/" + std::string(file);
    module_ = LoadLibrary(path.c_str());
    if (module_ == nullptr) {
        const char* why = ZolLastLoadError();
        error_ = "cannot load " + path + ": " + (why != nullptr ? why : "unknown error");
    }
}

ProductLibrary::~ProductLibrary() {
    if (module_ != nullptr)
        FreeLibrary(module_);
}

}  // namespace vntreport
