#include "video/frame_arrived_handler.h"

#include <utility>

#include "common/ref_counted.h"

namespace brisolte {
namespace {

class FrameArrivedHandler final : public RefCounted<abi::IFrameArrivedHandler> {
 public:
  explicit FrameArrivedHandler(PoolHandler handler) : handler_(std::move(handler)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    // IAgileObject has no methods beyond IUnknown's, so the same pointer serves for it.
    return Answer(
        iid == IID_IUnknown || iid == abi::IFrameArrivedHandler::kIid || iid == abi::IAgileObject::kIid,
        object);
  }

  HRESULT STDMETHODCALLTYPE Invoke(abi::IDirect3D11CaptureFramePool* sender,
                                   IInspectable* /*args*/) override {
    if (sender == nullptr) {
      return E_POINTER;
    }
    try {
      return handler_(*sender);
    } catch (...) {
      return E_FAIL;
    }
  }

 private:
  const PoolHandler handler_;
};

}  // namespace

Microsoft::WRL::ComPtr<abi::IFrameArrivedHandler> MakeFrameArrivedHandler(PoolHandler handler) {
  return MakeRefCounted<FrameArrivedHandler, abi::IFrameArrivedHandler>(std::move(handler));
}

}  // namespace brisolte
