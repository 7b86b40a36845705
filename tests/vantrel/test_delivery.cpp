// A delivery library for the stop-report tests, installed by a test as the method's library
// ("mailrpt.dll"). Its report entry answers, call after call, the outcomes listed in
// $ZolDir/log/test_delivery.results (blank-separated numbers; 2 once the list runs out), records
// each call's report kind as one line of $ZolDir/log/test_delivery.calls, and gives an error text
// with every outcome but 0.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t kListRunOut = 2;
constexpr const char* kErrorText = "Test delivery: the centre did not answer.";

std::string LogFile(const char* name) {
    const char* root = std::getenv("ZolDir");
    return std::string(root ? root : ".") + "/log/" + name;
}

std::uint32_t Report(char** errorText, const char* kind) {
    std::vector<std::uint32_t> outcomes;
    std::ifstream results(LogFile("test_delivery.results"));
    for (std::uint32_t outcome = 0; results >> outcome;)
        outcomes.push_back(outcome);
    std::size_t calls = 0;
    std::ifstream earlier(LogFile("test_delivery.calls"));
    for (std::string line; std::getline(earlier, line);)
        ++calls;
    std::ofstream(LogFile("test_delivery.calls"), std::ios::app)
        << (kind ? kind : "(null)") << '\n';
    const std::uint32_t outcome = calls < outcomes.size() ? outcomes[calls] : kListRunOut;
    if (outcome != 0 && errorText != nullptr)
        *errorText = strdup(kErrorText);
    return outcome;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) std::uint32_t AMEIMain(char** errorText,
                                                                         const char* kind) {
    return Report(errorText, kind);
}
