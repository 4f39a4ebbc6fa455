#include "common/local_time.h"

#include <chrono>
#include <string_view>

#ifdef _WIN32
#include <windows.h>

#include <limits>
#endif

namespace brisolte {
namespace {

#ifdef _WIN32

/// In the time zone of the system. The C runtime's local time is that of the variable TZ where there is one,
/// as shells of other systems set it, and takes what they write, "Europe/Berlin", for UTC.
std::tm BreakDown(std::time_t time) {
  constexpr std::int64_t kTicks = 10'000'000;              // of a FILETIME in a second
  constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;  // since its beginning in 1601
  constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max() / kTicks - kSecondsTo1970;
  if (time < -kSecondsTo1970 || time > kLast) {
    return {};
  }
  const std::int64_t ticks = (time + kSecondsTo1970) * kTicks;
  const FILETIME fileTime{static_cast<DWORD>(ticks & 0xFFFFFFFF), static_cast<DWORD>(ticks >> 32)};
  SYSTEMTIME utc{};
  SYSTEMTIME local{};
  if (FileTimeToSystemTime(&fileTime, &utc) == FALSE ||
      SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) == FALSE) {
    return {};
  }
  std::tm parts{};
  parts.tm_year = local.wYear - 1900;
  parts.tm_mon = local.wMonth - 1;
  parts.tm_mday = local.wDay;
  parts.tm_hour = local.wHour;
  parts.tm_min = local.wMinute;
  parts.tm_sec = local.wSecond;
  return parts;
}

#else

std::tm BreakDown(std::time_t time) {
  std::tm local{};
  return localtime_r(&time, &local) != nullptr ? local : std::tm{};
}

#endif

std::string Digits(int number, std::size_t count) {
  std::string digits = std::to_string(number);
  return digits.size() < count ? digits.insert(0, count - digits.size(), '0') : digits;
}

std::string Field(char conversion, const std::tm& time) {
  switch (conversion) {
    case 'Y':
      return Digits(1900 + time.tm_year, 4);
    case 'm':
      return Digits(1 + time.tm_mon, 2);
    case 'd':
      return Digits(time.tm_mday, 2);
    case 'H':
      return Digits(time.tm_hour, 2);
    case 'M':
      return Digits(time.tm_min, 2);
    case 'S':
      return Digits(time.tm_sec, 2);
    default:
      return {conversion};
  }
}

}  // namespace

std::string LocalTimeText(std::string_view pattern, std::time_t time) {
  const std::tm local = BreakDown(time);
  std::string text;
  // Not strftime, for which a zeroed time is an invalid parameter, which can end the process.
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const bool isField = pattern[i] == '%' && i + 1 < pattern.size();
    text += isField ? Field(pattern[++i], local) : std::string(1, pattern[i]);
  }
  return text;
}

std::string LocalTimeText(std::string_view pattern) {
  return LocalTimeText(pattern, std::time(nullptr));
}

std::int64_t WallClockMilliseconds() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace brisolte
