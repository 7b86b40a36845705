// The mail checks with their message box.
#include "frame/check_boxes.h"

#include <string>

#include "frame/checks.h"
#include "frame/msgfile.h"
#include "ui/toolkit.h"

namespace {

BOOL ShowFault(const char* fault) {
    if (fault == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
        return TRUE;
    }
    const std::string title = MessageText("IMAIL_DEST_TITLE_ID");
    const std::string text = MessageText(fault);
    msgWindow(title.c_str(), " ok ", text.c_str());
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<%s.return FALSE.", fault);
    return FALSE;
}

}  // namespace

BOOL CheckSingleMailAddr(const char* pMailAddr) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    return ShowFault(SingleMailAddrFault(pMailAddr));
}

BOOL CheckMailAddr(const char* pMailAddr) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    return ShowFault(MailAddrListFault(pMailAddr));
}
