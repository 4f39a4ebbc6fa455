#include "encoder/mf/frame_textures.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "common/hresult_failure.h"
#include "common/logger.h"
#include "common/ref_counted.h"

namespace brisolte {

using Microsoft::WRL::ComPtr;

namespace {

/// What a frame's copy is like: nothing but the encoder reads it, and no other device sees it.
D3D11_TEXTURE2D_DESC CopyOf(D3D11_TEXTURE2D_DESC description) {
  description.MipLevels = 1;
  description.ArraySize = 1;
  description.Usage = D3D11_USAGE_DEFAULT;
  description.CPUAccessFlags = 0;
  description.MiscFlags = 0;
  return description;
}

constexpr GUID kLeaseKey{0x3B0F6D0E, 0x52C7, 0x4C8B, {0x9D, 0x61, 0x0A, 0x7E, 0x94, 0x1C, 0xE2, 0x35}};

/// An object that does nothing but hold a texture.
class Lease final : public RefCounted<IUnknown> {
 public:
  explicit Lease(PooledTexture texture) : texture_(std::move(texture)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return Answer(iid == IID_IUnknown, object);
  }

 private:
  const PooledTexture texture_;
};

}  // namespace

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

FrameCopier::FrameCopier(ID3D11Device& device, std::uint32_t width, std::uint32_t height)
    : device_(&device), width_(width), height_(height) {
  device.GetImmediateContext(context_.GetAddressOf());
}

PooledTexture FrameCopier::Copy(ID3D11Texture2D& texture) {
  D3D11_TEXTURE2D_DESC description{};
  texture.GetDesc(&description);
  if (!Accepts(texture, description)) {
    return nullptr;
  }
  if (!pool_) {
    pool_.emplace(*device_.Get(), CopyOf(description));
  }
  PooledTexture copy;
  if (!SucceededOrLog(pool_->Take(copy), "Failed to create frame texture: ")) {
    return nullptr;
  }
  context_->CopySubresourceRegion(copy.get(), 0, 0, 0, 0, &texture, 0, nullptr);
  return copy;
}

bool FrameCopier::Accepts(ID3D11Texture2D& texture, const D3D11_TEXTURE2D_DESC& description) const {
  if (description.Format != DXGI_FORMAT_NV12) {
    Logger::Error("Unsupported texture format: " + HexadecimalCode(description.Format));
    return false;
  }
  if (description.Width != width_ || description.Height != height_) {
    Logger::Error("Unsupported texture format: " + HexadecimalCode(description.Format) + " in " +
                  std::to_string(description.Width) + "x" + std::to_string(description.Height));
    return false;
  }
  ComPtr<ID3D11Device> owner;
  texture.GetDevice(owner.GetAddressOf());
  if (owner.Get() != device_.Get()) {
    Logger::Error("Invalid frame data: texture is null or invalid");
    return false;
  }
  return true;
}

HRESULT LeaseTexture(IMFMediaBuffer& buffer, PooledTexture texture) {
  const auto lease = MakeRefCounted<Lease, IUnknown>(std::move(texture));
  ComPtr<IMFDXGIBuffer> surface;
  const HRESULT result =
      buffer.QueryInterface(__uuidof(IMFDXGIBuffer), reinterpret_cast<void**>(surface.GetAddressOf()));
  return FAILED(result) ? result : surface->SetUnknown(kLeaseKey, lease.Get());
}

}  // namespace brisolte
