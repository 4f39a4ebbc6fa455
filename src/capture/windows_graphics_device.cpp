#include "capture/windows_graphics_device.h"

#include <utility>

namespace brisolte {

std::unique_ptr<WindowsGraphicsDevice> WindowsGraphicsDevice::Create() {
  auto device = std::make_unique<WindowsGraphicsDevice>();
  D3D_FEATURE_LEVEL featureLevel{};
  const HRESULT result = CreateGraphicsDevice(DriverType::kHardware, device->direct3d_, featureLevel);
  return SUCCEEDED(result) ? std::move(device) : nullptr;
}

}  // namespace brisolte
