// The remote report service's report: one builder shared by every delivery method, the
// converters at the edge of the store and of the mail, and the outcome convention every delivery
// entry shares. The body's framing and a sample of each kind are in docs/report.md.
#pragma once

#include <zolwin.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vntreport {

// Results of a delivery entry: 0 sent; 1 may be tried again; 2 and 3 are only logged by the
// caller; any other value comes with an administrator's error text.
inline constexpr uint32_t kSent = 0;
inline constexpr uint32_t kRetry = 1;
inline constexpr uint32_t kFailed = 4;

// Kinds: "E" stop report, "T1"/"T2" test to primary/secondary destination (method screens'
// buttons), "T" test, "TF" critical test, "O" opening report. Unknown kinds are refused.
struct Report {
    std::string kind;       // as given
    std::string subject;    // one line, UTF-8
    std::string body;       // UTF-8, lines ended by "\r\n"
    bool japanese = false;  // the service language (VntLang) is Japanese
    std::string timestamp;  // as put in the body (local or GMT per the mail base setting)
};

// Builds the report from the store (key floppy's user code, customer, machine, vendor, option
// data, host name). nullopt with *error set to an administrator's text when the store cannot be
// read or the kind is unknown.
std::optional<Report> BuildReport(std::string_view kind, std::string* error);

// True for the kinds BuildReport knows.
bool IsKnownKind(std::string_view kind);

// Converters at the edge: UTF-8 -> ISO-2022-JP (mail), store text EUC-JP <-> UTF-8. nullopt
// when the text is not valid in its encoding or holds a character the target cannot carry.
std::optional<std::string> Utf8ToIso2022Jp(std::string_view utf8);
std::optional<std::string> EucJpToUtf8(std::string_view euc);
std::optional<std::string> Utf8ToEucJp(std::string_view utf8);
// True when text has only 7-bit characters (no conversion changes it).
bool IsAscii(std::string_view text);

// What a delivery made of one report: its result and, when not sent, the administrator's text.
// localFault: the fault is on this side (the line, the settings), so another destination of the
// same report would fail the same way.
struct Outcome {
    uint32_t result = kFailed;
    std::string text;
    bool localFault = false;
};

// The outcome convention every delivery entry shares: sets *errorText to a malloc'd copy of
// text (when errorText is not null and text not empty) and writes ONE line to the alert log
// (logacc "AMACETWriteAlertLog") saying which report went by which method and how it ended.
// Returns result. report may be null when no report could be built.
uint32_t Finish(char** errorText, const Report* report, std::string_view method, uint32_t result,
                std::string_view text);

// The whole of a delivery entry: builds the report of kind (a refusal when it cannot be built),
// hands it to send and finishes with send's outcome as Finish does, the entry's trace lines
// around it. Returns the entry's result.
uint32_t RunDelivery(char** errorText, const char* kind, std::string_view method,
                     const std::function<Outcome(const Report&)>& send);

// A service library of the product root ("%s/lib/%s" under GetZolRootPath), released when the
// object goes out of scope.
class ProductLibrary {
  public:
    explicit ProductLibrary(std::string_view file);
    ~ProductLibrary();
    ProductLibrary(const ProductLibrary&) = delete;
    ProductLibrary& operator=(const ProductLibrary&) = delete;

    bool loaded() const { return module_ != nullptr; }
    // Why the library could not be loaded (empty when it was).
    const std::string& error() const { return error_; }
    // The entry `name` as a function of type F, or null.
    template <class F>
    F* Entry(const char* name) const {
        return module_ != nullptr ? reinterpret_cast<F*>(GetProcAddress(module_, name)) : nullptr;
    }

  private:
    HMODULE module_ = nullptr;
    std::string error_;
};

// Overwrites a secret in memory (a decoded password) so that it cannot be read after use; the
// write is not optimised away.
void Wipe(std::string* secret);

}  // namespace vntreport
