#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "desktop/monitors.h"
#include "desktop/rectangle.h"
#include "desktop/windows.h"

namespace brisolte {

/// What is on the user's desktop and where, and what may be done to a window. Handles are numbers here, and
/// places are in the pixels that monitors have, whatever the display scaling and the host. Any thread may ask
/// for places; windows are shown by the controller's thread alone, because a window of the host may belong to
/// it and wait for its messages.
class Desktop {
 public:
  Desktop() = default;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;
  virtual ~Desktop() = default;

  /// In the system's order.
  virtual std::vector<MonitorEntry> Monitors() = 0;
  /// Those worth recording, from front to back.
  virtual std::vector<WindowEntry> Windows() = 0;

  /// The monitor nearest to a point; 0 when there is none.
  virtual std::int64_t MonitorFromPoint(PixelPoint point) = 0;
  /// The monitor that shows most of a rectangle or is nearest to it; 0 when there is none.
  virtual std::int64_t MonitorFromRect(const Rectangle& rect) = 0;

  virtual bool IsWindow(std::int64_t window) = 0;
  virtual bool IsWindowVisible(std::int64_t window) = 0;
  virtual bool IsIconic(std::int64_t window) = 0;
  /// With its frame; empty when it has no place.
  virtual std::optional<Rectangle> WindowRect(std::int64_t window) = 0;
  /// What is drawn of it: without the invisible borders that some systems count as its frame. Empty when
  /// unknown.
  virtual std::optional<Rectangle> VisibleRect(std::int64_t window) = 0;

  virtual void RestoreWindow(std::int64_t window) = 0;
  virtual void BringWindowToTop(std::int64_t window) = 0;
  virtual void UpdateWindow(std::int64_t window) = 0;
  /// Gives a window time to show itself.
  virtual void Sleep(std::int32_t milliseconds) = 0;
};

/// The desktop of the system. Windows only.
std::unique_ptr<Desktop> CreateWindowsDesktop();

}  // namespace brisolte
