#include "capture/capture_session.h"

#include "capture/capture_loop.h"
#include "shared/apartment.h"
#include "shared/faults.h"

namespace brisolte::standins {

namespace {

class CaptureSession final
    : public InspectableObject<abi::IGraphicsCaptureSession, abi::IGraphicsCaptureSession2,
                               abi::IGraphicsCaptureSession3, abi::IClosable> {
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

  HRESULT STDMETHODCALLTYPE get_IsCursorCaptureEnabled(boolean* enabled) override {
    return Read(&SessionMarks::cursor, enabled);
  }
  HRESULT STDMETHODCALLTYPE put_IsCursorCaptureEnabled(boolean enabled) override {
    return Write("put_IsCursorCaptureEnabled", &SessionMarks::cursor, enabled);
  }
  HRESULT STDMETHODCALLTYPE get_IsBorderRequired(boolean* required) override {
    return Read(&SessionMarks::border, required);
  }
  HRESULT STDMETHODCALLTYPE put_IsBorderRequired(boolean required) override {
    return Write("put_IsBorderRequired", &SessionMarks::border, required);
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

 protected:
  std::optional<HRESULT> RefuseQuery(REFIID iid) override {
    if (iid == abi::IGraphicsCaptureSession2::kIid) {
      return TakeFault("QuerySession2");
    }
    return iid == abi::IGraphicsCaptureSession3::kIid ? TakeFault("QuerySession3") : std::nullopt;
  }

 private:
  using Mark = std::atomic<bool> SessionMarks::*;

  ~CaptureSession() override { End(); }

  HRESULT Read(Mark mark, boolean* value) {
    if (value == nullptr) {
      return E_POINTER;
    }
    if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
      return admitted;
    }
    const std::lock_guard lock(mutex_);
    if (!loop_) {
      return kClosed;
    }
    *value = loop_->marks().*mark ? 1 : 0;
    return S_OK;
  }

  /// With a fault of 0 it succeeds and changes nothing, as where the caller may not change it.
  HRESULT Write(const char* call, Mark mark, boolean value) {
    if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
      return admitted;
    }
    if (const auto fault = TakeFault(call)) {
      return *fault;
    }
    const std::lock_guard lock(mutex_);
    if (!loop_) {
      return kClosed;
    }
    loop_->marks().*mark = value != 0;
    return S_OK;
  }

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
