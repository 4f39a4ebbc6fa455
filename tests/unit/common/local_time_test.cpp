#include "common/local_time.h"

#include <gmock/gmock.h>

#include <limits>

#ifdef _WIN32
#include <windows.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#endif

namespace brisolte {
namespace {

constexpr auto kName = "%Y-%m-%d-%H-%M-%S";

TEST(LocalTimeText, BreaksATimeDown) {
  std::tm moment{};
  moment.tm_year = 2024 - 1900;
  moment.tm_mon = 2;
  moment.tm_mday = 7;
  moment.tm_hour = 14;
  moment.tm_min = 5;
  moment.tm_sec = 9;
  moment.tm_isdst = -1;
  EXPECT_EQ(LocalTimeText(kName, std::mktime(&moment)), "2024-03-07-14-05-09");
  EXPECT_EQ(LocalTimeText("100%, %H:%M%", std::mktime(&moment)), "100, 14:05%");
}

TEST(LocalTimeText, OfATimeThatCannotBeBrokenDownIsAllZeros) {
  for (const auto time : {std::numeric_limits<std::time_t>::min(), std::numeric_limits<std::time_t>::max()}) {
    EXPECT_EQ(LocalTimeText(kName, time), "1900-01-00-00-00-00");
  }
}

TEST(LocalTimeText, IsOfNowWithoutATime) {
  const std::time_t before = std::time(nullptr);
  const std::string text = LocalTimeText(kName);
  EXPECT_THAT(text, ::testing::AllOf(::testing::Ge(LocalTimeText(kName, before)),
                                     ::testing::Le(LocalTimeText(kName, std::time(nullptr)))));
}

#ifdef _WIN32

/// What the system says, to the minute.
std::string SystemsLocalTime() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  std::array<char, 32> text{};
  const int length = std::snprintf(text.data(), text.size(), "%04d-%02d-%02d-%02d-%02d", now.wYear,
                                   now.wMonth, now.wDay, now.wHour, now.wMinute);
  return {text.data(), static_cast<std::size_t>(length)};
}

TEST(LocalTimeText, IsTheSystemsWhateverTheEnvironmentSays) {
  for (const auto* zone : {"Europe/Berlin", "ABC-7"}) {
    _putenv_s("TZ", zone);
    _tzset();
    const std::string before = SystemsLocalTime();
    const std::string text = LocalTimeText("%Y-%m-%d-%H-%M");
    EXPECT_THAT(text, ::testing::AllOf(::testing::Ge(before), ::testing::Le(SystemsLocalTime()))) << zone;
  }
  _putenv_s("TZ", "");
  _tzset();
}

#endif

}  // namespace
}  // namespace brisolte
