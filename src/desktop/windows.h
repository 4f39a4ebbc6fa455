#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "desktop/rectangle.h"

namespace brisolte {

/// One top-level window.
struct WindowEntry {
  std::int64_t handle = 0;  ///< the system's handle
  std::string title;        ///< UTF-8
  std::string className;    ///< UTF-8
  Rectangle rect;           ///< frame and title bar included
};

/// The visible windows that have a title and are worth recording, in the system's order from front to back.
/// Any thread. Windows only.
std::vector<WindowEntry> EnumerateWindows();

}  // namespace brisolte
