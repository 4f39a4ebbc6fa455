#include "video/frame_converter.h"

#include <exception>
#include <string>

#include "common/given_object.h"
#include "common/hresult_error.h"
#include "common/hresult_failure.h"
#include "common/logger.h"
#include "video/query_interface.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

/// The texture behind a captured frame; null when it cannot be had, with an ERROR line.
ComPtr<ID3D11Texture2D> CapturedTexture(abi::IDirect3D11CaptureFrame& captured) {
  ComPtr<abi::IDirect3DSurface> surface;
  ThrowIfFailed(Given(captured.get_Surface(surface.GetAddressOf()), surface));
  ComPtr<abi::IDirect3DDxgiInterfaceAccess> access;
  if (FAILED(Given(QueryByIid(surface.Get(), access), access))) {
    Logger::Error("Failed to get IDirect3DDxgiInterfaceAccess interface");
    return nullptr;
  }
  ComPtr<IDXGISurface> dxgi;
  DXGI_SURFACE_DESC description{};
  ComPtr<ID3D11Texture2D> texture;
  const bool got = CheckResult(GetBehind(*access.Get(), dxgi), "Failed to get DXGI surface: ") &&
                   CheckResult(dxgi->GetDesc(&description), "Failed to get DXGI surface description: ") &&
                   CheckResult(Given(dxgi.As(&texture), texture), "Failed to get capture texture: ");
  return got ? texture : nullptr;
}

D3D11_TEXTURE2D_DESC TextureOf(PixelSize size, DXGI_FORMAT format) {
  D3D11_TEXTURE2D_DESC description{};
  description.Width = static_cast<UINT>(size.width);
  description.Height = static_cast<UINT>(size.height);
  description.MipLevels = 1;
  description.ArraySize = 1;
  description.Format = format;
  description.SampleDesc.Count = 1;
  description.Usage = D3D11_USAGE_DEFAULT;
  description.BindFlags = D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE;
  return description;
}

TextureReference NewReference(ComPtr<ID3D11Texture2D> texture) {
  return {texture.Detach(), [](ID3D11Texture2D* held) { ComPtr<ID3D11Texture2D>().Attach(held); }};
}

}  // namespace

HRESULT FrameConverter::CreateVideoProcessorEnumerator(const CaptureGeometry& geometry,
                                                       std::int32_t frameRate) {
  geometry_ = geometry;
  return processor_.CreateEnumerator(geometry, frameRate);
}

void FrameConverter::UseCpu(const CaptureGeometry& geometry) {
  geometry_ = geometry;
  usesCpu_ = true;
}

void FrameConverter::SetOutputFormat(DxgiFormat format) {
  if (usesCpu_ && format == DxgiFormat::kNv12) {
    cpu_.emplace(geometry_.frame);
    format = DxgiFormat::kB8G8R8A8Unorm;
  }
  outputFormat_ = static_cast<DXGI_FORMAT>(format);
}

bool FrameConverter::SurfaceFromFrame(abi::IDirect3D11CaptureFrame& captured, const FrameTiming& timing,
                                      VideoFrame& frame, MappedTexture& mapping) {
  try {
    if (!Convert(captured, mapping)) {
      return false;
    }
    const D3D11_MAPPED_SUBRESOURCE& pixels = mapping.pixels();
    frame.texture = NewReference(shared_);
    frame.pixels = {static_cast<const std::uint8_t*>(pixels.pData), pixels.RowPitch, pixels.DepthPitch};
    if (cpu_) {
      frame.pixels = cpu_->Convert(frame.pixels);
    }
    frame.timestamp = timing.sinceStart;
    frame.duration = timing.sinceLast;
    frame.mapped = true;
    return true;
  } catch (const HResultError& error) {
    Logger::Error(std::string("WinRT error in SurfaceFromFrame: ") + error.what());
  } catch (const std::exception& error) {
    Logger::Error(std::string("Exception in SurfaceFromFrame: ") + error.what());
  } catch (...) {
    Logger::Error("Unknown exception in SurfaceFromFrame");
  }
  return false;
}

