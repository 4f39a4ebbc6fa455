#pragma once

#include <wrl/client.h>

#include "video/capture_platform.h"
#include "video/graphics_capture_abi.h"

namespace brisolte {

/// What a frame pool calls when a frame arrives: an agile object that passes the call on and lets no
/// exception out.
Microsoft::WRL::ComPtr<abi::IFrameArrivedHandler> MakeFrameArrivedHandler(
    CapturePlatform::FrameArrivedHandler handler);

}  // namespace brisolte
