#include <gtest/gtest.h>

#include <limits>

#include "desktop/monitors.h"

namespace brisolte {
namespace {

constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
constexpr auto kHighest = std::numeric_limits<std::int32_t>::max();

TEST(FindMonitor, NeverLooksOutsideTheList) {
  const std::vector<MonitorEntry> monitors{{0, "a", 1, {}, true}, {1, "b", 2, {}, false}};
  EXPECT_EQ(FindMonitor(monitors, 1), &monitors[1]);
  EXPECT_EQ(FindMonitor(monitors, 2), nullptr);
  EXPECT_EQ(FindMonitor(monitors, -1), nullptr);
  EXPECT_EQ(FindMonitor(monitors, kLowest), nullptr);
  EXPECT_EQ(FindMonitor(monitors, kHighest), nullptr);
  EXPECT_EQ(FindMonitor({}, 0), nullptr);
}

}  // namespace
}  // namespace brisolte
