#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <cstdint>
#include <optional>

#include "encoder/mf/texture_pool.h"

namespace brisolte {

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

}  // namespace brisolte
