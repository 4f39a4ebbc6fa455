#include "desktop/monitors.h"

#include <gmock/gmock.h>
#include <windows.h>

namespace brisolte {
namespace {

TEST(EnumerateMonitors, NumbersThemFromZero) {
  const auto monitors = EnumerateMonitors();
  ASSERT_FALSE(monitors.empty());
  for (std::size_t i = 0; i < monitors.size(); ++i) {
    EXPECT_EQ(monitors[i].index, static_cast<std::int32_t>(i));
  }
}

TEST(EnumerateMonitors, TellsThePrimaryOneWithItsWholeRectangle) {
  const auto monitors = EnumerateMonitors();
  const auto isPrimary = [](const MonitorEntry& monitor) { return monitor.isPrimary; };
  ASSERT_EQ(std::ranges::count_if(monitors, isPrimary), 1);
  const auto primary = *std::ranges::find_if(monitors, isPrimary);
  EXPECT_EQ(primary.rect.left, 0);
  EXPECT_EQ(primary.rect.top, 0);
  EXPECT_EQ(primary.rect.width(), GetSystemMetrics(SM_CXSCREEN));
  EXPECT_EQ(primary.rect.height(), GetSystemMetrics(SM_CYSCREEN));
  EXPECT_THAT(primary.name, ::testing::StartsWith(R"(\\.\DISPLAY)"));
  EXPECT_EQ(reinterpret_cast<std::int64_t>(MonitorFromPoint({0, 0}, MONITOR_DEFAULTTONULL)), primary.handle);
}

}  // namespace
}  // namespace brisolte
