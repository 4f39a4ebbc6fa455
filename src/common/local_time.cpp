#include "common/local_time.h"

#include <array>
#include <chrono>
#include <ctime>

namespace brisolte {

std::string LocalTimeText(const char* pattern) {
  const std::time_t now = std::time(nullptr);
  // A time that cannot be broken down stays zeroed and is formatted all the same.
  std::tm local{};
#ifdef _WIN32
  _localtime64_s(&local, &now);
#else
  localtime_r(&now, &local);
#endif
  std::array<char, 64> text{};
  return {text.data(), std::strftime(text.data(), text.size(), pattern, &local)};
}

std::int64_t WallClockMilliseconds() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace brisolte
