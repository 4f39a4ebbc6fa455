#pragma once

#include <optional>

#include "capture/capture_settings.h"
#include "desktop/desktop.h"
#include "video/capture_platform.h"

namespace brisolte {

/// What a capture item was made for.
struct CaptureTarget {
  Rectangle monitor;  ///< the captured monitor; empty for a window
};

/// Makes the platform's capture item for the monitor or window that the settings name. A hidden or minimised
/// window is shown again first, which takes 100 ms each. Empty when that fails, with an ERROR line.
std::optional<CaptureTarget> CreateTargetItem(Desktop& desktop, CapturePlatform& platform,
                                              const CaptureSettings& settings);

}  // namespace brisolte
