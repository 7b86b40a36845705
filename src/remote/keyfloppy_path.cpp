// Where the key floppy is: the mounted floppy found in the mount table, the path dialog that
// asks for it and has the report-settings library check it, and the trimming of its last "/".
#include <mntent.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/vantrel_calls.h"
#include "remote/vantrel_menu.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

char g_fdPath[kFdPathMax + 1] = {};

namespace {

constexpr int kPathEntryWidth = 60;
// Room for the texts of one mount-table line.
constexpr std::size_t kMountLineSize = 4096;

struct MountTableCloser {
    void operator()(FILE* table) const { endmntent(table); }
};

// The message-file text with its "%d" filled in by number.
std::string WithNumber(std::string text, int number) {
    if (const auto at = text.find("%d"); at != std::string::npos)
        text.replace(at, 2, std::to_string(number));
    return text;
}

void ErrorBox(const std::string& text) {
    msgWindow("Error", " ok ", text.c_str());
}

struct PathForm {
    newtComponent entry = nullptr;
};

PathForm OpenPathForm(zolui::Dialog& dialog, const std::string& initial) {
    PathForm form;
    zolui::Grid grid(1, 3);
    grid.set(0, 0, dialog.add(zolui::label(-1, -1, MessageText("INPUT_OPENINGFILE_PATH_LABLE_ID"))),
             {}, NEWT_ANCHOR_LEFT);
    form.entry = dialog.add(zolui::entry(-1, -1, initial, kPathEntryWidth, NEWT_FLAG_SCROLL));
    grid.set(0, 1, form.entry, {.top = 1});
    grid.set(0, 2,
             dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                               {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}}),
             {.top = 1});
    dialog.open(grid, MessageText("INPUT_OPENINGFILE_PATH_TITLE_ID"));
    return form;
}

// The path typed on OK: true when it is in buffer and the library took it.
bool AcceptPath(const std::string& typed, char* buffer, int size, HMODULE lib) {
    if (typed.size() > static_cast<std::size_t>(size)) {
        ErrorBox(WithNumber(MessageText("IDS_MSG_PATH_LONG"), size));
        return false;
    }
    std::memcpy(buffer, typed.c_str(), typed.size() + 1);
    cutPathTail(buffer);
    if (buffer[0] == '\0' || !CheckKeyFloppyPath(lib, buffer)) {
        ErrorBox(MessageText("IDS_MSG_PATH_FAILURE"));
        return false;
    }
    return true;
}

}  // namespace

int getFloppyMountPoint(char* buffer, int size, const char* mountTable) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] size=%d mountTable=%s", size,
              mountTable ? mountTable : "(null)");
    if (buffer == nullptr || size <= 0 || mountTable == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]param error.return 0.");
        return 0;
    }
    const std::unique_ptr<FILE, MountTableCloser> table(setmntent(mountTable, "r"));
    if (!table) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<%s cannot be read.return 0.", mountTable);
        return 0;
    }
    mntent entry{};
    std::array<char, kMountLineSize> strings{};
    while (getmntent_r(table.get(), &entry, strings.data(), static_cast<int>(strings.size())) !=
           nullptr) {
        if (std::strstr(entry.mnt_dir, "floppy") == nullptr)
            continue;
        int length = static_cast<int>(std::strlen(entry.mnt_dir));
        if (length > size) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "the mounted file path is greater than %d!", size);
            length = size;
        }
        std::memcpy(buffer, entry.mnt_dir, static_cast<std::size_t>(length));
        buffer[length] = '\0';
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", length);
        return length;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<no floppy mounted.return 0.");
    return 0;
}

void cutPathTail(char* path) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] path=%s", path ? path : "(null)");
    if (path == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]param error.");
        return;
    }
    const std::size_t length = std::strlen(path);
    if (length > 1 && path[length - 1] == '/')
        path[length - 1] = '\0';
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<path=%s", path);
}

int SetFDPathWin(char* buffer, int size, HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] size=%d lib=%p", size, lib);
    if (buffer == nullptr || size <= 0 || lib == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]param error.return 0.");
        return 0;
    }
    if (!HasKeyFloppyCheck(lib)) {
        msgWindow("Error", "ok", "Get checkVntFile address failed!");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Get checkVntFile address failed.return 0.");
        return 0;
    }
    std::string initial(static_cast<std::size_t>(size) + 1, '\0');
    const int mounted = getFloppyMountPoint(initial.data(), size);
    initial.resize(static_cast<std::size_t>(mounted));
    if (mounted == 0)
        initial = kDefaultFdPath;
    zolui::Dialog dialog;
    const PathForm form = OpenPathForm(dialog, initial);
    auto ok = [&] {
        return AcceptPath(zolui::entryText(form.entry), buffer, size, lib) ? zolui::Next::Close
                                                                           : zolui::Next::Stay;
    };
    const int closedBy = dialog.run({{zolui::kOkId, ok}});
    const int result = closedBy == zolui::kOkId ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d. path=%s", result, result ? buffer : "");
    return result;
}

int GetKeyFDmsg(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p path=%s", lib, g_fdPath);
    const LibResult r = ReadKeyFloppy(lib, g_fdPath);
    const int result = r.unbound() ? 0 : r.value;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}
