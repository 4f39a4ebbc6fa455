#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "capture/capture_settings.h"
#include "desktop/monitors.h"
#include "desktop/rectangle.h"

namespace brisolte {

/// What choosing the target of a screenshot asks the system for. Handles and HRESULTs are numbers here.
class ScreenshotDesktop {
 public:
  ScreenshotDesktop() = default;
  ScreenshotDesktop(const ScreenshotDesktop&) = delete;
  ScreenshotDesktop& operator=(const ScreenshotDesktop&) = delete;
  virtual ~ScreenshotDesktop() = default;

  virtual bool IsWindow(std::int64_t window) = 0;
  virtual bool IsWindowVisible(std::int64_t window) = 0;
  virtual bool IsIconic(std::int64_t window) = 0;
  /// False when it has none.
  virtual bool GetWindowRect(std::int64_t window, Rectangle& rect) = 0;

  virtual std::vector<MonitorEntry> Monitors() = 0;
  /// The monitor that shows most of the rectangle or is nearest to it; 0 when there is none.
  virtual std::int64_t MonitorFromRect(const Rectangle& rect) = 0;

  /// Makes the capture item.
  virtual std::int32_t CreateItemForWindow(std::int64_t window) = 0;
  virtual std::int32_t CreateItemForMonitor(std::int64_t monitor) = 0;
};

/// What of the captured item belongs into the file.
struct ScreenshotTarget {
  std::optional<Rectangle> crop;  ///< empty: all of it
};

/// Makes the capture item for the window, monitor or region that the settings name. A region is cut out of
/// the nearest monitor's image at its desktop coordinates, so it is exact on a monitor that begins at (0, 0).
/// Empty when there is no item, with an ERROR line.
std::optional<ScreenshotTarget> CreateScreenshotItem(ScreenshotDesktop& desktop,
                                                     const CaptureSettings& settings);

}  // namespace brisolte
