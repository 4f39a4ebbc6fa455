#include "direct3d/video_objects.h"

#include "shared/faults.h"

namespace brisolte::standins {

bool IsInputFormat(DXGI_FORMAT format) {
  return format == DXGI_FORMAT_B8G8R8A8_UNORM;
}

bool IsOutputFormat(DXGI_FORMAT format) {
  return format == DXGI_FORMAT_NV12 || format == DXGI_FORMAT_B8G8R8A8_UNORM;
}

HRESULT VideoEnumerator::GetVideoProcessorContentDesc(D3D11_VIDEO_PROCESSOR_CONTENT_DESC* desc) {
  if (desc == nullptr) {
    return E_INVALIDARG;
  }
  *desc = desc_;
  return S_OK;
}

HRESULT VideoEnumerator::CheckVideoProcessorFormat(DXGI_FORMAT format, UINT* flags) {
  if (flags == nullptr) {
    return E_INVALIDARG;
  }
  *flags = 0;
  if (IsInputFormat(format)) {
    *flags |= D3D11_VIDEO_PROCESSOR_FORMAT_SUPPORT_INPUT;
  }
  if (IsOutputFormat(format)) {
    *flags |= D3D11_VIDEO_PROCESSOR_FORMAT_SUPPORT_OUTPUT;
  }
  return S_OK;
}

HRESULT VideoEnumerator::GetVideoProcessorCaps(D3D11_VIDEO_PROCESSOR_CAPS* caps) {
  if (caps == nullptr) {
    return E_INVALIDARG;
  }
  *caps = {};
  caps->RateConversionCapsCount = 1;
  caps->MaxInputStreams = 1;
  caps->MaxStreamStates = 1;
  return S_OK;
}

HRESULT VideoEnumerator::GetVideoProcessorRateConversionCaps(
    UINT index, D3D11_VIDEO_PROCESSOR_RATE_CONVERSION_CAPS* caps) {
  if (caps == nullptr || index > 0) {
    return E_INVALIDARG;
  }
  *caps = {};
  return S_OK;
}

HRESULT VideoProcessor::Staging(const D3D11_TEXTURE2D_DESC& like, bool input,
                                ComPtr<ID3D11Texture2D>& texture) {
  auto& kept = input ? inputStaging_ : outputStaging_;
  D3D11_TEXTURE2D_DESC has{};
  if (kept != nullptr) {
    kept->GetDesc(&has);
  }
  if (has.Width != like.Width || has.Height != like.Height || has.Format != like.Format) {
    kept.Reset();
    const D3D11_TEXTURE2D_DESC desc{like.Width,
                                    like.Height,
                                    1,
                                    1,
                                    like.Format,
                                    {1, 0},
                                    D3D11_USAGE_STAGING,
                                    0,
                                    D3D11_CPU_ACCESS_READ | D3D11_CPU_ACCESS_WRITE,
                                    0};
    TurnFaults(false);
    const HRESULT made = device()->CreateTexture2D(&desc, nullptr, kept.GetAddressOf());
    TurnFaults(true);
    if (FAILED(made)) {
      return made;
    }
  }
  texture = kept;
  return S_OK;
}

}  // namespace brisolte::standins
