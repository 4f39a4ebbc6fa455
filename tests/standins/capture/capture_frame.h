#pragma once

#include "capture/frame_buffers.h"

namespace brisolte::standins {

/// A frame in the caller's hands; its buffer is in use until it is closed or released.
ComPtr<abi::IDirect3D11CaptureFrame> MakeCaptureFrame(CapturedFrame frame);

}  // namespace brisolte::standins
