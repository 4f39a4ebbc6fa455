#pragma once

#include <optional>
#include <string>

#include "desktop/rectangle.h"
#include "video/graphics_capture_abi.h"
#include "video/graphics_device.h"

namespace brisolte {

/// Writes a captured surface, or the part of it that `crop` cuts out, as a PNG to `filePath` (UTF-8).
/// `direct3d` is what the surface was captured with. False when it cannot, with an ERROR line; the file is
/// then as it was. Windows only.
bool SaveFrameToFile(const Direct3D& direct3d, abi::IDirect3DSurface& surface, const std::string& filePath,
                     const std::optional<Rectangle>& crop);

}  // namespace brisolte
