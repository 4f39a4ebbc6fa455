#pragma once

#include <windows.h>

namespace brisolte {

/// While it lives, the calling thread is told places in the pixels that monitors have.
///
/// Node.js declares no awareness of display scaling, so on a scaled display the system tells it of a smaller
/// desktop than there is. What is captured has the monitors' own pixels all the same, and hosts that declare
/// awareness, as Electron does, are told of these.
class PhysicalPixels {
 public:
  PhysicalPixels() : before_(SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE)) {}
  PhysicalPixels(const PhysicalPixels&) = delete;
  PhysicalPixels& operator=(const PhysicalPixels&) = delete;
  ~PhysicalPixels() {
    if (before_ != nullptr) {
      SetThreadDpiAwarenessContext(before_);
    }
  }

 private:
  DPI_AWARENESS_CONTEXT before_;  ///< null when the system refused
};

}  // namespace brisolte
