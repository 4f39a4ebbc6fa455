#include "common/local_time.h"

#include <chrono>
#include <string_view>

namespace brisolte {
namespace {

std::tm BreakDown(std::time_t time) {
  std::tm local{};
#ifdef _WIN32
  const bool known = _localtime64_s(&local, &time) == 0;
#else
  const bool known = localtime_r(&time, &local) != nullptr;
#endif
  // The runtime of Windows sets what it cannot break down to -1.
  return known ? local : std::tm{};
}

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
