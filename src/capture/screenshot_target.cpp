#include "capture/screenshot_target.h"

#include <limits>
#include <string>

#include "common/hresult_failure.h"
#include "common/logger.h"

namespace brisolte {
namespace {

std::optional<ScreenshotTarget> Fail(const char* text) {
  Logger::Error(text);
  return std::nullopt;
}

std::optional<ScreenshotTarget> TargetWith(std::int32_t itemResult, std::optional<Rectangle> crop) {
  if (!CheckResult(itemResult, "Failed to create capture item: ")) {
    return std::nullopt;
  }
  return ScreenshotTarget{crop, std::nullopt};
}

std::optional<ScreenshotTarget> CreateWindowItem(Desktop& desktop, ScreenshotItems& items,
                                                 std::int64_t window) {
  Logger::Info("Starting window capture...");
  if (window == 0 || !desktop.IsWindow(window)) {
    return Fail("Invalid window handle");
  }
  // The system calls a minimised window visible, but the service has no picture of it.
  if (!desktop.IsWindowVisible(window) || desktop.IsIconic(window)) {
    return Fail("Window is not visible");
  }
  const auto rect = desktop.WindowRect(window);
  if (!rect) {
    return Fail("Failed to get window rect");
  }
  if (rect->width() < 1 || rect->height() < 1) {
    return Fail("Invalid window size");
  }
  auto target = TargetWith(items.CreateItemForWindow(window), std::nullopt);
  if (target) {
    target->visible = desktop.VisibleRect(window);
  }
  return target;
}

std::optional<ScreenshotTarget> CreateMonitorItem(Desktop& desktop, ScreenshotItems& items,
                                                  std::int32_t index) {
  Logger::Info("Starting monitor capture...");
  const auto monitors = desktop.Monitors();
  const MonitorEntry* monitor = FindMonitor(monitors, index);
  if (monitor == nullptr) {
    return Fail("Invalid monitor index");
  }
  Logger::Info("Monitor info: " + monitor->name + " at (" + std::to_string(monitor->rect.left) + ", " +
               std::to_string(monitor->rect.top) + ")");
  if (monitor->handle == 0) {
    return Fail("Failed to get monitor handle");
  }
  return TargetWith(items.CreateItemForMonitor(monitor->handle), std::nullopt);
}

/// Empty for a region without an area or with edges that no rectangle can have.
std::optional<Rectangle> RectangleOf(const CaptureRegion& region) {
  const std::int64_t right = std::int64_t{region.left} + region.width;
  const std::int64_t bottom = std::int64_t{region.top} + region.height;
  constexpr std::int64_t kFarthest = std::numeric_limits<std::int32_t>::max();
  if (region.left >= right || region.top >= bottom || right > kFarthest || bottom > kFarthest) {
    return std::nullopt;
  }
  return Rectangle{region.left, region.top, static_cast<std::int32_t>(right),
                   static_cast<std::int32_t>(bottom)};
}

std::optional<ScreenshotTarget> CreateRegionItem(Desktop& desktop, ScreenshotItems& items,
                                                 const CaptureRegion& region) {
  Logger::Info("Starting region capture...");
  const auto rect = RectangleOf(region);
  if (!rect) {
    return Fail("Invalid capture region");
  }
  const std::int64_t monitor = desktop.MonitorFromRect(*rect);
  if (monitor == 0) {
    return Fail("Failed to determine monitor for region");
  }
  return TargetWith(items.CreateItemForMonitor(monitor), rect);
}

}  // namespace

std::optional<ScreenshotTarget> CreateScreenshotItem(Desktop& desktop, ScreenshotItems& items,
                                                     const CaptureSettings& settings) {
  switch (settings.mode) {
    case CaptureMode::kWindow:
      return CreateWindowItem(desktop, items, settings.windowHandle);
    case CaptureMode::kScreen:
      return CreateMonitorItem(desktop, items, settings.monitorIndex);
    case CaptureMode::kRegion:
      return CreateRegionItem(desktop, items, settings.region);
    case CaptureMode::kNone:
      break;
  }
  return Fail("Invalid capture mode");
}

}  // namespace brisolte
