// Helpers of the remote report service's screen tests: the store read as the libraries read it,
// the keys an administrator presses, and the way into the service's base screen.
#pragma once

#include <gtest/gtest.h>
#include <zolwin.h>

#include <memory>
#include <string>

#include "frame_test_util.h"
#include "regpaths.h"
#include "store_reader.h"

namespace vantreltest {

namespace keys = zoltest::keys;
using frametest::english;
using zoltest::ProductRoot;
using zoltest::Terminal;

inline const std::string kLoginKey = ZOL_KEY_MAIL_SETTING;
inline const std::string kMethodKey = ZOL_KEY_METHOD "\\";
inline const std::string kServiceKey = ZOL_KEY_VNTSERVICE;
inline const std::string kSettingKey = ZOL_KEY_VNT_SETTING;

// ---- The store, read as the libraries read it ----

// A value's bytes as stored (texts with their terminator); "?" when it cannot be read.
inline std::string stored(const ProductRoot& root, const std::string& key, const char* name) {
    const auto value = zoltest::StoreReader(root).value(key, name);
    return value ? value->bytes : "?";
}

inline DWORD storedDword(const ProductRoot& root, const std::string& key, const char* name) {
    // 0xFFFFFFFF: no value of these screens
    return zoltest::StoreReader(root).dword(key, name).value_or(0xFFFFFFFF);
}

inline std::string storedText(const ProductRoot& root, const std::string& key, const char* name) {
    const std::string value = stored(root, key, name);
    return value.empty() || value.back() != '\0' ? "?" : value.substr(0, value.size() - 1);
}

inline DWORD methodEnabled(const ProductRoot& root, const std::string& method) {
    return storedDword(root, kMethodKey + method, "Enable");
}

// ---- Keys ----

inline void tabs(Terminal& t, int count) {
    for (int i = 0; i < count; ++i)
        t.send(keys::Tab);
}

// Empties the focused entry that holds at most `length` characters.
inline void clearEntry(Terminal& t, int length) {
    t.send(keys::End);
    for (int i = 0; i < length; ++i)
        t.send(keys::Backspace);
}

// Waits for a message box showing `text`, drawn to its focused button, and closes it.
inline void dismiss(Terminal& t, const std::string& text) {
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) {
        return s.contains(text) && s.reverseText() == "ok";
    })) << t.dump();
    t.send(keys::Enter);
    // The screen below runs again with the focus on the button that led to the box.
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) {
        return !s.contains(text) && !s.reverseText().empty() && s.reverseText() != "ok";
    })) << t.dump();
}

// True when one of the reverse-video runs (the focused button, the lists' current rows) is
// exactly `text`.
inline bool reverseRun(const Terminal& s, const std::string& text) {
    return ("\n" + s.reverseText() + "\n").find("\n" + text + "\n") != std::string::npos;
}

// Waits for a box showing `text` drawn to its focused button, whatever else stands in reverse
// video, and closes it.
inline void dismissBox(Terminal& t, const std::string& text) {
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) {
        return s.contains(text) && reverseRun(s, "ok");
    })) << t.dump();
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForNoText(text)) << t.dump();
}

inline bool focusedButton(Terminal& t, const std::string& label) {
    return t.waitFor([&](const Terminal& s) { return s.reverseText() == label; });
}

// Presses OK once the focus stands on it.
inline void pressOk(const ProductRoot& root, Terminal& t) {
    ASSERT_TRUE(focusedButton(t, english(root, "BUTTON_OK_ID"))) << t.dump();
    t.send(keys::Enter);
}

// Waits until the cursor stands on the row that shows `label`: the screen holding it is drawn.
inline bool cursorOnRow(Terminal& t, const std::string& label, int below = 0) {
    return t.waitFor([&](const Terminal& s) {
        const int row = s.findRow(label);
        return row >= 0 && s.cursor().first == row + below;
    });
}

// ---- The way in ----

// The remote report service's base screen, entered from the base-setting menu (its fourth row).
inline std::unique_ptr<Terminal> openServiceBase(const ProductRoot& root) {
    auto t = frametest::startMenu(root);
    t->send(keys::Enter);
    EXPECT_TRUE(t->waitForText(english(root, "BASE_REPORT_SNMP_ID"))) << t->dump();
    for (int i = 0; i < 3; ++i)
        t->send(keys::Down);
    t->send(keys::Enter);
    EXPECT_TRUE(cursorOnRow(*t, english(root, "VNT_SUB_ENABLE_ID"))) << t->dump();
    return t;
}

// Delivery methods in the order of the base screen's radio buttons.
enum Method { kMail = 0, kDialUp = 1, kManager = 2, kHttps = 3 };

// From the service's base screen with its switch off and the focus on it: switch on, choose the
// method and press OK.
inline void switchOnBy(const ProductRoot& root, Terminal& t, Method method) {
    t.send(keys::Space);
    tabs(t, 1 + method);
    t.send(keys::Space);
    tabs(t, 5 - method);  // the other methods, Suppression, OK
    ASSERT_TRUE(focusedButton(t, english(root, "BUTTON_OK_ID"))) << t.dump();
    t.send(keys::Enter);
}

// From the service's base screen with its switch off: switch it on, keep internet mail, OK.
inline void enterMailBase(const ProductRoot& root, Terminal& t) {
    t.send(keys::Space);
    tabs(t, 6);  // four methods, Suppression, OK
    ASSERT_TRUE(focusedButton(t, english(root, "BUTTON_OK_ID"))) << t.dump();
    t.send(keys::Enter);
    ASSERT_TRUE(cursorOnRow(t, english(root, "IMAIL_BASE_SMTP_ID"))) << t.dump();
}

// Every screen still open, then the main menu, closes on Ctrl-O; the program ends normally.
inline void closeAll(Terminal& t) {
    for (int i = 0; i < 6 && t.running(); ++i) {
        const std::string before = t.screenText();
        t.send(keys::CtrlO);
        t.waitFor([&](const Terminal& s) { return !s.running() || s.screenText() != before; });
    }
    ASSERT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.exitStatus(), 1) << t.dump();
}

// The key floppy counts as read: the service may be switched on.
inline void markKeyFloppyRead(const ProductRoot& root) {
    frametest::zolreg(root, {"add", "HKLM\\" + kServiceKey, "/v", "InstVantrelKeyFD", "/t",
                             "REG_DWORD", "/d", "1", "/f"});
}

}  // namespace vantreltest
