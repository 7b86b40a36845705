// Shared helpers of the program-frame tests: running ZOLamsadm in a test root, reading the texts
// it takes from its message files and the trace lines it writes.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "product_root.h"
#include "terminal.h"

namespace frametest {

// The value of `id` in the root's data/<file> as the terminal shows it (UTF-8).
std::string messageText(const zoltest::ProductRoot& root, const std::string& file, const char* id);
inline std::string english(const zoltest::ProductRoot& root, const char* id) {
    return messageText(root, "E_report.rc", id);
}

// Environment of an English (or Japanese) run in the root: ZolDir, LANG, no LC_ALL/LC_MESSAGES.
std::map<std::string, std::optional<std::string>> runEnv(const zoltest::ProductRoot& root,
                                                         bool japanese = false);

// Starts bin/ZOLamsadm with `args` in an 80x25 terminal.
std::unique_ptr<zoltest::Terminal> start(const zoltest::ProductRoot& root,
                                         const std::vector<std::string>& args = {},
                                         bool japanese = false);
// The same, waiting for the main menu's first row.
std::unique_ptr<zoltest::Terminal> startMenu(const zoltest::ProductRoot& root,
                                             const std::vector<std::string>& args = {});
// Ends the menu with its hot key Ctrl-O and expects the normal exit status 1.
void closeMenu(zoltest::Terminal& t);

// A window's title as newt draws it in its frame.
std::string frameTitle(const zoltest::ProductRoot& root, const char* id);
// Waits until `text` is in reverse video (the focused component under NEWT_MONO).
bool waitFocus(zoltest::Terminal& t, const std::string& text);
// Sends `key` n times.
void sendTimes(zoltest::Terminal& t, int n, std::string_view key = zoltest::keys::Tab);
// Replaces the focused entry's text: End, `erase` backspaces (in one write), then the text typed.
void retype(zoltest::Terminal& t, const std::string& text, int erase);
// Waits for a box showing `text`, closes it with Enter and waits for the text to go.
void dismiss(zoltest::Terminal& t, const std::string& text);
// Sends Ctrl-O and waits for the window titled with the text of titleId to go.
void closeWindow(zoltest::Terminal& t, const zoltest::ProductRoot& root, const char* titleId);

struct TraceEntry {
    int level = -1;
    std::string function, text;
};
std::vector<TraceEntry> readTrace(const zoltest::ProductRoot& root);
// How many trace lines have exactly this level and text (and come from `function` if given).
int traceCount(const zoltest::ProductRoot& root, int level, const std::string& text,
               const std::string& function = {});
std::string traceDump(const zoltest::ProductRoot& root);

// Runs bin/zolreg in the root and expects success.
void zolreg(const zoltest::ProductRoot& root, const std::vector<std::string>& args);

}  // namespace frametest
