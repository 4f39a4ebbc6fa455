#include "capture/screenshot_target.h"

#include <gmock/gmock.h>

#include <limits>
#include <string>

#include "common/text.h"
#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::Eq;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr std::int32_t kDenied = static_cast<std::int32_t>(0x80070005);
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

class FakeDesktop : public ScreenshotDesktop {
 public:
  bool IsWindow(std::int64_t window) override { return Asked("IsWindow", window) && isWindow; }
  bool IsWindowVisible(std::int64_t window) override { return Asked("IsWindowVisible", window) && isVisible; }
  bool IsIconic(std::int64_t window) override { return Asked("IsIconic", window) && isIconic; }
  bool GetWindowRect(std::int64_t window, Rectangle& rect) override {
    rect = windowRect;
    return Asked("GetWindowRect", window) && hasRect;
  }
  std::vector<MonitorEntry> Monitors() override {
    calls.emplace_back("Monitors");
    return monitors;
  }
  std::int64_t MonitorFromRect(const Rectangle& rect) override {
    calls.push_back("MonitorFromRect " + std::to_string(rect.left) + " " + std::to_string(rect.top) + " " +
                    std::to_string(rect.right) + " " + std::to_string(rect.bottom));
    return nearestMonitor;
  }
  std::int32_t CreateItemForWindow(std::int64_t window) override {
    Asked("CreateItemForWindow", window);
    return itemResult;
  }
  std::int32_t CreateItemForMonitor(std::int64_t monitor) override {
    Asked("CreateItemForMonitor", monitor);
    return itemResult;
  }

  std::vector<std::string> calls;
  bool isWindow = true;
  bool isVisible = true;
  bool isIconic = false;
  bool hasRect = true;
  Rectangle windowRect{0, 0, 100, 100};
  std::vector<MonitorEntry> monitors{{0, "first", 11, {0, 0, 1920, 1080}, true},
                                     {1, "second", 22, {-1280, -20, 0, 1004}, false}};
  std::int64_t nearestMonitor = 33;
  std::int32_t itemResult = 0;

 private:
  bool Asked(const std::string& call, std::int64_t handle) {
    calls.push_back(call + " " + std::to_string(handle));
    return true;
  }
};

class ScreenshotTargetTest : public ::testing::Test {
 protected:
  std::optional<ScreenshotTarget> Create() { return CreateScreenshotItem(desktop_, settings_); }

  void AimAtWindow(std::int64_t window) {
    settings_.mode = CaptureMode::kWindow;
    settings_.windowHandle = window;
  }
  void AimAtRegion(const CaptureRegion& region) {
    settings_.mode = CaptureMode::kRegion;
    settings_.region = region;
  }

  CaptureSettings settings_;
  FakeDesktop desktop_;
};

TEST_F(ScreenshotTargetTest, TakesAWindowWhole) {
  AimAtWindow(7);
  const CapturedLog log;
  EXPECT_THAT(Create(), Optional(Field(&ScreenshotTarget::crop, Eq(std::nullopt))));
  EXPECT_THAT(desktop_.calls, ElementsAre("IsWindow 7", "IsWindowVisible 7", "IsIconic 7", "GetWindowRect 7",
                                          "CreateItemForWindow 7"));
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Starting window capture..."));
}

TEST_F(ScreenshotTargetTest, NamesWhatIsWrongWithAWindow) {
  struct Case {
    void (*spoil)(FakeDesktop&);
    std::string error;
  };
  const std::vector<Case> cases = {
      {[](FakeDesktop& desktop) { desktop.isWindow = false; }, "Invalid window handle"},
      {[](FakeDesktop& desktop) { desktop.isVisible = false; }, "Window is not visible"},
      {[](FakeDesktop& desktop) { desktop.isIconic = true; }, "Window is not visible"},
      {[](FakeDesktop& desktop) { desktop.hasRect = false; }, "Failed to get window rect"},
      {[](FakeDesktop& desktop) { desktop.windowRect = {5, 5, 5, 9}; }, "Invalid window size"},
      {[](FakeDesktop& desktop) { desktop.windowRect = {5, 5, 9, 5}; }, "Invalid window size"},
      {[](FakeDesktop& desktop) { desktop.windowRect = {kMost, 0, -kMost, 9}; }, "Invalid window size"},
      {[](FakeDesktop& desktop) { desktop.itemResult = kDenied; },
       "Failed to create capture item: " + HResultText(kDenied)},
  };
  AimAtWindow(7);
  for (const Case& each : cases) {
    FakeDesktop desktop;
    each.spoil(desktop);
    const CapturedLog log;
    EXPECT_FALSE(CreateScreenshotItem(desktop, settings_)) << each.error;
    EXPECT_THAT(log.text(), HasSubstr("[ERROR] " + each.error));
  }
}

TEST_F(ScreenshotTargetTest, AsksNothingAboutNoWindow) {
  AimAtWindow(0);
  const CapturedLog log;
  EXPECT_FALSE(Create());
  EXPECT_THAT(desktop_.calls, IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Starting window capture...", "[ERROR] Invalid window handle"));
}

TEST_F(ScreenshotTargetTest, TakesAWindowOfOnePixel) {
  AimAtWindow(7);
  desktop_.windowRect = {-1, -1, 0, 0};
  EXPECT_TRUE(Create());
}

TEST_F(ScreenshotTargetTest, TakesAMonitorWhole) {
  settings_.monitorIndex = 1;
  const CapturedLog log;
  EXPECT_THAT(Create(), Optional(Field(&ScreenshotTarget::crop, Eq(std::nullopt))));
  EXPECT_THAT(desktop_.calls, ElementsAre("Monitors", "CreateItemForMonitor 22"));
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Starting monitor capture...",
                                       "[INFO] Monitor info: second at (-1280, -20)"));
}

TEST_F(ScreenshotTargetTest, RefusesAMonitorThatIsNotThere) {
  for (const std::int32_t index : {2, -1, kMost, -kMost - 1}) {
    settings_.monitorIndex = index;
    desktop_.calls.clear();
    const CapturedLog log;
    EXPECT_FALSE(Create()) << index;
    EXPECT_THAT(desktop_.calls, ElementsAre("Monitors"));
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
  desktop_.itemResult = kDenied;
  const CapturedLog log;
  EXPECT_FALSE(Create());
  EXPECT_THAT(log.text(), HasSubstr("[ERROR] Failed to create capture item: HRESULT: 0x80070005"));
}

TEST_F(ScreenshotTargetTest, CutsARegionOutAtItsDesktopCoordinates) {
  AimAtRegion({.left = -10, .top = 20, .width = 100, .height = 50});
  const CapturedLog log;
  EXPECT_THAT(Create(), Optional(Field(&ScreenshotTarget::crop, Rectangle{-10, 20, 90, 70})));
  EXPECT_THAT(desktop_.calls, ElementsAre("MonitorFromRect -10 20 90 70", "CreateItemForMonitor 33"));
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
  EXPECT_THAT(desktop_.calls, IsEmpty());
}

TEST_F(ScreenshotTargetTest, TakesTheLargestRegion) {
  AimAtRegion({-kMost - 1, -kMost - 1, kMost, kMost});
  EXPECT_TRUE(Create());
  AimAtRegion({0, 0, kMost, kMost});
  EXPECT_TRUE(Create());
}

TEST_F(ScreenshotTargetTest, TellsThatARegionHasNoMonitorOrNoItem) {
  AimAtRegion({0, 0, 10, 10});
  desktop_.itemResult = kDenied;
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
  EXPECT_THAT(desktop_.calls, IsEmpty());
}

}  // namespace
}  // namespace brisolte
