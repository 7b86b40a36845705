// The box that tells the administrator what a method screen's test report gave: the load or
// binding failure of the delivery library, success, or the failure with the library's own text.
#include <string>

#include "frame/msgfile.h"
#include "frame/textformat.h"
#include "remote/vantrel_method.h"
#include "ui/toolkit.h"

void ShowTestReport(const DeliveryOutcome& outcome, const char* library, const char* entry) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] library=%s entry=%s", library, entry);
    const TestReportBox box = TestReportOutcomeBox(outcome, library, entry);
    std::string text = box.argument.empty()
                           ? MessageText(box.messageId)
                           : FormatText(MessageText(box.messageId), {box.argument});
    if (!box.detail.empty())
        text += "\n\n" + box.detail;
    // Wrapped: a library's error text may be longer than a line.
    msgWindowEx(box.title, " ok ", text.c_str());
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<%s", box.messageId);
}
