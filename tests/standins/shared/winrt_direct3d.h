#pragma once

#include <d3d11.h>
#include <dxgi.h>

#include "shared/com_object.h"

namespace brisolte::standins {

/// The WinRT device around a DXGI device.
ComPtr<abi::IDirect3DDevice> WrapDevice(ComPtr<IDXGIDevice> device);

/// The WinRT surface around a DXGI surface.
ComPtr<abi::IDirect3DSurface> WrapSurface(ComPtr<IDXGISurface> surface);

/// The Direct3D device within a WinRT device; null when it is none or has been closed.
ComPtr<ID3D11Device> UnwrapDevice(abi::IDirect3DDevice* device);

}  // namespace brisolte::standins
