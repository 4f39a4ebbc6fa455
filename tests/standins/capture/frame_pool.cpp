#include "capture/frame_pool.h"

#include "capture/capture_frame.h"
#include "capture/capture_item.h"
#include "capture/capture_session.h"
#include "shared/faults.h"
#include "shared/winrt_direct3d.h"

namespace brisolte::standins {

FramePool::FramePool()
    : InspectableObject(abi::kFramePoolClass),
      buffers_(std::make_shared<FrameBuffers>()),
      anchor_(std::make_shared<Anchor>()) {
  anchor_->Set(this);
}

FramePool::~FramePool() {
  anchor_->Clear();
  buffers_->Close();
}

HRESULT FramePool::Fill(abi::IDirect3DDevice* device, abi::DirectXPixelFormat format, INT32 buffers,
                        abi::SizeInt32 size) {
  const bool sensible = device != nullptr && format == abi::DirectXPixelFormat::B8G8R8A8UIntNormalized &&
                        buffers > 0 && size.Width > 0 && size.Height > 0;
  const auto inner = sensible ? UnwrapDevice(device) : nullptr;
  return inner != nullptr ? buffers_->Recreate(inner, buffers, size) : E_INVALIDARG;
}

HRESULT FramePool::Recreate(abi::IDirect3DDevice* device, abi::DirectXPixelFormat format, INT32 buffers,
                            abi::SizeInt32 size) {
  if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
    return admitted;
  }
  if (const auto fault = TakeFault("Recreate")) {
    return *fault;
  }
  return buffers_->closed() ? kClosed : Fill(device, format, buffers, size);
}

HRESULT FramePool::TryGetNextFrame(abi::IDirect3D11CaptureFrame** frame) {
  if (frame == nullptr) {
    return E_POINTER;
  }
  *frame = nullptr;
  if (const auto fault = TakeFault("TryGetNextFrame")) {
    return *fault;
  }
  if (buffers_->closed()) {
    return kClosed;
  }
  auto next = buffers_->TakeFrame();
  return next ? Give(MakeCaptureFrame(std::move(*next)), frame) : S_OK;
}

HRESULT FramePool::add_FrameArrived(abi::IFrameArrivedHandler* handler, abi::EventRegistrationToken* token) {
  if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
    return admitted;
  }
  if (const auto fault = TakeFault("add_FrameArrived")) {
    return *fault;
  }
  return buffers_->closed() ? kClosed : frameArrived_.Add(handler, token);
}

HRESULT FramePool::remove_FrameArrived(abi::EventRegistrationToken token) {
  if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
    return admitted;
  }
  return frameArrived_.Remove(token);
}

HRESULT FramePool::CreateCaptureSession(abi::IGraphicsCaptureItem* item,
                                        abi::IGraphicsCaptureSession** session) {
  if (session == nullptr) {
    return E_POINTER;
  }
  *session = nullptr;
  if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
    return admitted;
  }
  if (const auto fault = TakeFault("CreateCaptureSession")) {
    return *fault;
  }
  if (buffers_->closed()) {
    return kClosed;
  }
  ComPtr<IOwnItem> own;
  if (item == nullptr ||
      FAILED(item->QueryInterface(IOwnItem::kIid, reinterpret_cast<void**>(own.GetAddressOf())))) {
    return E_INVALIDARG;
  }
  return Give(MakeCaptureSession(std::move(own), buffers_, anchor_), session);
}

HRESULT FramePool::get_DispatcherQueue(IUnknown** queue) {
  if (queue == nullptr) {
    return E_POINTER;
  }
  *queue = nullptr;
  return buffers_->closed() ? kClosed : S_OK;
}

HRESULT FramePool::Close() {
  if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
    return admitted;
  }
  if (const auto fault = TakeFault("ClosePool", "Close")) {
    return *fault;
  }
  buffers_->Close();
  frameArrived_.Clear();
  return S_OK;
}

void FramePool::RaiseFrameArrived() {
  frameArrived_.Raise<abi::IDirect3D11CaptureFramePool>(this);
}

}  // namespace brisolte::standins
