#include "direct3d/video_hooks.h"

#include "direct3d/video_blt.h"
#include "direct3d/video_objects.h"
#include "shared/faults.h"
#include "shared/vtable.h"

namespace brisolte::standins {

namespace {

Slot<HRESULT(STDMETHODCALLTYPE*)(ID3D11VideoDevice*, ID3D11VideoProcessorEnumerator*, UINT,
                                 ID3D11VideoProcessor**)>
    createProcessor;
Slot<HRESULT(STDMETHODCALLTYPE*)(ID3D11VideoDevice*, ID3D11Resource*, ID3D11VideoProcessorEnumerator*,
                                 const D3D11_VIDEO_PROCESSOR_INPUT_VIEW_DESC*,
                                 ID3D11VideoProcessorInputView**)>
    createInputView;
Slot<HRESULT(STDMETHODCALLTYPE*)(ID3D11VideoDevice*, ID3D11Resource*, ID3D11VideoProcessorEnumerator*,
                                 const D3D11_VIDEO_PROCESSOR_OUTPUT_VIEW_DESC*,
                                 ID3D11VideoProcessorOutputView**)>
    createOutputView;
Slot<HRESULT(STDMETHODCALLTYPE*)(ID3D11VideoDevice*, const D3D11_VIDEO_PROCESSOR_CONTENT_DESC*,
                                 ID3D11VideoProcessorEnumerator**)>
    createEnumerator;

Slot<void(STDMETHODCALLTYPE*)(ID3D11VideoContext*, ID3D11VideoProcessor*, WINBOOL, const RECT*)>
    setTargetRect;
Slot<void(STDMETHODCALLTYPE*)(ID3D11VideoContext*, ID3D11VideoProcessor*, WINBOOL, const D3D11_VIDEO_COLOR*)>
    setBackground;
Slot<void(STDMETHODCALLTYPE*)(ID3D11VideoContext*, ID3D11VideoProcessor*,
                              const D3D11_VIDEO_PROCESSOR_COLOR_SPACE*)>
    setOutputSpace;
Slot<void(STDMETHODCALLTYPE*)(ID3D11VideoContext*, ID3D11VideoProcessor*, UINT,
                              const D3D11_VIDEO_PROCESSOR_COLOR_SPACE*)>
    setStreamSpace;
Slot<void(STDMETHODCALLTYPE*)(ID3D11VideoContext*, ID3D11VideoProcessor*, UINT, WINBOOL, const RECT*)>
    setSourceRect;
Slot<void(STDMETHODCALLTYPE*)(ID3D11VideoContext*, ID3D11VideoProcessor*, UINT, WINBOOL, const RECT*)>
    setDestRect;
Slot<void(STDMETHODCALLTYPE*)(ID3D11VideoContext*, ID3D11VideoProcessor*, UINT, WINBOOL)> setAutomatic;
Slot<HRESULT(STDMETHODCALLTYPE*)(ID3D11VideoContext*, ID3D11VideoProcessor*, ID3D11VideoProcessorOutputView*,
                                 UINT, UINT, const D3D11_VIDEO_PROCESSOR_STREAM*)>
    blt;

ComPtr<ID3D11Device> DeviceOf(ID3D11VideoDevice& video) {
  ComPtr<ID3D11Device> device;
  video.QueryInterface(__uuidof(ID3D11Device), reinterpret_cast<void**>(device.GetAddressOf()));
  return device;
}

ComPtr<ID3D11Device> DeviceOf(ID3D11DeviceChild& child) {
  ComPtr<ID3D11Device> device;
  child.GetDevice(device.GetAddressOf());
  return device;
}

VideoEnumerator* Own(ID3D11VideoProcessorEnumerator* object) {
  return OwnObject<VideoEnumerator, IOwnEnumerator>(object);
}
VideoProcessor* Own(ID3D11VideoProcessor* object) {
  return OwnObject<VideoProcessor, IOwnProcessor>(object);
}
InputView* Own(ID3D11VideoProcessorInputView* object) {
  return OwnObject<InputView, IOwnView>(object);
}
OutputView* Own(ID3D11VideoProcessorOutputView* object) {
  return OwnObject<OutputView, IOwnView>(object);
}

HRESULT STDMETHODCALLTYPE CreateEnumeratorHook(ID3D11VideoDevice* self,
                                               const D3D11_VIDEO_PROCESSOR_CONTENT_DESC* desc,
                                               ID3D11VideoProcessorEnumerator** enumerator) {
  if (enumerator != nullptr) {
    *enumerator = nullptr;
  }
  if (const auto fault = TakeFault("CreateVideoProcessorEnumerator")) {
    return *fault;
  }
  if (desc == nullptr || enumerator == nullptr || desc->InputWidth == 0 || desc->InputHeight == 0 ||
      desc->OutputWidth == 0 || desc->OutputHeight == 0 || desc->InputFrameRate.Denominator == 0 ||
      desc->OutputFrameRate.Denominator == 0 ||
      desc->InputFrameFormat > D3D11_VIDEO_FRAME_FORMAT_INTERLACED_BOTTOM_FIELD_FIRST ||
      desc->Usage > D3D11_VIDEO_USAGE_OPTIMAL_QUALITY) {
    return E_INVALIDARG;
  }
  return Give<ID3D11VideoProcessorEnumerator>(Make<VideoEnumerator>(DeviceOf(*self).Get(), *desc),
                                              enumerator);
}

HRESULT STDMETHODCALLTYPE CreateProcessorHook(ID3D11VideoDevice* self,
                                              ID3D11VideoProcessorEnumerator* enumerator, UINT rateConversion,
                                              ID3D11VideoProcessor** processor) {
  if (processor != nullptr) {
    *processor = nullptr;
  }
  if (const auto fault = TakeFault("CreateVideoProcessor")) {
    return *fault;
  }
  auto* own = Own(enumerator);
  const auto device = DeviceOf(*self);
  if (own == nullptr || processor == nullptr || rateConversion != 0 || own->device() != device.Get()) {
    return E_INVALIDARG;
  }
  D3D11_VIDEO_PROCESSOR_CONTENT_DESC desc{};
  own->GetVideoProcessorContentDesc(&desc);
  return Give<ID3D11VideoProcessor>(Make<VideoProcessor>(device.Get(), desc), processor);
}

/// The texture to make a view of; null when it may have none.
ComPtr<ID3D11Texture2D> ViewableTexture(ID3D11VideoDevice& video, ID3D11Resource* resource,
                                        ID3D11VideoProcessorEnumerator* enumerator,
                                        D3D11_TEXTURE2D_DESC& desc) {
  auto* own = Own(enumerator);
  const auto device = DeviceOf(video);
  ComPtr<ID3D11Texture2D> texture;
  if (resource == nullptr || own == nullptr || own->device() != device.Get() ||
      DeviceOf(*resource).Get() != device.Get() ||
      FAILED(resource->QueryInterface(__uuidof(ID3D11Texture2D),
                                      reinterpret_cast<void**>(texture.GetAddressOf())))) {
    return nullptr;
  }
  texture->GetDesc(&desc);
  return desc.Usage == D3D11_USAGE_DEFAULT && desc.SampleDesc.Count == 1 ? texture : nullptr;
}

HRESULT STDMETHODCALLTYPE CreateInputViewHook(ID3D11VideoDevice* self, ID3D11Resource* resource,
                                              ID3D11VideoProcessorEnumerator* enumerator,
                                              const D3D11_VIDEO_PROCESSOR_INPUT_VIEW_DESC* asked,
                                              ID3D11VideoProcessorInputView** view) {
  if (view != nullptr) {
    *view = nullptr;
  }
  if (const auto fault = TakeFault("CreateInputView")) {
    return *fault;
  }
  D3D11_TEXTURE2D_DESC desc{};
  const auto texture = ViewableTexture(*self, resource, enumerator, desc);
  if (texture == nullptr || asked == nullptr || asked->FourCC != 0 || !IsInputFormat(desc.Format) ||
      asked->ViewDimension != D3D11_VPIV_DIMENSION_TEXTURE2D || asked->Texture2D.MipSlice != 0 ||
      asked->Texture2D.ArraySlice >= desc.ArraySize) {
    return E_INVALIDARG;
  }
  // Without a place for the view the question is whether there could be one.
  return view == nullptr ? S_FALSE
                         : Give<ID3D11VideoProcessorInputView>(
                               Make<InputView>(DeviceOf(*self).Get(), texture.Get(), *asked), view);
}

HRESULT STDMETHODCALLTYPE CreateOutputViewHook(ID3D11VideoDevice* self, ID3D11Resource* resource,
                                               ID3D11VideoProcessorEnumerator* enumerator,
                                               const D3D11_VIDEO_PROCESSOR_OUTPUT_VIEW_DESC* asked,
                                               ID3D11VideoProcessorOutputView** view) {
  if (view != nullptr) {
    *view = nullptr;
  }
  if (const auto fault = TakeFault("CreateOutputView")) {
    return *fault;
  }
  D3D11_TEXTURE2D_DESC desc{};
  const auto texture = ViewableTexture(*self, resource, enumerator, desc);
  if (texture == nullptr || asked == nullptr || (desc.BindFlags & D3D11_BIND_RENDER_TARGET) == 0 ||
      !IsOutputFormat(desc.Format) || asked->ViewDimension != D3D11_VPOV_DIMENSION_TEXTURE2D ||
      asked->Texture2D.MipSlice != 0 || desc.ArraySize != 1 || desc.MipLevels != 1) {
    return E_INVALIDARG;
  }
  return view == nullptr ? S_FALSE
                         : Give<ID3D11VideoProcessorOutputView>(
                               Make<OutputView>(DeviceOf(*self).Get(), texture.Get(), *asked), view);
}

std::optional<RECT> Rect(WINBOOL enable, const RECT* rect) {
  return enable != FALSE && rect != nullptr ? std::optional(*rect) : std::nullopt;
}

void STDMETHODCALLTYPE SetTargetRectHook(ID3D11VideoContext* /*self*/, ID3D11VideoProcessor* processor,
                                         WINBOOL enable, const RECT* rect) {
  if (auto* own = Own(processor)) {
    own->state().target = Rect(enable, rect);
  }
}

void STDMETHODCALLTYPE SetBackgroundHook(ID3D11VideoContext* /*self*/, ID3D11VideoProcessor* processor,
                                         WINBOOL ycbcr, const D3D11_VIDEO_COLOR* color) {
  if (auto* own = Own(processor); own != nullptr && color != nullptr) {
    own->state().background = *color;
    own->state().backgroundIsYcbcr = ycbcr != FALSE;
  }
}

void STDMETHODCALLTYPE SetOutputSpaceHook(ID3D11VideoContext* /*self*/, ID3D11VideoProcessor* processor,
                                          const D3D11_VIDEO_PROCESSOR_COLOR_SPACE* space) {
  if (auto* own = Own(processor); own != nullptr && space != nullptr) {
    own->state().outputSpace = *space;
  }
}

void STDMETHODCALLTYPE SetStreamSpaceHook(ID3D11VideoContext* /*self*/, ID3D11VideoProcessor* processor,
                                          UINT stream, const D3D11_VIDEO_PROCESSOR_COLOR_SPACE* space) {
  if (auto* own = Own(processor); own != nullptr && stream == 0 && space != nullptr) {
    own->state().streamSpace = *space;
  }
}

void STDMETHODCALLTYPE SetSourceRectHook(ID3D11VideoContext* /*self*/, ID3D11VideoProcessor* processor,
                                         UINT stream, WINBOOL enable, const RECT* rect) {
  if (auto* own = Own(processor); own != nullptr && stream == 0) {
    own->state().source = Rect(enable, rect);
  }
}

void STDMETHODCALLTYPE SetDestRectHook(ID3D11VideoContext* /*self*/, ID3D11VideoProcessor* processor,
                                       UINT stream, WINBOOL enable, const RECT* rect) {
  if (auto* own = Own(processor); own != nullptr && stream == 0) {
    own->state().destination = Rect(enable, rect);
  }
}

void STDMETHODCALLTYPE SetAutomaticHook(ID3D11VideoContext* /*self*/, ID3D11VideoProcessor* processor,
                                        UINT stream, WINBOOL enable) {
  if (auto* own = Own(processor); own != nullptr && stream == 0) {
    own->state().automatic = enable != FALSE;
  }
}

HRESULT STDMETHODCALLTYPE BltHook(ID3D11VideoContext* self, ID3D11VideoProcessor* processor,
                                  ID3D11VideoProcessorOutputView* view, UINT /*frame*/, UINT streamCount,
                                  const D3D11_VIDEO_PROCESSOR_STREAM* streams) {
  if (const auto fault = TakeFault("VideoProcessorBlt")) {
    return *fault;
  }
  auto* own = Own(processor);
  auto* output = Own(view);
  if (own == nullptr || output == nullptr || output->device() != own->device() || streamCount > 1 ||
      (streamCount == 1 && streams == nullptr)) {
    return E_INVALIDARG;
  }
  InputView* input = nullptr;
  if (streamCount == 1 && streams->Enable != FALSE) {
    input = Own(streams->pInputSurface);
    if (input == nullptr || input->device() != own->device()) {
      return E_INVALIDARG;
    }
  }
  ComPtr<ID3D11DeviceContext> context;
  const HRESULT found =
      self->QueryInterface(__uuidof(ID3D11DeviceContext), reinterpret_cast<void**>(context.GetAddressOf()));
  return FAILED(found) ? found : Blit(*context.Get(), *own, *output, input);
}

}  // namespace

void HookVideo(ID3D11VideoDevice& device, ID3D11VideoContext& context) {
  createProcessor.Replace(&device, 4, CreateProcessorHook);
  createInputView.Replace(&device, 8, CreateInputViewHook);
  createOutputView.Replace(&device, 9, CreateOutputViewHook);
  createEnumerator.Replace(&device, 10, CreateEnumeratorHook);

  setTargetRect.Replace(&context, 13, SetTargetRectHook);
  setBackground.Replace(&context, 14, SetBackgroundHook);
  setOutputSpace.Replace(&context, 15, SetOutputSpaceHook);
  setStreamSpace.Replace(&context, 28, SetStreamSpaceHook);
  setSourceRect.Replace(&context, 30, SetSourceRectHook);
  setDestRect.Replace(&context, 31, SetDestRectHook);
  setAutomatic.Replace(&context, 37, SetAutomaticHook);
  blt.Replace(&context, 53, BltHook);
}

}  // namespace brisolte::standins
