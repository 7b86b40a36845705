// Helpers shared by the platform layer's own sources (not part of the public interface).
#pragma once

#include <string>

#include "zolwin.h"

namespace zolwin {

// The product root: $ZolDir when set and non-empty, else the built-in install prefix; without
// trailing slashes (a bare "/" stays "/").
std::string productRoot();

// A value of the environment, looked up as Win32 does: exact spelling first, then ignoring case.
// Returns false when the variable is not set.
bool lookupEnv(const std::string& name, std::string& value);

}  // namespace zolwin
