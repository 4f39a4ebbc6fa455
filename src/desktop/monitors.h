#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "desktop/rectangle.h"

namespace brisolte {

/// One display monitor.
struct MonitorEntry {
  std::int32_t index = 0;   ///< position in its list, from 0
  std::string name;         ///< device name, UTF-8
  std::int64_t handle = 0;  ///< the system's handle
  Rectangle rect;           ///< the whole monitor, not its work area
  bool isPrimary = false;
};

/// The monitor at this index, or null.
inline const MonitorEntry* FindMonitor(const std::vector<MonitorEntry>& monitors, std::int32_t index) {
  const bool exists = index >= 0 && static_cast<std::size_t>(index) < monitors.size();
  return exists ? &monitors[static_cast<std::size_t>(index)] : nullptr;
}

/// The monitors of the desktop, in the system's order; one whose information cannot be read is left out. Any
/// thread. Windows only.
std::vector<MonitorEntry> EnumerateMonitors();

}  // namespace brisolte
