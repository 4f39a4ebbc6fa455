#include "video/capture_target.h"

#include <string>

#include "common/logger.h"
#include "common/text.h"

namespace brisolte {
namespace {

constexpr std::int32_t kRepairMs = 100;

std::optional<CaptureTarget> CreateMonitorItem(CapturePlatform& platform, std::int32_t monitorIndex) {
  const auto monitors = platform.Monitors();
  const MonitorEntry* monitor = FindMonitor(monitors, monitorIndex);
  if (monitor == nullptr) {
    Logger::Error("Invalid monitor index: " + std::to_string(monitorIndex));
    return std::nullopt;
  }
  const std::int64_t handle = platform.MonitorFromPoint(CentreOf(monitor->rect));
  if (handle == 0) {
    Logger::Error("Failed to get monitor handle");
    return std::nullopt;
  }
  if (const auto result = platform.CreateItemForMonitor(handle); result < 0) {
    Logger::Error("Failed to create monitor videoCapture item: " + HResultText(result));
    return std::nullopt;
  }
  return CaptureTarget{monitor->rect};
}

bool ShowHiddenWindow(CapturePlatform& platform, std::int64_t window) {
  Logger::Warning("Warning: Target window is not visible");
  platform.RestoreWindow(window);
  platform.BringWindowToTop(window);
  platform.UpdateWindow(window);
  platform.Sleep(kRepairMs);
  if (!platform.IsWindowVisible(window)) {
    Logger::Error("Window still not visible after attempting to restore");
    return false;
  }
  return true;
}

bool RestoreMinimizedWindow(CapturePlatform& platform, std::int64_t window) {
  Logger::Warning("Warning: Target window is minimized");
  platform.RestoreWindow(window);
  platform.Sleep(kRepairMs);
  if (platform.IsIconic(window)) {
    Logger::Error("Window still minimized after attempting to restore");
    return false;
  }
  return true;
}

std::optional<CaptureTarget> CreateWindowItem(CapturePlatform& platform, std::int64_t window) {
  if (window == 0 || !platform.IsWindow(window)) {
    Logger::Error("Invalid window handle");
    return std::nullopt;
  }
  const bool hidden = !platform.IsWindowVisible(window);
  const bool minimized = platform.IsIconic(window);
  if (hidden && !ShowHiddenWindow(platform, window)) {
    return std::nullopt;
  }
  if (minimized && !RestoreMinimizedWindow(platform, window)) {
    return std::nullopt;
  }
  if (const auto result = platform.CreateItemForWindow(window); result < 0) {
    Logger::Error("Failed to create window videoCapture item: " + HResultText(result));
    return std::nullopt;
  }
  return CaptureTarget{};
}

}  // namespace

std::optional<CaptureTarget> CreateTargetItem(CapturePlatform& platform, const CaptureSettings& settings) {
  switch (settings.mode) {
    case CaptureMode::kScreen:
    case CaptureMode::kRegion:
      return CreateMonitorItem(platform, settings.monitorIndex);
    case CaptureMode::kWindow:
      return CreateWindowItem(platform, settings.windowHandle);
    case CaptureMode::kNone:
      break;
  }
  return std::nullopt;
}

}  // namespace brisolte
