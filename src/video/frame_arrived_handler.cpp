#include "video/frame_arrived_handler.h"

#include <atomic>
#include <memory>
#include <utility>

namespace brisolte {
namespace {

class FrameArrivedHandler final : public abi::IFrameArrivedHandler {
 public:
  explicit FrameArrivedHandler(CapturePlatform::FrameArrivedHandler handler) : handler_(std::move(handler)) {}
  FrameArrivedHandler(const FrameArrivedHandler&) = delete;
  FrameArrivedHandler& operator=(const FrameArrivedHandler&) = delete;
  ~FrameArrivedHandler() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    // IAgileObject has no methods beyond IUnknown's, so the same pointer serves for it.
    if (iid != IID_IUnknown && iid != abi::IFrameArrivedHandler::kIid && iid != abi::IAgileObject::kIid) {
      return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<abi::IFrameArrivedHandler*>(this);
    return S_OK;
  }

  ULONG STDMETHODCALLTYPE AddRef() override {
    return references_.fetch_add(1, std::memory_order_relaxed) + 1;
  }

  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) {
      const std::unique_ptr<FrameArrivedHandler> last(this);
    }
    return left;
  }

  HRESULT STDMETHODCALLTYPE Invoke(abi::IDirect3D11CaptureFramePool* /*sender*/,
                                   IInspectable* /*args*/) override {
    try {
      return handler_();
    } catch (...) {
      return E_FAIL;
    }
  }

 private:
  std::atomic<ULONG> references_{1};
  const CapturePlatform::FrameArrivedHandler handler_;
};

}  // namespace

Microsoft::WRL::ComPtr<abi::IFrameArrivedHandler> MakeFrameArrivedHandler(
    CapturePlatform::FrameArrivedHandler handler) {
  Microsoft::WRL::ComPtr<abi::IFrameArrivedHandler> result;
  result.Attach(std::make_unique<FrameArrivedHandler>(std::move(handler)).release());
  return result;
}

}  // namespace brisolte
