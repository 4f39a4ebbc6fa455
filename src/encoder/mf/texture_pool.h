#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <cstddef>
#include <memory>

#include "encoder/mf/sample_worker.h"

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

}  // namespace brisolte
