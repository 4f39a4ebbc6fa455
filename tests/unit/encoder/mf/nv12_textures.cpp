#include "mf/nv12_textures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>

namespace brisolte::testing {
namespace {

using Microsoft::WRL::ComPtr;

struct Owner {
  explicit Owner(ID3D11Texture2D& texture) {
    texture.GetDevice(device.GetAddressOf());
    device->GetImmediateContext(context.GetAddressOf());
    texture.GetDesc(&description);
  }

  ComPtr<ID3D11Texture2D> MakeStaging(UINT access) const {
    D3D11_TEXTURE2D_DESC staging = description;
    staging.Usage = D3D11_USAGE_STAGING;
    staging.BindFlags = 0;
    staging.MiscFlags = 0;
    staging.CPUAccessFlags = access;
    ComPtr<ID3D11Texture2D> texture;
    EXPECT_EQ(device->CreateTexture2D(&staging, nullptr, texture.GetAddressOf()), S_OK);
    return texture;
  }

  ComPtr<ID3D11Device> device;
  ComPtr<ID3D11DeviceContext> context;
  D3D11_TEXTURE2D_DESC description{};
};

}  // namespace

ComPtr<ID3D11Device> MakeCaptureDevice() {
  ComPtr<ID3D11Device> device;
  EXPECT_EQ(D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, D3D11_CREATE_DEVICE_BGRA_SUPPORT,
                              nullptr, 0, D3D11_SDK_VERSION, device.GetAddressOf(), nullptr, nullptr),
            S_OK);
  return device;
}

ComPtr<ID3D11Texture2D> MakeCaptureTexture(ID3D11Device& device, UINT width, UINT height,
                                           DXGI_FORMAT format) {
  D3D11_TEXTURE2D_DESC description{};
  description.Width = width;
  description.Height = height;
  description.MipLevels = 1;
  description.ArraySize = 1;
  description.Format = format;
  description.SampleDesc.Count = 1;
  description.BindFlags = D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE;
  description.MiscFlags = D3D11_RESOURCE_MISC_SHARED;
  ComPtr<ID3D11Texture2D> texture;
  EXPECT_EQ(device.CreateTexture2D(&description, nullptr, texture.GetAddressOf()), S_OK);
  return texture;
}

void Paint(ID3D11Texture2D& texture, std::uint8_t luma) {
  const Owner owner(texture);
  const auto staging = owner.MakeStaging(D3D11_CPU_ACCESS_WRITE);
  D3D11_MAPPED_SUBRESOURCE mapped{};
  ASSERT_EQ(owner.context->Map(staging.Get(), 0, D3D11_MAP_WRITE, 0, &mapped), S_OK);
  const std::span pixels(static_cast<std::uint8_t*>(mapped.pData),
                         std::size_t{mapped.RowPitch} * owner.description.Height);
  std::ranges::fill(pixels, luma);
  owner.context->Unmap(staging.Get(), 0);
  owner.context->CopyResource(&texture, staging.Get());
}

std::uint8_t LumaOf(ID3D11Texture2D& texture) {
  const Owner owner(texture);
  const auto staging = owner.MakeStaging(D3D11_CPU_ACCESS_READ);
  owner.context->CopyResource(staging.Get(), &texture);
  D3D11_MAPPED_SUBRESOURCE mapped{};
  const HRESULT result = owner.context->Map(staging.Get(), 0, D3D11_MAP_READ, 0, &mapped);
  EXPECT_EQ(result, S_OK);
  if (FAILED(result)) {
    return 0;
  }
  const auto* const bytes = static_cast<const std::uint8_t*>(mapped.pData);
  for (UINT row = 0; row < owner.description.Height; ++row) {
    const std::span pixels(bytes + std::size_t{row} * mapped.RowPitch, owner.description.Width);
    EXPECT_TRUE(std::ranges::all_of(pixels, [&](auto pixel) { return pixel == bytes[0]; }));
  }
  const std::uint8_t luma = bytes[0];
  owner.context->Unmap(staging.Get(), 0);
  return luma;
}

}  // namespace brisolte::testing
