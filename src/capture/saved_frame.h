#pragma once

#include <wrl/client.h>

#include <optional>
#include <string>

#include "desktop/rectangle.h"
#include "video/graphics_capture_abi.h"
#include "video/graphics_device.h"

namespace brisolte {

/// A captured frame, with how much of it is drawn as `DrawnSize` has it.
struct FramePicture {
  Microsoft::WRL::ComPtr<abi::IDirect3DSurface> surface;
  PixelSize content;
  std::optional<Rectangle> visible;
};

/// Writes what is drawn of a captured frame, or the part of it that `crop` cuts out, as a PNG to `filePath`
/// (UTF-8). `direct3d` is what it was captured with. False when it cannot, with an ERROR line; the file is
/// then as it was. Windows only.
bool SaveFrameToFile(const Direct3D& direct3d, const FramePicture& picture, const std::string& filePath,
                     const std::optional<Rectangle>& crop);

}  // namespace brisolte