bool FrameConverter::Convert(abi::IDirect3D11CaptureFrame& captured, MappedTexture& mapping) {
  if (graphics_.device == nullptr || graphics_.context == nullptr) {
    Logger::Error("D3D11 device or context not initialized");
    return false;
  }
  const ComPtr<ID3D11Texture2D> texture = CapturedTexture(captured);
  if (texture == nullptr || !CreateTextures()) {
    return false;
  }
  abi::SizeInt32 content{};
  ThrowIfFailed(captured.get_ContentSize(&content));
  if (!Draw(texture.Get(), {content.Width, content.Height})) {
    return false;
  }
  graphics_.context->CopyResource(staging_.Get(), shared_.Get());
  return CheckResult(mapping.Map(graphics_.context.Get(), staging_.Get()), "Failed to map staging texture: ");
}

bool FrameConverter::CreateTextures() {
  if (shared_ == nullptr) {
    if (const HRESULT result = CreateSharedTexture(); FAILED(result)) {
      Logger::Error("Failed to create shared texture: " + HResultText(result) +
                    " (dimensions: " + std::to_string(geometry_.frame.width) + "x" +
                    std::to_string(geometry_.frame.height) + ")");
      return false;
    }
  }
  return staging_ != nullptr || CheckResult(CreateStagingTexture(), "Failed to create staging texture: ");
}

HRESULT FrameConverter::CreateTexture(const D3D11_TEXTURE2D_DESC& description,
                                      ComPtr<ID3D11Texture2D>& texture) const {
  return Given(graphics_.device->CreateTexture2D(&description, nullptr, texture.ReleaseAndGetAddressOf()),
               texture);
}

HRESULT FrameConverter::CreateSharedTexture() {
  D3D11_TEXTURE2D_DESC description = TextureOf(geometry_.frame, outputFormat_);
  description.MiscFlags = D3D11_RESOURCE_MISC_SHARED;
  const HRESULT result = CreateTexture(description, shared_);
  if (result != E_INVALIDARG) {
    return result;
  }
  // So answer drivers that cannot share NV12. Nothing of ours opens the share.
  description.MiscFlags = 0;
  return CreateTexture(description, shared_);
}

HRESULT FrameConverter::CreateStagingTexture() {
  D3D11_TEXTURE2D_DESC description = TextureOf(geometry_.frame, outputFormat_);
  description.Usage = D3D11_USAGE_STAGING;
  description.BindFlags = 0;
  description.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
  return CreateTexture(description, staging_);
}

/// The canvas is the shared texture itself where frames stay packed, else a texture before the conversion.
HRESULT FrameConverter::CreateCanvas(DXGI_FORMAT captured) {
  if (captured == outputFormat_) {
    return canvas_.Adopt(*graphics_.device.Get(), shared_.Get());
  }
  const D3D11_TEXTURE2D_DESC description = TextureOf(geometry_.frame, captured);
  ComPtr<ID3D11Texture2D> texture;
  const HRESULT result = CreateTexture(description, texture);
  return FAILED(result) ? result : canvas_.Adopt(*graphics_.device.Get(), texture.Get());
}

bool FrameConverter::Draw(ID3D11Texture2D* captured, PixelSize content) {
  D3D11_TEXTURE2D_DESC description{};
  captured->GetDesc(&description);
  const PixelSize size{static_cast<std::int32_t>(description.Width),
                       static_cast<std::int32_t>(description.Height)};
  const Placement placement = PlaceContent(geometry_, size, content);
  const bool converts = description.Format != outputFormat_;
  if (converts && placement.size == geometry_.frame) {
    const PixelPoint from = placement.source;
    const RECT part{from.x, from.y, from.x + placement.size.width, from.y + placement.size.height};
    return processor_.ProcessVideoFormat(captured, part, shared_.Get());
  }
  if (canvas_.texture() == nullptr) {
    ThrowIfFailed(CreateCanvas(description.Format));
  }
  canvas_.Draw(*graphics_.context.Get(), captured, placement);
  const RECT whole{0, 0, geometry_.frame.width, geometry_.frame.height};
  return !converts || processor_.ProcessVideoFormat(canvas_.texture(), whole, shared_.Get());
}

}  // namespace brisolte
