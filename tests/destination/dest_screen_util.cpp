// Helpers of the destination screen tests (see dest_screen_util.h).
#include "dest_screen_util.h"

#include <cstring>

namespace keys = zoltest::keys;

namespace desttest {

std::string stored(const ProductRoot& root, const std::string& key, const char* name) {
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    std::string value = "?";
    HKEY handle = nullptr;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ, &handle) == ERROR_SUCCESS) {
        char data[4096];
        DWORD type = 0, size = sizeof data;
        if (RegQueryValueEx(handle, name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size) ==
            ERROR_SUCCESS)
            value.assign(data, size);
        RegCloseKey(handle);
    }
    // The program writes between two reads: every read starts from the file.
    ZolRegCloseStore();
    return value;
}

DWORD storedDword(const ProductRoot& root, const std::string& key, const char* name) {
    const std::string value = stored(root, key, name);
    DWORD number = 0xFFFFFFFF;
    if (value.size() == sizeof number)
        std::memcpy(&number, value.data(), sizeof number);
    return number;
}

std::string storedText(const ProductRoot& root, const std::string& key, const char* name) {
    const std::string value = stored(root, key, name);
    return value.empty() || value.back() != '\0' ? "?" : value.substr(0, value.size() - 1);
}

bool keyExists(const ProductRoot& root, const std::string& key) {
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    HKEY handle = nullptr;
    const bool found =
        RegOpenKeyEx(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ, &handle) == ERROR_SUCCESS;
    if (found)
        RegCloseKey(handle);
    ZolRegCloseStore();
    return found;
}

void addDword(const ProductRoot& root, const std::string& key, const char* name, DWORD value) {
    frametest::zolreg(root, {"add", "HKLM\\" + key, "/v", name, "/t", "REG_DWORD", "/d",
                             std::to_string(value), "/f"});
}

void addText(const ProductRoot& root, const std::string& key, const char* name,
             const std::string& text) {
    frametest::zolreg(root, {"add", "HKLM\\" + key, "/v", name, "/t", "REG_SZ", "/d", text, "/f"});
}

std::unique_ptr<Terminal> openList(const ProductRoot& root) {
    auto t = frametest::startMenu(root);
    t->send(keys::Down);
    t->send(keys::Enter);
    EXPECT_TRUE(titled(*t, root, "TITTLE_DESTSET_ID")) << t->dump();
    EXPECT_TRUE(t->waitForText(frametest::english(root, "DEST_LABEL_MSG_ID"))) << t->dump();
    return t;
}

void selectID(Terminal& t, const std::string& id) {
    t.send(keys::Home);
    for (int row = 0; row < 100; ++row) {
        const bool found = t.waitFor(
            [&](const Terminal& s) { return s.reverseText().find(id) != std::string::npos; },
            std::chrono::milliseconds(row == 0 ? 2000 : 300));
        if (found)
            return;
        t.send(keys::Down);
    }
    ADD_FAILURE() << id << " is not listed\n" << t.dump();
}

void pressListButton(Terminal& t, int button) {
    tabs(t, button);
    t.send(keys::Enter);
}

void tabs(Terminal& t, int count) {
    for (int i = 0; i < count; ++i)
        t.send(keys::Tab);
}

void retype(Terminal& t, const std::string& text, int length) {
    t.send(keys::End);
    for (int i = 0; i < length; ++i)
        t.send(keys::Backspace);
    t.type(text);
}

// True when a run of reverse video is exactly label: a list's current row and what a box
// leaves uncovered of the focused button below it show in reverse too.
bool reverseRun(const Terminal& s, const std::string& label) {
    const std::string reverse = "\n" + s.reverseText() + "\n";
    return reverse.find("\n" + label + "\n") != std::string::npos;
}

void dismiss(Terminal& t, const std::string& text) {
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) {
        return s.contains(text) && reverseRun(s, "ok");
    })) << "waiting for: "
        << text << "\n"
        << t.dump();
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) {
        return !s.contains(text) && !reverseRun(s, "ok");
    })) << t.dump();
}

bool focused(Terminal& t, const std::string& label) {
    return t.waitFor(
        [&](const Terminal& s) { return s.reverseText().find(label) != std::string::npos; });
}

bool titled(Terminal& t, const ProductRoot& root, const char* titleId) {
    return t.waitForText("┤ " + frametest::english(root, titleId) + " ├");
}

void closeWindow(Terminal& t, const ProductRoot& root, const char* titleId) {
    t.send(keys::CtrlO);
    ASSERT_TRUE(t.waitForNoText("┤ " + frametest::english(root, titleId) + " ├")) << t.dump();
}

}  // namespace desttest
