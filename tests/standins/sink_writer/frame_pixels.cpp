#include "sink_writer/frame_pixels.h"

#include <d3d11.h>
#include <mfapi.h>
#include <wrl/client.h>

#include <cstddef>

#include "shared/own_work.h"

namespace brisolte::standins {
namespace {

using Microsoft::WRL::ComPtr;

HRESULT TextureOf(IMFSample& sample, ComPtr<ID3D11Texture2D>& texture) {
  ComPtr<IMFMediaBuffer> buffer;
  ComPtr<IMFDXGIBuffer> surface;
  if (FAILED(sample.GetBufferByIndex(0, buffer.GetAddressOf())) || FAILED(buffer.As(&surface))) {
    return E_INVALIDARG;
  }
  return surface->GetResource(__uuidof(ID3D11Texture2D), reinterpret_cast<void**>(texture.GetAddressOf()));
}

HRESULT MakeReadable(ID3D11Device& device, D3D11_TEXTURE2D_DESC description,
                     ComPtr<ID3D11Texture2D>& texture) {
  description.Usage = D3D11_USAGE_STAGING;
  description.BindFlags = 0;
  description.MiscFlags = 0;
  description.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
  return device.CreateTexture2D(&description, nullptr, texture.GetAddressOf());
}

}  // namespace

HRESULT ReadFrame(IMFSample& sample, unsigned width, unsigned height, FramePixels& pixels) {
  const OwnWork own;
  ComPtr<ID3D11Texture2D> texture;
  if (const HRESULT result = TextureOf(sample, texture); FAILED(result)) {
    return result;
  }
  D3D11_TEXTURE2D_DESC description{};
  texture->GetDesc(&description);
  if (description.Format != DXGI_FORMAT_NV12 || description.Width != width || description.Height != height) {
    return E_INVALIDARG;
  }
  ComPtr<ID3D11Device> device;
  ComPtr<ID3D11DeviceContext> context;
  texture->GetDevice(device.GetAddressOf());
  device->GetImmediateContext(context.GetAddressOf());
  // All of a stream's frames are of one device and size.
  if (pixels.readable == nullptr) {
    if (const HRESULT result = MakeReadable(*device.Get(), description, pixels.readable); FAILED(result)) {
      return result;
    }
  }
  context->CopyResource(pixels.readable.Get(), texture.Get());
  D3D11_MAPPED_SUBRESOURCE mapped{};
  if (const HRESULT result = context->Map(pixels.readable.Get(), 0, D3D11_MAP_READ, 0, &mapped);
      FAILED(result)) {
    return result;
  }
  const auto* const first = static_cast<const std::uint8_t*>(mapped.pData);
  pixels.bytes.assign(first, first + std::size_t{mapped.RowPitch} * height * 3 / 2);
  pixels.pitch = static_cast<int>(mapped.RowPitch);
  context->Unmap(pixels.readable.Get(), 0);
  return S_OK;
}

}  // namespace brisolte::standins
