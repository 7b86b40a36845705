// Message resource file: opening, loading whole into memory, and the linear lookup by ID.
#include "frame/msgfile.h"

#include <sys/stat.h>

#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "ui/toolkit.h"
#include "zolwin.h"

char* ZOL_RcFileBuf = nullptr;
char ReadString[1024];
char deststr[1024];

namespace {

constexpr const char kNoSuchName[] = "No Such Name";
constexpr std::size_t kRootSize = 1024;

// The storage behind ZOL_RcFileBuf, so that the buffer is released whatever way the program ends.
std::unique_ptr<char[]> g_rcFileOwner;

struct FileCloser {
    void operator()(FILE* f) const { std::fclose(f); }
};

}  // namespace

FILE* OpenStrFile(const char* relativePath, int32_t* length) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] relativePath=%s", relativePath ? relativePath : "(null)");
    if (relativePath == nullptr || length == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<invalid argument.return NULL.");
        return nullptr;
    }

    char root[kRootSize] = {};
    DWORD needed = ExpandEnvironmentStrings("%ZolDir%", root, sizeof(root));
    if (needed == 0 || needed > sizeof(root) || root[0] == '\0') {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<ExpandEnvironmentStrings failed!return NULL.");
        std::puts("ExpandEnvironmentStrings failed!");
        return nullptr;
    }

    std::string path;
    try {
        path.reserve(std::strlen(root) + std::strlen(relativePath) + 1);
        path.append(root).append(relativePath);
    } catch (const std::bad_alloc&) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc for txt_path failed,return NULL.");
        return nullptr;
    }

    std::unique_ptr<FILE, FileCloser> file(std::fopen(path.c_str(), "r"));
    if (!file) {
        std::puts("Can't open the rc file!");
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<Can't open the rc file:%s!return NULL.", path.c_str());
        return nullptr;
    }

    struct stat st {};
    if (stat(path.c_str(), &st) != 0) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<stat %s failed.return NULL.", path.c_str());
        return nullptr;
    }
    // fopen succeeds on a directory; only a regular file is a message file.
    if (!S_ISREG(st.st_mode)) {
        std::puts("Can't open the rc file!");
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<Can't open the rc file:%s!return NULL.", path.c_str());
        return nullptr;
    }
    // The length is reported in 32 bits and the loader adds the spare bytes to it.
    if (st.st_size > std::numeric_limits<int32_t>::max() - static_cast<off_t>(kRcFileSpare)) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<%s is too large.return NULL.", path.c_str());
        return nullptr;
    }

    *length = static_cast<int32_t>(st.st_size);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d bytes.", static_cast<int>(*length));
    return file.release();
}

int CPFindDestStr(const char* buffer, const char* id) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] id=%s", id ? id : "(null)");
    deststr[0] = '\0';
    if (buffer == nullptr || buffer[0] == '\0') {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<pBuf is empty.return -1.");
        return -1;
    }
    if (id == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<no id.return 0.");
        return 0;
    }

    const std::size_t idLength = std::strlen(id);
    const char* header = nullptr;
    for (const char* line = buffer; header == nullptr;) {
        // strncmp stops at the end of the text, so a short last line cannot be overrun.
        if (line[0] == '[' && std::strncmp(line + 1, id, idLength) == 0 &&
            line[1 + idLength] == ']') {
            header = line;
            break;
        }
        const char* lineFeed = std::strchr(line, '\n');
        // A last line without a line feed ends the scan like the end of the text.
        if (lineFeed == nullptr || lineFeed[1] == '\0') {
            ZOL_TRACE(TRACE_LEVEL_TRACE, "<%s not found.return 0.", id);
            return 0;
        }
        line = lineFeed + 1;
    }

    // The value starts after the first '=' from the header on, even past later headers.
    const char* value = std::strchr(header, '=');
    if (value == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<no value for %s.return 0.", id);
        return 0;
    }
    ++value;
    if (*value == '"') {
        ++value;
    }
    std::size_t n = 0;
    while (n < sizeof(deststr) - 1 && value[n] != '"' && value[n] != '\0') {
        deststr[n] = value[n];
        ++n;
    }
    deststr[n] = '\0';
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

char* CPGetText(const char* id, char* destination, const char* fileBuffer) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] id=%s", id ? id : "(null)");
    destination[0] = '\0';
    deststr[0] = '\0';

    if (CPFindDestStr(fileBuffer, id) == -1) {
        msgWindow("Error", " ok ", "Read rc file failed!");
        std::memcpy(destination, kNoSuchName, sizeof(kNoSuchName));
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<message not found!");
        return destination;
    }

    // An absent ID and an empty value both read "No Such Name" and show no box.
    if (deststr[0] != '\0') {
        std::memcpy(destination, deststr, std::strlen(deststr) + 1);
    } else {
        std::memcpy(destination, kNoSuchName, sizeof(kNoSuchName));
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return destination.");
    return destination;
}

bool LoadRcFile(const char* relativePath) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] relativePath=%s", relativePath ? relativePath : "(null)");
    int32_t length = 0;
    std::unique_ptr<FILE, FileCloser> file(OpenStrFile(relativePath, &length));
    if (!file) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Open Str File:%s failed.return 0.",
                  relativePath ? relativePath : "(null)");
        return false;
    }

    const std::size_t size = static_cast<std::size_t>(length) + kRcFileSpare;
    std::unique_ptr<char[]> buffer(new (std::nothrow) char[size]);
    if (!buffer) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc for Str File failed.return 0.");
        return false;
    }
    std::memset(buffer.get(), 0, 8);
    const std::size_t got =
        std::fread(buffer.get(), 1, static_cast<std::size_t>(length), file.get());
    // Whatever was not read (a file that shrank, a read error) and the spare bytes stay zero,
    // so the scan always finds the end of the text.
    std::memset(buffer.get() + got, 0, size - got);
    file.reset();

    g_rcFileOwner = std::move(buffer);
    ZOL_RcFileBuf = g_rcFileOwner.get();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return true;
}

void FreeRcFile() {
    g_rcFileOwner.reset();
    ZOL_RcFileBuf = nullptr;
}

std::string MessageText(const char* id) {
    return std::string(CPGetText(id, ReadString, ZOL_RcFileBuf));
}
