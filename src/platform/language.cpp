// The system's default language, decided from the locale variables as setlocale would read them.
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "zolwin.h"

extern "C" LANGID GetSystemDefaultLangID(void) {
    // The first variable that is set and non-empty decides, in the order the C library uses
    // for message texts.
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return std::strncmp(value, "ja", 2) == 0 ? LANGID_JAPANESE : LANGID_ENGLISH_US;
        }
    }
    return LANGID_ENGLISH_US;
}
