#pragma once

#include "capture/event_source.h"
#include "capture/frame_buffers.h"
#include "capture/weak_anchor.h"
#include "shared/apartment.h"

namespace brisolte::standins {

class FramePool final : public InspectableObject<abi::IDirect3D11CaptureFramePool, abi::IClosable> {
 public:
  using Anchor = WeakAnchor<FramePool>;

  FramePool();
  FramePool(const FramePool&) = delete;
  FramePool& operator=(const FramePool&) = delete;

  HRESULT STDMETHODCALLTYPE Recreate(abi::IDirect3DDevice* device, abi::DirectXPixelFormat format,
                                     INT32 buffers, abi::SizeInt32 size) override;
  HRESULT STDMETHODCALLTYPE TryGetNextFrame(abi::IDirect3D11CaptureFrame** frame) override;
  HRESULT STDMETHODCALLTYPE add_FrameArrived(abi::IFrameArrivedHandler* handler,
                                             abi::EventRegistrationToken* token) override;
  HRESULT STDMETHODCALLTYPE remove_FrameArrived(abi::EventRegistrationToken token) override;
  HRESULT STDMETHODCALLTYPE CreateCaptureSession(abi::IGraphicsCaptureItem* item,
                                                 abi::IGraphicsCaptureSession** session) override;
  HRESULT STDMETHODCALLTYPE get_DispatcherQueue(IUnknown** queue) override;
  HRESULT STDMETHODCALLTYPE Close() override;

  /// Fills the pool with buffers: what its creation and `Recreate` have in common.
  HRESULT Fill(abi::IDirect3DDevice* device, abi::DirectXPixelFormat format, INT32 buffers,
               abi::SizeInt32 size);
  /// Calls every handler of `FrameArrived`.
  void RaiseFrameArrived();

 private:
  ~FramePool() override;

  const HomeApartment home_;
  std::shared_ptr<FrameBuffers> buffers_;
  std::shared_ptr<Anchor> anchor_;
  EventSource<abi::IFrameArrivedHandler> frameArrived_;
};

}  // namespace brisolte::standins
