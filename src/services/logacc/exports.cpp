// logacc.dll exports: writing a report to the alert log and removing a destination ID (or
// group) from every alert log.
#include <zolwin.h>

#include <cstring>
#include <ctime>
#include <string>
#include <type_traits>

#include "alertlog.h"
#include "logacc_api.h"

namespace {

// The only kind of deletion: by destination ID (and group).
constexpr int kDeleteByID = 1;

// A counted text argument: null with length 0 is "none"; a text holding a zero byte, a tab
// or a line break cannot be in a log and is refused.
bool CountedText(const char* text, int length, std::string* out) {
    out->clear();
    if (length == 0)
        return true;
    if (text == nullptr || length < 0 || std::memchr(text, '\0', length) != nullptr)
        return false;
    out->assign(text, static_cast<std::size_t>(length));
    return logacc::FieldOk(*out);
}

bool TextArg(const char* text, bool mayBeEmpty) {
    return text != nullptr && (mayBeEmpty || text[0] != '\0') && logacc::FieldOk(text);
}

}  // namespace

extern "C" ZOLWIN_API int AMACETDeleteIDAndGIDAtAllLog(int kind, int idLength, const char* id,
                                                       int gidLength, const char* gid, int flags) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> kind=%d idLength=%d gidLength=%d flags=%d", kind, idLength,
              gidLength, flags);
    std::string idText, gidText;
    if (kind != kDeleteByID || flags != 0 || !CountedText(id, idLength, &idText) ||
        !CountedText(gid, gidLength, &gidText) || (idText.empty() && gidText.empty())) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    const std::string folder = logacc::LogFolder();
    if (folder.empty() || !logacc::RemoveFromAll(folder, idText, gidText)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<removing %s from the alert logs failed.return 0.",
                  idText.c_str());
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(
    std::is_same_v<decltype(AMACETDeleteIDAndGIDAtAllLog), AMACETDeleteIDAndGIDAtAllLog_fn>);

extern "C" ZOLWIN_API int AMACETWriteAlertLog(const char* source, const char* eventID,
                                              const char* destID, const char* groupID, int result) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> result=%d", result);
    if (!TextArg(source, false) || !TextArg(eventID, false) || !TextArg(destID, false) ||
        (groupID != nullptr && !TextArg(groupID, true))) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    const logacc::AlertEntry entry{source, eventID, destID, groupID ? groupID : "", result};
    const std::string folder = logacc::LogFolder();
    if (folder.empty() || !logacc::Append(folder, entry, std::time(nullptr))) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<writing the alert log failed.return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(AMACETWriteAlertLog), AMACETWriteAlertLog_fn>);
