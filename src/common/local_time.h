#pragma once

#include <string>

namespace brisolte {

/// The current local wall-clock time in a `strftime` pattern; the seconds are truncated, not rounded.
std::string LocalTimeText(const char* pattern);

}  // namespace brisolte
