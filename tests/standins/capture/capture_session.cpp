#include "capture/capture_session.h"

#include "capture/capture_loop.h"
#include "shared/apartment.h"
#include "shared/faults.h"

namespace brisolte::standins {

namespace {

class CaptureSession final : public InspectableObject<abi::IGraphicsCaptureSession, abi::IClosable> {
 public:
  CaptureSession(ComPtr<IOwnItem> item, std::shared_ptr<FrameBuffers> buffers,
                 std::shared_ptr<FramePool::Anchor> pool)
      : InspectableObject(L"Windows.Graphics.Capture.GraphicsCaptureSession"),
        loop_(std::make_shared<CaptureLoop>(std::move(item), std::move(buffers), std::move(pool))) {}
  CaptureSession(const CaptureSession&) = delete;
  CaptureSession& operator=(const CaptureSession&) = delete;

  HRESULT STDMETHODCALLTYPE StartCapture() override {
    if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
      return admitted;
    }
    if (const auto fault = TakeFault("StartCapture")) {
      return *fault;
    }
    const std::lock_guard lock(mutex_);
    if (!loop_) {
      return kClosed;
    }
    if (started_) {
      return kIllegalMethodCall;
    }
    started_ = loop_->Start();
    return started_ ? S_OK : E_OUTOFMEMORY;
  }

  HRESULT STDMETHODCALLTYPE Close() override {
    if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
      return admitted;
    }
    if (const auto fault = TakeFault("CloseSession", "Close")) {
      return *fault;
    }
    End();
    return S_OK;
  }

 private:
  ~CaptureSession() override { End(); }

  void End() {
    std::shared_ptr<CaptureLoop> ended;
    const std::lock_guard lock(mutex_);
    ended.swap(loop_);
    if (ended) {
      ended->Stop();
    }
  }

  const HomeApartment home_;
  std::mutex mutex_;
  std::shared_ptr<CaptureLoop> loop_;
  bool started_ = false;
};

}  // namespace

ComPtr<abi::IGraphicsCaptureSession> MakeCaptureSession(ComPtr<IOwnItem> item,
                                                        std::shared_ptr<FrameBuffers> buffers,
                                                        std::shared_ptr<FramePool::Anchor> pool) {
  return Make<CaptureSession>(std::move(item), std::move(buffers), std::move(pool));
}

}  // namespace brisolte::standins
