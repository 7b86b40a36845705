// The remote report service's destination as the destination list reaches it.
#include <gtest/gtest.h>

#include "dest_screen_util.h"
