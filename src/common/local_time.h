#pragma once

#include <cstdint>
#include <string>

namespace brisolte {

/// The current local wall-clock time in a `strftime` pattern; the seconds are truncated, not rounded.
std::string LocalTimeText(const char* pattern);

/// The system's time in milliseconds since the start of 1970, UTC.
std::int64_t WallClockMilliseconds();

}  // namespace brisolte
