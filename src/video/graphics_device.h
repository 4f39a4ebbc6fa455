#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <cstdint>
#include <string>

#include "video/capture_platform.h"
#include "video/graphics_capture_abi.h"

namespace brisolte {

/// The Direct3D device of a capture with what else the capture uses of it. Empty until made.
struct GraphicsDevice {
  Microsoft::WRL::ComPtr<ID3D11Device> device;
  Microsoft::WRL::ComPtr<ID3D11DeviceContext> context;
  Microsoft::WRL::ComPtr<ID3D11VideoDevice> videoDevice;
  Microsoft::WRL::ComPtr<ID3D11VideoContext> videoContext;
};

/// Makes the device and its immediate context, safe to be used by the capture service's threads at the same
/// time.
HRESULT CreateGraphicsDevice(DriverType type, GraphicsDevice& graphics, D3D_FEATURE_LEVEL& featureLevel);

/// The device as the capture service takes it; null when there is none. Raises std::runtime_error when the
/// device has no DXGI side.
Microsoft::WRL::ComPtr<abi::IDirect3DDevice> WrapGraphicsDevice(ID3D11Device& device);

/// The locally unique identifier of the adapter behind the device, or "unknown".
std::string AdapterIdentifier(ID3D11Device& device);

}  // namespace brisolte
