#include "video/capture_target.h"

#include <string>

#include "common/logger.h"
#include "common/text.h"

namespace brisolte {
namespace {

constexpr std::int32_t kRepairMs = 100;

std::optional<CaptureTarget> CreateMonitorItem(Desktop& desktop, CapturePlatform& platform,
                                               const CaptureSettings& settings) {
  const auto monitors = desktop.Monitors();
  const MonitorEntry* chosen = FindMonitor(monitors, settings.monitorIndex);
  if (chosen == nullptr) {
    Logger::Error("Invalid monitor index: " + std::to_string(settings.monitorIndex));
    return std::nullopt;
  }
  const MonitorEntry monitor =
      ShowsRegion(settings) ? MonitorForRegion(monitors, *chosen, settings.region) : *chosen;
  const std::int64_t handle = desktop.MonitorFromPoint(monitor.rect.centre());
  if (handle == 0) {
    Logger::Error("Failed to get monitor handle");
    return std::nullopt;
  }
  if (const auto result = platform.CreateItemForMonitor(handle); result < 0) {
    Logger::Error("Failed to create monitor videoCapture item: " + HResultText(result));
    return std::nullopt;
  }
  return CaptureTarget{monitor.rect};
}

bool ShowHiddenWindow(Desktop& desktop, std::int64_t window) {
  Logger::Warning("Warning: Target window is not visible");
  desktop.RestoreWindow(window);
  desktop.BringWindowToTop(window);
  desktop.UpdateWindow(window);
  desktop.Sleep(kRepairMs);
  if (!desktop.IsWindowVisible(window)) {
    Logger::Error("Window still not visible after attempting to restore");
    return false;
  }
  return true;
}

bool RestoreMinimizedWindow(Desktop& desktop, std::int64_t window) {
  Logger::Warning("Warning: Target window is minimized");
  desktop.RestoreWindow(window);
  desktop.Sleep(kRepairMs);
  if (desktop.IsIconic(window)) {
    Logger::Error("Window still minimized after attempting to restore");
    return false;
  }
  return true;
}

std::optional<CaptureTarget> CreateWindowItem(Desktop& desktop, CapturePlatform& platform,
                                              std::int64_t window) {
  if (window == 0 || !desktop.IsWindow(window)) {
    Logger::Error("Invalid window handle");
    return std::nullopt;
  }
  const bool hidden = !desktop.IsWindowVisible(window);
  const bool minimized = desktop.IsIconic(window);
  if (hidden && !ShowHiddenWindow(desktop, window)) {
    return std::nullopt;
  }
  if (minimized && !RestoreMinimizedWindow(desktop, window)) {
    return std::nullopt;
  }
  if (const auto result = platform.CreateItemForWindow(window); result < 0) {
    Logger::Error("Failed to create window videoCapture item: " + HResultText(result));
    return std::nullopt;
  }
  return CaptureTarget{};
}

}  // namespace

std::optional<CaptureTarget> CreateTargetItem(Desktop& desktop, CapturePlatform& platform,
                                              const CaptureSettings& settings) {
  switch (settings.mode) {
    case CaptureMode::kScreen:
    case CaptureMode::kRegion:
      return CreateMonitorItem(desktop, platform, settings);
    case CaptureMode::kWindow:
      return CreateWindowItem(desktop, platform, settings.windowHandle);
    case CaptureMode::kNone:
      break;
  }
  return std::nullopt;
}

}  // namespace brisolte
