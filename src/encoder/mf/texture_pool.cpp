#include "encoder/mf/texture_pool.h"

#include <mutex>
#include <utility>
#include <vector>

namespace brisolte {

using Microsoft::WRL::ComPtr;

/// Shared by the pool and its textures under way, which may return when the pool is gone.
class TexturePool::FreeTextures {
 public:
  ComPtr<ID3D11Texture2D> Take() {
    const std::scoped_lock lock(mutex_);
    if (textures_.empty()) {
      return nullptr;
    }
    ComPtr<ID3D11Texture2D> texture = std::move(textures_.back());
    textures_.pop_back();
    return texture;
  }

  /// Keeps the texture, or lets it go when enough are free or there is no memory for it.
  void Give(ComPtr<ID3D11Texture2D> texture) noexcept {
    try {
      const std::scoped_lock lock(mutex_);
      if (textures_.size() < kMostFree) {
        textures_.push_back(std::move(texture));
      }
    } catch (...) {
      return;
    }
  }

 private:
  std::mutex mutex_;
  std::vector<ComPtr<ID3D11Texture2D>> textures_;
};

TexturePool::TexturePool(ID3D11Device& device, const D3D11_TEXTURE2D_DESC& description)
    : device_(&device), description_(description), free_(std::make_shared<FreeTextures>()) {}

HRESULT TexturePool::Take(PooledTexture& texture) {
  ComPtr<ID3D11Texture2D> taken = free_->Take();
  if (taken == nullptr) {
    const HRESULT result = device_->CreateTexture2D(&description_, nullptr, taken.GetAddressOf());
    if (FAILED(result)) {
      return result;
    }
  }
  ID3D11Texture2D* const pointer = taken.Get();
  texture = PooledTexture(pointer, [owner = std::move(taken), home = std::weak_ptr(free_)](auto*) mutable {
    if (const auto free = home.lock()) {
      free->Give(std::move(owner));
    }
  });
  return S_OK;
}

}  // namespace brisolte
