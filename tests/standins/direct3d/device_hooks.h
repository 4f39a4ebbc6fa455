#pragma once

#include <d3d11.h>

namespace brisolte::standins {

/// Adds to Wine's devices what they lack; harmless to repeat.
///
/// NV12 textures of default usage may be asked for with any bind flags and as shared ones. Wine makes them
/// without, and their description still reports what was asked for.
void HookDevice(ID3D11Device& device);

}  // namespace brisolte::standins
