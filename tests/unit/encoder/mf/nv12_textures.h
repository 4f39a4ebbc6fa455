#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <cstdint>

namespace brisolte::testing {

/// A device as a capture has it.
Microsoft::WRL::ComPtr<ID3D11Device> MakeCaptureDevice();

/// A texture as a capture has it: shared, and drawn into.
Microsoft::WRL::ComPtr<ID3D11Texture2D> MakeCaptureTexture(ID3D11Device& device, UINT width, UINT height,
                                                           DXGI_FORMAT format = DXGI_FORMAT_NV12);

/// Gives an NV12 texture this luma all over.
void Paint(ID3D11Texture2D& texture, std::uint8_t luma);

/// The luma of an NV12 texture's pixels; a failure of the test when they differ.
std::uint8_t LumaOf(ID3D11Texture2D& texture);

}  // namespace brisolte::testing
