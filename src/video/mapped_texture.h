#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include "common/given_object.h"

namespace brisolte {

/// A staging texture mapped for reading, until this object goes or is given another.
class MappedTexture {
 public:
  MappedTexture() = default;
  MappedTexture(const MappedTexture&) = delete;
  MappedTexture& operator=(const MappedTexture&) = delete;
  ~MappedTexture() { Unmap(); }

  /// Maps a texture that is not mapped already.
  HRESULT Map(ID3D11DeviceContext* context, ID3D11Texture2D* texture) {
    Unmap();
    pixels_ = {};
    const HRESULT result = Given(context->Map(texture, 0, D3D11_MAP_READ, 0, &pixels_), pixels_.pData);
    if (SUCCEEDED(result)) {
      context_ = context;
      texture_ = texture;
    }
    return result;
  }

  const D3D11_MAPPED_SUBRESOURCE& pixels() const { return pixels_; }

 private:
  void Unmap() {
    if (texture_ != nullptr) {
      context_->Unmap(texture_.Get(), 0);
      texture_ = nullptr;
    }
  }

  Microsoft::WRL::ComPtr<ID3D11DeviceContext> context_;
  Microsoft::WRL::ComPtr<ID3D11Texture2D> texture_;
  D3D11_MAPPED_SUBRESOURCE pixels_{};
};

}  // namespace brisolte
