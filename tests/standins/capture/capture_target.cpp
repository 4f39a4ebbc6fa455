#include "capture/capture_target.h"

#include <array>
#include <memory>
#include <type_traits>

namespace brisolte::standins {

namespace {

/// While it lives, this thread has the monitors' own pixels: the service knows no others, whatever the
/// awareness of the process that it works in.
class MonitorPixels {
 public:
  MonitorPixels() = default;
  MonitorPixels(const MonitorPixels&) = delete;
  MonitorPixels& operator=(const MonitorPixels&) = delete;
  MonitorPixels(MonitorPixels&&) = delete;
  MonitorPixels& operator=(MonitorPixels&&) = delete;
  ~MonitorPixels() { SetThreadDpiAwarenessContext(before_); }

 private:
  DPI_AWARENESS_CONTEXT before_ = SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
};

std::optional<MONITORINFOEXW> MonitorInfo(HMONITOR monitor) {
  const MonitorPixels pixels;
  MONITORINFOEXW info{};
  info.cbSize = sizeof(info);
  return GetMonitorInfoW(monitor, &info) != FALSE ? std::optional(info) : std::nullopt;
}

}  // namespace

bool CaptureTarget::Valid() const {
  if (monitor_ != nullptr) {
    return MonitorInfo(monitor_).has_value();
  }
  return window_ != nullptr && IsWindow(window_) != FALSE && GetAncestor(window_, GA_ROOT) == window_;
}

bool CaptureTarget::Gone() const {
  return monitor_ != nullptr ? !MonitorInfo(monitor_) : IsWindow(window_) == FALSE;
}

bool CaptureTarget::Shown() const {
  return monitor_ != nullptr || (IsWindowVisible(window_) != FALSE && IsIconic(window_) == FALSE);
}

std::optional<RECT> CaptureTarget::Rect() const {
  if (monitor_ != nullptr) {
    const auto info = MonitorInfo(monitor_);
    return info ? std::optional(info->rcMonitor) : std::nullopt;
  }
  const MonitorPixels pixels;
  RECT rect{};
  return GetWindowRect(window_, &rect) != FALSE ? std::optional(rect) : std::nullopt;
}

std::wstring CaptureTarget::Name() const {
  if (monitor_ != nullptr) {
    const auto info = MonitorInfo(monitor_);
    return info ? info->szDevice : L"";
  }
  std::array<wchar_t, 256> title{};
  // GetWindowTextW would wait for the window's thread.
  InternalGetWindowText(window_, title.data(), static_cast<int>(title.size()));
  return title.data();
}

bool CaptureTarget::CopyTo(HDC destination, abi::SizeInt32 size) const {
  const MonitorPixels pixels;
  const auto rect = monitor_ != nullptr ? Rect() : std::optional(RECT{});
  if (!rect) {
    return false;
  }
  const auto release = [this](HDC source) { ReleaseDC(window_, source); };
  const std::unique_ptr<std::remove_pointer_t<HDC>, decltype(release)> source(
      monitor_ != nullptr ? GetDC(nullptr) : GetWindowDC(window_), release);
  // In one piece: the X server gives the picture of one moment, while pieces would show several.
  return source != nullptr && BitBlt(destination, 0, 0, size.Width, size.Height, source.get(), rect->left,
                                     rect->top, SRCCOPY) != FALSE;
}

}  // namespace brisolte::standins
