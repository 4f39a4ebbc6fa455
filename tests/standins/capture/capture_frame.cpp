#include "capture/capture_frame.h"

#include "shared/faults.h"
#include "shared/winrt_direct3d.h"

namespace brisolte::standins {

namespace {

class CaptureFrame final : public InspectableObject<abi::IDirect3D11CaptureFrame, abi::IClosable> {
 public:
  explicit CaptureFrame(CapturedFrame frame)
      : InspectableObject(L"Windows.Graphics.Capture.Direct3D11CaptureFrame"), frame_(std::move(frame)) {}

  HRESULT STDMETHODCALLTYPE get_Surface(abi::IDirect3DSurface** surface) override {
    if (surface == nullptr) {
      return E_POINTER;
    }
    *surface = nullptr;
    if (const auto fault = TakeFault("get_Surface")) {
      return *fault;
    }
    const auto texture = Texture();
    if (texture == nullptr) {
      return kClosed;
    }
    ComPtr<IDXGISurface> inner;
    const HRESULT found = texture.As(&inner);
    return FAILED(found) ? found : Give(WrapSurface(std::move(inner)), surface);
  }

  HRESULT STDMETHODCALLTYPE get_SystemRelativeTime(abi::TimeSpan* time) override {
    return Answer("get_SystemRelativeTime", time, abi::TimeSpan{frame_.time});
  }

  HRESULT STDMETHODCALLTYPE get_ContentSize(abi::SizeInt32* size) override {
    return Answer("get_ContentSize", size, frame_.contentSize);
  }

  HRESULT STDMETHODCALLTYPE Close() override {
    if (const auto fault = TakeFault("CloseFrame", "Close")) {
      return *fault;
    }
    std::unique_ptr<BufferLease> closed;
    const std::lock_guard lock(mutex_);
    closed.swap(frame_.lease);
    return S_OK;
  }

 private:
  template <typename Value>
  HRESULT Answer(std::string_view call, Value* result, Value value) {
    if (result == nullptr) {
      return E_POINTER;
    }
    if (const auto fault = TakeFault(call)) {
      return *fault;
    }
    if (Texture() == nullptr) {
      return kClosed;
    }
    *result = value;
    return S_OK;
  }

  ComPtr<ID3D11Texture2D> Texture() {
    const std::lock_guard lock(mutex_);
    return frame_.lease ? frame_.lease->texture() : nullptr;
  }

  std::mutex mutex_;
  CapturedFrame frame_;
};

}  // namespace

ComPtr<abi::IDirect3D11CaptureFrame> MakeCaptureFrame(CapturedFrame frame) {
  return Make<CaptureFrame>(std::move(frame));
}

}  // namespace brisolte::standins
