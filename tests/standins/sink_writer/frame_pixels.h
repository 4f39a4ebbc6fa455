#pragma once

#include <d3d11.h>
#include <mfobjects.h>
#include <wrl/client.h>

#include <cstdint>
#include <vector>

namespace brisolte::standins {

/// An NV12 picture copied out of a sample's texture, and what it was copied through, which serves the next
/// one.
struct FramePixels {
  Microsoft::WRL::ComPtr<ID3D11Texture2D> readable;
  std::vector<std::uint8_t> bytes;
  int pitch = 0;
};

/// Reads the texture that the sample's only buffer is over. E_INVALIDARG when it is over none, or the size is
/// another.
HRESULT ReadFrame(IMFSample& sample, unsigned width, unsigned height, FramePixels& pixels);

}  // namespace brisolte::standins
