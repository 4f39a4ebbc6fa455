#pragma once

#include <d3d11.h>
#include <dxgi.h>
#include <wrl/client.h>

#include <cstdint>
#include <string>

#include "video/capture_platform.h"
#include "video/graphics_capture_abi.h"

namespace brisolte {

/// A Direct3D device with what else is used of it. Empty until made.
struct Direct3D {
  Microsoft::WRL::ComPtr<ID3D11Device> device;
  Microsoft::WRL::ComPtr<ID3D11DeviceContext> context;
  Microsoft::WRL::ComPtr<ID3D11VideoDevice> videoDevice;
  Microsoft::WRL::ComPtr<ID3D11VideoContext> videoContext;
};

/// Makes the device and its immediate context, safe to be used by the capture service's threads at the same
/// time.
HRESULT CreateGraphicsDevice(DriverType type, Direct3D& graphics, D3D_FEATURE_LEVEL& featureLevel);

/// The device's DXGI side; null when it has none.
Microsoft::WRL::ComPtr<IDXGIDevice> DxgiDeviceOf(ID3D11Device& device);

/// Gives the device as the capture service takes it; never null on success.
HRESULT WrapDxgiDevice(IDXGIDevice& dxgi, Microsoft::WRL::ComPtr<abi::IDirect3DDevice>& wrapped);

/// The locally unique identifier of the adapter behind the device, or "unknown".
std::string AdapterIdentifier(ID3D11Device& device);

}  // namespace brisolte
