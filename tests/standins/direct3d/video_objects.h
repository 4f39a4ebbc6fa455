#pragma once

#include <d3d11.h>

#include <mutex>
#include <optional>

#include "direct3d/color.h"
#include "shared/com_object.h"

namespace brisolte::standins {

/// What every child of a Direct3D device answers. Private data is not kept.
template <typename Interface, typename... Others>
class DeviceChild : public ComObject<Interface, Others...> {
 public:
  void STDMETHODCALLTYPE GetDevice(ID3D11Device** device) override { *device = ComPtr(device_).Detach(); }
  HRESULT STDMETHODCALLTYPE GetPrivateData(REFGUID /*key*/, UINT* /*size*/, void* /*data*/) override {
    return DXGI_ERROR_NOT_FOUND;
  }
  HRESULT STDMETHODCALLTYPE SetPrivateData(REFGUID /*key*/, UINT /*size*/, const void* /*data*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetPrivateDataInterface(REFGUID /*key*/, const IUnknown* /*data*/) override {
    return E_NOTIMPL;
  }

  [[nodiscard]] ID3D11Device* device() const { return device_.Get(); }

 protected:
  explicit DeviceChild(ID3D11Device* device) : device_(device) {}

  void* FindBase(REFIID iid) override {
    const bool view = std::is_base_of_v<ID3D11View, Interface> && iid == __uuidof(ID3D11View);
    return view || iid == __uuidof(ID3D11DeviceChild) ? static_cast<Interface*>(this) : nullptr;
  }

 private:
  ComPtr<ID3D11Device> device_;
};

/// What marks the objects of this stand-in, so that a caller's object of another kind is told apart from
/// them.
struct IOwnEnumerator : IUnknown {
  static constexpr IID kIid{0x5E0E2A11, 0x0E57, 0x4C52, {0x9D, 0x0C, 0x60, 0x7E, 0x11, 0xA0, 0x55, 0x01}};
};
struct IOwnProcessor : IUnknown {
  static constexpr IID kIid{0x5E0E2A11, 0x0E57, 0x4C52, {0x9D, 0x0C, 0x60, 0x7E, 0x11, 0xA0, 0x55, 0x02}};
};
struct IOwnView : IUnknown {
  static constexpr IID kIid{0x5E0E2A11, 0x0E57, 0x4C52, {0x9D, 0x0C, 0x60, 0x7E, 0x11, 0xA0, 0x55, 0x03}};
};

/// Whether a texture of this format can be converted from, or to.
bool IsInputFormat(DXGI_FORMAT format);
bool IsOutputFormat(DXGI_FORMAT format);

class VideoEnumerator final : public DeviceChild<ID3D11VideoProcessorEnumerator, IOwnEnumerator> {
 public:
  VideoEnumerator(ID3D11Device* device, const D3D11_VIDEO_PROCESSOR_CONTENT_DESC& desc)
      : DeviceChild(device), desc_(desc) {}

  HRESULT STDMETHODCALLTYPE GetVideoProcessorContentDesc(D3D11_VIDEO_PROCESSOR_CONTENT_DESC* desc) override;
  HRESULT STDMETHODCALLTYPE CheckVideoProcessorFormat(DXGI_FORMAT format, UINT* flags) override;
  HRESULT STDMETHODCALLTYPE GetVideoProcessorCaps(D3D11_VIDEO_PROCESSOR_CAPS* caps) override;
  HRESULT STDMETHODCALLTYPE
  GetVideoProcessorRateConversionCaps(UINT index, D3D11_VIDEO_PROCESSOR_RATE_CONVERSION_CAPS* caps) override;
  HRESULT STDMETHODCALLTYPE GetVideoProcessorCustomRate(
      UINT /*type*/, UINT /*index*/, D3D11_VIDEO_PROCESSOR_CUSTOM_RATE* /*rate*/) override {
    return E_INVALIDARG;
  }
  HRESULT STDMETHODCALLTYPE GetVideoProcessorFilterRange(
      D3D11_VIDEO_PROCESSOR_FILTER /*filter*/, D3D11_VIDEO_PROCESSOR_FILTER_RANGE* /*range*/) override {
    return E_INVALIDARG;
  }

