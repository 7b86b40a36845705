// The mail-address checks that tell the administrator what is wrong in a message box titled
// "IMAIL_DEST_TITLE_ID". Their rules are the newt-free ones of checks.h.
#pragma once

#include <zolwin.h>

// One mail address (blanks around it allowed, at most 80 characters). TRUE, or FALSE after the
// box.
BOOL CheckSingleMailAddr(const char* pMailAddr);
// A comma-separated list of mail addresses (empty items and blanks around each allowed, at most
// 100 addresses). TRUE, or FALSE after the box.
BOOL CheckMailAddr(const char* pMailAddr);
