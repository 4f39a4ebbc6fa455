#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace brisolte {

/// A time in the system's local time, by a pattern with the fields of `strftime` %Y %m %d %H %M %S. A time
/// that it cannot break down is all zeros, which is the 0th of January 1900.
std::string LocalTimeText(std::string_view pattern, std::time_t time);

/// The current time; the seconds are truncated, not rounded.
std::string LocalTimeText(std::string_view pattern);

/// The system's time in milliseconds since the start of 1970, UTC.
std::int64_t WallClockMilliseconds();

}  // namespace brisolte
