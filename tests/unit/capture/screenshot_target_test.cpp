#include "capture/screenshot_target.h"

#include <gmock/gmock.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "common/text.h"
#include "support/captured_log.h"
#include "support/fake_desktop.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::Eq;
using testing::FakeDesktop;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr std::int32_t kDenied = static_cast<std::int32_t>(0x80070005);
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

/// Makes items, and keeps the calls of everything in order.
class FakeItems : public ScreenshotItems {
 public:
  std::int32_t CreateItemForWindow(std::int64_t window) override {
    calls.push_back("CreateItemForWindow " + std::to_string(window));
    return itemResult;
  }
  std::int32_t CreateItemForMonitor(std::int64_t monitor) override {
    calls.push_back("CreateItemForMonitor " + std::to_string(monitor));
    return itemResult;
  }

  std::vector<std::string> calls;
  std::int32_t itemResult = 0;
};

class ScreenshotTargetTest : public ::testing::Test {
 protected:
  std::optional<ScreenshotTarget> Create() { return CreateScreenshotItem(desktop_, items_, settings_); }

  void AimAtWindow(std::int64_t window) {
    settings_.mode = CaptureMode::kWindow;
    settings_.windowHandle = window;
  }
  void AimAtRegion(const CaptureRegion& region) {
    settings_.mode = CaptureMode::kRegion;
    settings_.region = region;
  }

  CaptureSettings settings_;
  FakeItems items_;
  FakeDesktop desktop_{[this](std::string call) { items_.calls.push_back(std::move(call)); }};
};

TEST_F(ScreenshotTargetTest, TakesAWindowWhole) {
  AimAtWindow(7);
  const CapturedLog log;
  EXPECT_THAT(Create(), Optional(Field(&ScreenshotTarget::crop, Eq(std::nullopt))));
  EXPECT_THAT(items_.calls, ElementsAre("IsWindow 7", "IsWindowVisible 7", "IsIconic 7", "WindowRect 7",
                                        "CreateItemForWindow 7", "VisibleRect 7"));
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Starting window capture..."));
}

TEST_F(ScreenshotTargetTest, KnowsWhereAWindowIsDrawn) {
  AimAtWindow(7);
  desktop_.windowRect = {93, 80, 507, 327};
  desktop_.visibleRect = {100, 80, 500, 320};
  EXPECT_THAT(Create(), Optional(Field(&ScreenshotTarget::visible, Eq(desktop_.visibleRect))));
  desktop_.visibleRect.reset();
  EXPECT_THAT(Create(), Optional(Field(&ScreenshotTarget::visible, Eq(std::nullopt))));
}

TEST_F(ScreenshotTargetTest, NamesWhatIsWrongWithAWindow) {
  struct Case {
    void (*spoil)(FakeDesktop&, FakeItems&);
    std::string error;
  };
  const std::vector<Case> cases = {
      {[](FakeDesktop& desktop, FakeItems&) { desktop.isWindow = false; }, "Invalid window handle"},
      {[](FakeDesktop& desktop, FakeItems&) { desktop.windowVisible = {false}; }, "Window is not visible"},
      {[](FakeDesktop& desktop, FakeItems&) { desktop.windowIconic = {true}; }, "Window is not visible"},
      {[](FakeDesktop& desktop, FakeItems&) { desktop.windowRect.reset(); }, "Failed to get window rect"},
      {[](FakeDesktop& desktop, FakeItems&) { desktop.windowRect = {5, 5, 5, 9}; }, "Invalid window size"},
      {[](FakeDesktop& desktop, FakeItems&) { desktop.windowRect = {5, 5, 9, 5}; }, "Invalid window size"},
      {[](FakeDesktop& desktop, FakeItems&) { desktop.windowRect = {kMost, 0, -kMost, 9}; },
       "Invalid window size"},
      {[](FakeDesktop&, FakeItems& items) { items.itemResult = kDenied; },
       "Failed to create capture item: " + HResultText(kDenied)},
  };
  AimAtWindow(7);
  for (const Case& each : cases) {
    FakeDesktop desktop;
    FakeItems items;
    each.spoil(desktop, items);
    const CapturedLog log;
    EXPECT_FALSE(CreateScreenshotItem(desktop, items, settings_)) << each.error;
    EXPECT_THAT(log.text(), HasSubstr("[ERROR] " + each.error));
  }
}

