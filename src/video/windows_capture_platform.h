#pragma once

#include <memory>

#include "video/capture_platform.h"

namespace brisolte {

/// The capture platform on Direct3D 11 and the Windows capture service.
std::unique_ptr<CapturePlatform> CreateWindowsCapturePlatform();

}  // namespace brisolte
