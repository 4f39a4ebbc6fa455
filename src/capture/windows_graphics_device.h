#pragma once

#include <memory>

#include "capture/recording_parts.h"
#include "video/graphics_device.h"

namespace brisolte {

/// The Direct3D 11 device of a controller. Windows only.
class WindowsGraphicsDevice final : public GraphicsDevice {
 public:
  /// A device on the default adapter's hardware; null when there is none.
  static std::unique_ptr<WindowsGraphicsDevice> Create();

  const Direct3D& direct3d() const { return direct3d_; }

 private:
  Direct3D direct3d_;
};

}  // namespace brisolte
