// Helpers of the destination screen tests: the store read as the libraries read it, the keys
// that reach the destination list, and waiting for boxes and focus.
#pragma once

#include <zolwin.h>

#include <memory>
#include <string>

#include "frame_test_util.h"
#include "regpaths.h"

namespace desttest {

using zoltest::ProductRoot;
using zoltest::Terminal;

inline const std::string kIDList = ZOL_KEY_ID_LIST;

// A value's bytes as stored (texts with their terminator); "?" when it cannot be read.
std::string stored(const ProductRoot& root, const std::string& key, const char* name);
DWORD storedDword(const ProductRoot& root, const std::string& key, const char* name);
std::string storedText(const ProductRoot& root, const std::string& key, const char* name);
// True when the key exists.
bool keyExists(const ProductRoot& root, const std::string& key);

void addDword(const ProductRoot& root, const std::string& key, const char* name, DWORD value);
void addText(const ProductRoot& root, const std::string& key, const char* name,
             const std::string& text);

// Starts the program and opens the destination list (the main menu's second row).
std::unique_ptr<Terminal> openList(const ProductRoot& root);
// Moves the list's focus down from the top to the row showing id.
void selectID(Terminal& t, const std::string& id);
// Presses the list's button: 1 Add, 2 Change, 3 Delete (the focus is on the list box).
void pressListButton(Terminal& t, int button);

// Replaces the focused entry's text (at most `length` characters before).
inline void retype(Terminal& t, const std::string& text, int length = 40) {
    frametest::retype(t, text, length);
}
// Waits for a box showing text with its button focused, and closes it.
void dismiss(Terminal& t, const std::string& text);
// Waits for a window titled with the text of titleId.
bool titled(Terminal& t, const ProductRoot& root, const char* titleId);
// Ctrl-O, then waits until the window titled titleId has gone.
void closeWindow(Terminal& t, const ProductRoot& root, const char* titleId);
// Closes the destination list and then the main menu with Ctrl-O.
void closeListAndMenu(Terminal& t, const ProductRoot& root);

}  // namespace desttest
