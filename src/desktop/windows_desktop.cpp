#include <windows.h>
// After windows.h, which declares what it needs.
#include <dwmapi.h>

#include "desktop/desktop.h"
#include "desktop/handles.h"
#include "desktop/physical_pixels.h"

namespace brisolte {
namespace {

class WindowsDesktop final : public Desktop {
 public:
  std::vector<MonitorEntry> Monitors() override { return EnumerateMonitors(); }
  std::vector<WindowEntry> Windows() override { return EnumerateWindows(); }

  std::int64_t MonitorFromPoint(PixelPoint point) override {
    const PhysicalPixels pixels;
    return reinterpret_cast<std::intptr_t>(::MonitorFromPoint({point.x, point.y}, MONITOR_DEFAULTTONEAREST));
  }
  std::int64_t MonitorFromRect(const Rectangle& rect) override {
    const PhysicalPixels pixels;
    const RECT place{rect.left, rect.top, rect.right, rect.bottom};
    return reinterpret_cast<std::intptr_t>(::MonitorFromRect(&place, MONITOR_DEFAULTTONEAREST));
  }

  bool IsWindow(std::int64_t window) override { return ::IsWindow(WindowOf(window)) != FALSE; }
  bool IsWindowVisible(std::int64_t window) override { return ::IsWindowVisible(WindowOf(window)) != FALSE; }
  bool IsIconic(std::int64_t window) override { return ::IsIconic(WindowOf(window)) != FALSE; }
  std::optional<Rectangle> WindowRect(std::int64_t window) override {
    const PhysicalPixels pixels;
    RECT found{};
    if (GetWindowRect(WindowOf(window), &found) == FALSE) {
      return std::nullopt;
    }
    return Rectangle{found.left, found.top, found.right, found.bottom};
  }
  std::optional<Rectangle> VisibleRect(std::int64_t window) override {
    // In the monitors' own pixels whatever the thread is told of places.
    RECT found{};
    if (FAILED(DwmGetWindowAttribute(WindowOf(window), DWMWA_EXTENDED_FRAME_BOUNDS, &found, sizeof(found)))) {
      return std::nullopt;
    }
    return Rectangle{found.left, found.top, found.right, found.bottom};
  }

  void RestoreWindow(std::int64_t window) override { ShowWindow(WindowOf(window), SW_RESTORE); }
  void BringWindowToTop(std::int64_t window) override { ::BringWindowToTop(WindowOf(window)); }
  void UpdateWindow(std::int64_t window) override { ::UpdateWindow(WindowOf(window)); }
  void Sleep(std::int32_t milliseconds) override { ::Sleep(static_cast<DWORD>(milliseconds)); }
};

}  // namespace

std::unique_ptr<Desktop> CreateWindowsDesktop() {
  return std::make_unique<WindowsDesktop>();
}

}  // namespace brisolte
