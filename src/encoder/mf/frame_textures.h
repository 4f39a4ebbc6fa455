#pragma once

// The pictures of frames that wait to be written: each in a texture of its own, out of a pool, until the
// encoder has let go of it. IMFVideoSampleAllocatorEx recycles textures too, but hands out whole samples, and
// each call that makes one has an ERROR line of its own.

#include <d3d11.h>
#include <mfobjects.h>
#include <wrl/client.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "encoder/mf/queued_frame.h"

namespace brisolte {

/// Textures of one kind, made when none is free and used again afterwards. Of those in use it sets no bound:
/// there are as many as frames wait or are held by the encoder. Any thread.
class TexturePool {
 public:
  /// So many are kept for later frames; what a stall needed beyond them is given back.
  static constexpr std::size_t kMostFree = 8;

  /// `description` and `device` are those of every texture.
  TexturePool(ID3D11Device& device, const D3D11_TEXTURE2D_DESC& description);

  /// A texture that nobody else uses.
  HRESULT Take(PooledTexture& texture);

 private:
  class FreeTextures;

  const Microsoft::WRL::ComPtr<ID3D11Device> device_;
  const D3D11_TEXTURE2D_DESC description_;
  const std::shared_ptr<FreeTextures> free_;
};

/// Gives each frame a texture of its own, because the capture draws every frame into the same one. For one
/// thread at a time.
class FrameCopier {
 public:
  /// Takes NV12 textures of this size that belong to `device`.
  FrameCopier(ID3D11Device& device, std::uint32_t width, std::uint32_t height);

  /// A texture with the frame's picture as it is now. Null when the texture is not one to be taken or no copy
  /// can be had, with an ERROR line.
  PooledTexture Copy(ID3D11Texture2D& texture);

 private:
  bool Accepts(ID3D11Texture2D& texture, const D3D11_TEXTURE2D_DESC& description) const;

  const Microsoft::WRL::ComPtr<ID3D11Device> device_;
  Microsoft::WRL::ComPtr<ID3D11DeviceContext> context_;
  const std::uint32_t width_;
  const std::uint32_t height_;
  std::optional<TexturePool> pool_;  ///< made with the first frame, whose kind of texture it has
};

/// Keeps a texture out of its pool as long as `buffer`, which is over that texture, exists: an encoder reads
/// it long after the sample was handed over.
HRESULT LeaseTexture(IMFMediaBuffer& buffer, PooledTexture texture);

}  // namespace brisolte
