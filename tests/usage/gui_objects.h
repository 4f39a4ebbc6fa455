#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>

namespace brisolte {

/// Bitmaps, device contexts and the like that a process has. Nothing when it cannot be told.
std::optional<std::uint64_t> CountGdiObjects(HANDLE process);

struct WindowCounts {
  /// Windows that Wine makes for Direct3D devices, one each. A window can only be destroyed by the thread
  /// that made it: when the last reference to a device goes on another, Wine leaves the window. Windows has
  /// none.
  std::uint64_t ofDevices = 0;
  std::uint64_t others = 0;
};

/// Top-level and message-only windows of a process; of the other user objects nothing tells the number.
WindowCounts CountWindows(DWORD pid);

}  // namespace brisolte