 private:
  const D3D11_VIDEO_PROCESSOR_CONTENT_DESC desc_;
};

class InputView final : public DeviceChild<ID3D11VideoProcessorInputView, IOwnView> {
 public:
  InputView(ID3D11Device* device, ID3D11Texture2D* texture, const D3D11_VIDEO_PROCESSOR_INPUT_VIEW_DESC& desc)
      : DeviceChild(device), texture_(texture), desc_(desc) {}

  void STDMETHODCALLTYPE GetResource(ID3D11Resource** resource) override {
    *resource = ComPtr(texture_).Detach();
  }
  void STDMETHODCALLTYPE GetDesc(D3D11_VIDEO_PROCESSOR_INPUT_VIEW_DESC* desc) override { *desc = desc_; }

  [[nodiscard]] ID3D11Texture2D* texture() const { return texture_.Get(); }
  [[nodiscard]] const D3D11_VIDEO_PROCESSOR_INPUT_VIEW_DESC& desc() const { return desc_; }

 private:
  ComPtr<ID3D11Texture2D> texture_;
  const D3D11_VIDEO_PROCESSOR_INPUT_VIEW_DESC desc_;
};

class OutputView final : public DeviceChild<ID3D11VideoProcessorOutputView, IOwnView> {
 public:
  OutputView(ID3D11Device* device, ID3D11Texture2D* texture,
             const D3D11_VIDEO_PROCESSOR_OUTPUT_VIEW_DESC& desc)
      : DeviceChild(device), texture_(texture), desc_(desc) {}

  void STDMETHODCALLTYPE GetResource(ID3D11Resource** resource) override {
    *resource = ComPtr(texture_).Detach();
  }
  void STDMETHODCALLTYPE GetDesc(D3D11_VIDEO_PROCESSOR_OUTPUT_VIEW_DESC* desc) override { *desc = desc_; }

  [[nodiscard]] ID3D11Texture2D* texture() const { return texture_.Get(); }
  [[nodiscard]] const D3D11_VIDEO_PROCESSOR_OUTPUT_VIEW_DESC& desc() const { return desc_; }

 private:
  ComPtr<ID3D11Texture2D> texture_;
  const D3D11_VIDEO_PROCESSOR_OUTPUT_VIEW_DESC desc_;
};

/// What a caller has set on a video processor.
struct ProcessorState {
  std::optional<RECT> target;
  std::optional<RECT> source;
  std::optional<RECT> destination;
  D3D11_VIDEO_COLOR background{};
  bool backgroundIsYcbcr = false;
  D3D11_VIDEO_PROCESSOR_COLOR_SPACE outputSpace{};
  D3D11_VIDEO_PROCESSOR_COLOR_SPACE streamSpace{};
  bool automatic = true;  // as long as nobody says otherwise drivers do as they think best
};

class VideoProcessor final : public DeviceChild<ID3D11VideoProcessor, IOwnProcessor> {
 public:
  VideoProcessor(ID3D11Device* device, const D3D11_VIDEO_PROCESSOR_CONTENT_DESC& desc)
      : DeviceChild(device), desc_(desc) {}

  void STDMETHODCALLTYPE GetContentDesc(D3D11_VIDEO_PROCESSOR_CONTENT_DESC* desc) override { *desc = desc_; }
  void STDMETHODCALLTYPE GetRateConversionCaps(D3D11_VIDEO_PROCESSOR_RATE_CONVERSION_CAPS* caps) override {
    *caps = {};
  }

  ProcessorState& state() { return state_; }
  /// The textures through which the processor reads its input and writes its output; made when they are
  /// needed.
  HRESULT Staging(const D3D11_TEXTURE2D_DESC& like, bool input, ComPtr<ID3D11Texture2D>& texture);

 private:
  const D3D11_VIDEO_PROCESSOR_CONTENT_DESC desc_;
  ProcessorState state_;
  ComPtr<ID3D11Texture2D> inputStaging_;
  ComPtr<ID3D11Texture2D> outputStaging_;
};

/// The object of this stand-in behind an interface; null for anything else.
template <typename Object, typename Marker, typename Interface>
Object* OwnObject(Interface* object) {
  ComPtr<IUnknown> marker;
  const bool own = object != nullptr && SUCCEEDED(object->QueryInterface(
                                            Marker::kIid, reinterpret_cast<void**>(marker.GetAddressOf())));
  return own ? static_cast<Object*>(object) : nullptr;
}

}  // namespace brisolte::standins
