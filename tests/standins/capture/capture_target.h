#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "video/graphics_capture_abi.h"

namespace brisolte::standins {

/// What is captured: a window or a monitor.
class CaptureTarget {
 public:
  explicit CaptureTarget(HWND window) : window_(window) {}
  explicit CaptureTarget(HMONITOR monitor) : monitor_(monitor) {}

  bool OfWindow() const { return window_ != nullptr; }
  /// Whether the service accepts it: a top-level window, or a monitor.
  bool Valid() const;
  bool Gone() const;
  /// Whether there is something to see: a hidden or minimised window has no picture.
  bool Shown() const;
  /// Its place on the desktop, with the frame if it is a window; none when it is gone.
  std::optional<RECT> Rect() const;
  std::wstring Name() const;

  /// Copies its picture, from its top-left corner and at most `size`, to the top-left corner of
  /// `destination`.
  bool CopyTo(HDC destination, abi::SizeInt32 size) const;

 private:
  HWND window_ = nullptr;
  HMONITOR monitor_ = nullptr;
};

inline abi::SizeInt32 SizeOf(const RECT& rect) {
  return {rect.right - rect.left, rect.bottom - rect.top};
}

}  // namespace brisolte::standins
