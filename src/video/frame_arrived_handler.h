#pragma once

#include <wrl/client.h>

#include <functional>

#include "video/graphics_capture_abi.h"

namespace brisolte {

/// What is done when a frame arrives in a pool of the capture service, which alone lends the pool for it.
using PoolHandler = std::function<HRESULT(abi::IDirect3D11CaptureFramePool&)>;

/// What a frame pool calls when a frame arrives: an agile object that passes the call on and lets no
/// exception out.
Microsoft::WRL::ComPtr<abi::IFrameArrivedHandler> MakeFrameArrivedHandler(PoolHandler handler);

}  // namespace brisolte
