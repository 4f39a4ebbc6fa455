#pragma once

#include <windows.h>

#include <cstdint>

namespace brisolte {

// The system's handles are numbers that have a pointer's type.
// NOLINTBEGIN(performance-no-int-to-ptr)

/// The system's handle behind the number of a window.
inline HWND WindowOf(std::int64_t number) {
  return reinterpret_cast<HWND>(static_cast<std::intptr_t>(number));
}

/// The system's handle behind the number of a monitor.
inline HMONITOR MonitorOf(std::int64_t number) {
  return reinterpret_cast<HMONITOR>(static_cast<std::intptr_t>(number));
}

// NOLINTEND(performance-no-int-to-ptr)

}  // namespace brisolte
