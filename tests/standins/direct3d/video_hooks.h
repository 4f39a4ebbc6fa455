#pragma once

#include <d3d11.h>

namespace brisolte::standins {

/// Gives Wine's video device and context a video processor, which converts on the CPU: BGRA to NV12 or BGRA.
void HookVideo(ID3D11VideoDevice& device, ID3D11VideoContext& context);

}  // namespace brisolte::standins
