// Helpers of the destination screen tests (see dest_screen_util.h).
#include "dest_screen_util.h"

#include <cstring>

#include "store_reader.h"

namespace keys = zoltest::keys;

namespace desttest {

std::string stored(const ProductRoot& root, const std::string& key, const char* name) {
    const auto value = zoltest::StoreReader(root).value(key, name);
    return value ? value->bytes : "?";
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
    return zoltest::StoreReader(root).subkeys(key).has_value();
}

void addDword(const ProductRoot& root, const std::string& key, const char* name, DWORD value) {
    ASSERT_EQ(zoltest::StoreReader(root).setDword(key, name, value), ERROR_SUCCESS) << key;
}

void addText(const ProductRoot& root, const std::string& key, const char* name,
             const std::string& text) {
    ASSERT_EQ(zoltest::StoreReader(root).setText(key, name, text), ERROR_SUCCESS) << key;
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
    frametest::sendTimes(t, button);
    t.send(keys::Enter);
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

bool titled(Terminal& t, const ProductRoot& root, const char* titleId) {
    return t.waitForText(frametest::frameTitle(root, titleId));
}

void closeWindow(Terminal& t, const ProductRoot& root, const char* titleId) {
    t.send(keys::CtrlO);
    ASSERT_TRUE(t.waitForNoText(frametest::frameTitle(root, titleId))) << t.dump();
}

void closeListAndMenu(Terminal& t, const ProductRoot& root) {
    closeWindow(t, root, "TITTLE_DESTSET_ID");
    frametest::closeMenu(t);
}

}  // namespace desttest
