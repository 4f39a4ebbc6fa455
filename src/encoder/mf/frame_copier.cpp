#include "encoder/mf/frame_copier.h"

#include <string>

#include "common/hresult_failure.h"
#include "common/logger.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

/// What a frame's copy is like: nothing but the encoder reads it, and no other device sees it.
D3D11_TEXTURE2D_DESC CopyOf(D3D11_TEXTURE2D_DESC description) {
  description.MipLevels = 1;
  description.ArraySize = 1;
  description.Usage = D3D11_USAGE_DEFAULT;
  description.CPUAccessFlags = 0;
  description.MiscFlags = 0;
  return description;
}

}  // namespace

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

}  // namespace brisolte
