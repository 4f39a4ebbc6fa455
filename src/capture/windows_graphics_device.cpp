#include "capture/windows_graphics_device.h"

#include <array>

namespace brisolte {

std::unique_ptr<WindowsGraphicsDevice> WindowsGraphicsDevice::Create() {
  constexpr std::array kFeatureLevels = {D3D_FEATURE_LEVEL_11_1, D3D_FEATURE_LEVEL_11_0,
                                         D3D_FEATURE_LEVEL_10_1, D3D_FEATURE_LEVEL_10_0};
  auto graphics = std::make_unique<WindowsGraphicsDevice>();
  const HRESULT result = D3D11CreateDevice(
      nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, D3D11_CREATE_DEVICE_BGRA_SUPPORT, kFeatureLevels.data(),
      static_cast<UINT>(kFeatureLevels.size()), D3D11_SDK_VERSION, graphics->device_.ReleaseAndGetAddressOf(),
      nullptr, graphics->context_.ReleaseAndGetAddressOf());
  return SUCCEEDED(result) ? std::move(graphics) : nullptr;
}

}  // namespace brisolte