TEST_F(ScreenshotTargetTest, AsksNothingAboutNoWindow) {
  AimAtWindow(0);
  const CapturedLog log;
  EXPECT_FALSE(Create());
  EXPECT_THAT(items_.calls, IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Starting window capture...", "[ERROR] Invalid window handle"));
}

TEST_F(ScreenshotTargetTest, TakesAWindowOfOnePixel) {
  AimAtWindow(7);
  desktop_.windowRect = {-1, -1, 0, 0};
  EXPECT_TRUE(Create());
}

TEST_F(ScreenshotTargetTest, TakesAMonitorWhole) {
  desktop_.monitors.push_back({1, "second", 22, {-1280, -20, 0, 1004}, false});
  settings_.monitorIndex = 1;
  const CapturedLog log;
  EXPECT_THAT(Create(), Optional(Field(&ScreenshotTarget::crop, Eq(std::nullopt))));
  EXPECT_THAT(items_.calls, ElementsAre("Monitors", "CreateItemForMonitor 22"));
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Starting monitor capture...",
                                       "[INFO] Monitor info: second at (-1280, -20)"));
}

TEST_F(ScreenshotTargetTest, RefusesAMonitorThatIsNotThere) {
  for (const std::int32_t index : {1, -1, kMost, -kMost - 1}) {
    settings_.monitorIndex = index;
    items_.calls.clear();
    const CapturedLog log;
    EXPECT_FALSE(Create()) << index;
    EXPECT_THAT(items_.calls, ElementsAre("Monitors"));
    EXPECT_THAT(log.lines(),
                ElementsAre("[INFO] Starting monitor capture...", "[ERROR] Invalid monitor index"));
  }
}

TEST_F(ScreenshotTargetTest, RefusesAMonitorWithoutAHandle) {
  desktop_.monitors[0].handle = 0;
  const CapturedLog log;
  EXPECT_FALSE(Create());
  EXPECT_THAT(log.lines(),
              ElementsAre("[INFO] Starting monitor capture...", "[INFO] Monitor info: first at (0, 0)",
                          "[ERROR] Failed to get monitor handle"));
}

TEST_F(ScreenshotTargetTest, TellsThatAMonitorHasNoItem) {
  items_.itemResult = kDenied;
  const CapturedLog log;
  EXPECT_FALSE(Create());
  EXPECT_THAT(log.text(), HasSubstr("[ERROR] Failed to create capture item: HRESULT: 0x80070005"));
}

TEST_F(ScreenshotTargetTest, CutsARegionOutAtItsDesktopCoordinates) {
  AimAtRegion({.left = -10, .top = 20, .width = 100, .height = 50});
  const CapturedLog log;
  EXPECT_THAT(Create(), Optional(Field(&ScreenshotTarget::crop, Rectangle{-10, 20, 90, 70})));
  EXPECT_THAT(items_.calls, ElementsAre("MonitorFromRect -10 20 90 70", "CreateItemForMonitor 11"));
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Starting region capture..."));
}

TEST_F(ScreenshotTargetTest, RefusesARegionThatIsNone) {
  const std::vector<CaptureRegion> regions = {
      {0, 0, 0, 50},     {0, 0, 50, 0},     {0, 0, -1, 50},         {0, 0, 50, -1},
      {1, 0, kMost, 50}, {0, 1, 50, kMost}, {kMost, 0, kMost, 50},  {-kMost - 1, 0, -1, 50},
      {0, 0, 0, 0},      {0, kMost, 50, 1}, {0, -kMost - 1, 50, -1}};
  for (const CaptureRegion& region : regions) {
    AimAtRegion(region);
    const CapturedLog log;
    EXPECT_FALSE(Create()) << region.left << " " << region.top << " " << region.width << " " << region.height;
    EXPECT_THAT(log.lines(),
                ElementsAre("[INFO] Starting region capture...", "[ERROR] Invalid capture region"));
  }
  EXPECT_THAT(items_.calls, IsEmpty());
}

TEST_F(ScreenshotTargetTest, TakesTheLargestRegion) {
  AimAtRegion({-kMost - 1, -kMost - 1, kMost, kMost});
  EXPECT_TRUE(Create());
  AimAtRegion({0, 0, kMost, kMost});
  EXPECT_TRUE(Create());
}

TEST_F(ScreenshotTargetTest, TellsThatARegionHasNoMonitorOrNoItem) {
  AimAtRegion({0, 0, 10, 10});
  items_.itemResult = kDenied;
  const CapturedLog log;
  EXPECT_FALSE(Create());
  EXPECT_THAT(log.text(), HasSubstr("[ERROR] Failed to create capture item: HRESULT: 0x80070005"));
  desktop_.nearestMonitor = 0;
  EXPECT_FALSE(Create());
  EXPECT_TRUE(log.has("[ERROR] Failed to determine monitor for region"));
}

TEST_F(ScreenshotTargetTest, HasNoTargetWithoutAPicture) {
  for (const int mode : {-1, 3, 77}) {
    settings_.mode = static_cast<CaptureMode>(mode);
    const CapturedLog log;
    EXPECT_FALSE(Create());
    EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Invalid capture mode"));
  }
  EXPECT_THAT(items_.calls, IsEmpty());
}

}  // namespace
}  // namespace brisolte
