// rptset.dll: the key floppy (docs/key-floppy.md): whether one was read in, checking a path the
// administrator gives, and reading its set-up data into the store.
#include <zolwin.h>

#include <optional>
#include <string>
#include <type_traits>

#include "keyfile.h"
#include "rptset_api.h"
#include "store.h"

namespace {

constexpr const char* kReadFlag = "InstVantrelKeyFD";

int ResultOf(vntcore::KeyFault fault) {
    switch (fault) {
        case vntcore::KeyFault::None:
            return 1;
        case vntcore::KeyFault::BadPath:
            return KEYFD_BAD_PATH;
        case vntcore::KeyFault::BadFile:
            return KEYFD_BAD_FILE;
        case vntcore::KeyFault::BadContent:
            return KEYFD_BAD_CONTENT;
        case vntcore::KeyFault::StoreFailed:
            break;
    }
    return KEYFD_READ_FAILED;
}

}  // namespace

extern "C" ZOLWIN_API int CheckKeyFDFlag(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const std::optional<DWORD> flag = vntcore::ReadDwordOr(vntcore::kServiceKey, kReadFlag, 0);
    const int result = flag && *flag != 0 ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}
static_assert(std::is_same_v<decltype(CheckKeyFDFlag), CheckKeyFDFlag_fn>);

extern "C" ZOLWIN_API int GetOpenMsgfromFD(const char* path) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] path=%s", path ? path : "(null)");
    const vntcore::KeyResult result = vntcore::ReadKeyFloppyIntoStore(path);
    const int code = ResultOf(result.fault);
    if (!result) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s.return %d.", result.reason.c_str(), code);
        return code;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", code);
    return code;
}
static_assert(std::is_same_v<decltype(GetOpenMsgfromFD), GetOpenMsgfromFD_fn>);

// Only mode 0 exists: a readable file with the key-floppy signature, at most maxSize bytes. The
// checksum and the values are judged when the floppy is read, so that a damaged file is reported
// as such rather than as a wrong path.
extern "C" ZOLWIN_API int checkVntFile(const char* path, int mode, int maxSize) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] path=%s mode=%d maxSize=%d", path ? path : "(null)", mode,
              maxSize);
    if (mode != 0 || maxSize <= 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]mode or maxSize not usable.return -1.");
        return -1;
    }
    std::string bytes;
    const vntcore::KeyResult loaded =
        vntcore::LoadKeyFile(path, static_cast<std::size_t>(maxSize), &bytes);
    if (!loaded) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s.return -1.", loaded.reason.c_str());
        return -1;
    }
    if (!vntcore::HasKeySignature(bytes)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<not a key-floppy file.return -1.");
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(checkVntFile), checkVntFile_fn>);
