#pragma once

#include <cstdint>
#include <optional>

#include "capture/capture_settings.h"
#include "desktop/desktop.h"
#include "desktop/rectangle.h"

namespace brisolte {

/// Makes the capture item of a screenshot. Handles and HRESULTs are numbers here.
class ScreenshotItems {
 public:
  ScreenshotItems() = default;
  ScreenshotItems(const ScreenshotItems&) = delete;
  ScreenshotItems& operator=(const ScreenshotItems&) = delete;
  virtual ~ScreenshotItems() = default;

  virtual std::int32_t CreateItemForWindow(std::int64_t window) = 0;
  virtual std::int32_t CreateItemForMonitor(std::int64_t monitor) = 0;
};

/// What of the captured item belongs into the file.
struct ScreenshotTarget {
  std::optional<Rectangle> crop;     ///< empty: all of it
  std::optional<Rectangle> visible;  ///< where the window is drawn; empty for a monitor, or when unknown
};

/// Makes the capture item for the window, monitor or region that the settings name. A region is cut out of
/// the nearest monitor's image at its desktop coordinates, so it is exact on a monitor that begins at (0, 0).
/// Empty when there is no item, with an ERROR line.
std::optional<ScreenshotTarget> CreateScreenshotItem(Desktop& desktop, ScreenshotItems& items,
                                                     const CaptureSettings& settings);

}  // namespace brisolte
