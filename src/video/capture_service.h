#pragma once

#include <wrl/client.h>

#include <cstdint>

#include "video/frame_arrived_handler.h"
#include "video/graphics_capture_abi.h"
#include "video/graphics_device.h"

namespace brisolte {

/// The objects that one capture has from the capture service: the wrapped device, item, frame pool with its
/// handler, session, and a frame if one was taken to keep. Gives them back in the order that the service
/// wants.
///
/// All operations are called on the capture thread.
class CaptureService {
 public:
  CaptureService() = default;
  CaptureService(const CaptureService&) = delete;
  CaptureService& operator=(const CaptureService&) = delete;
  ~CaptureService();

  /// Takes the device to capture with.
  HRESULT WrapDevice(const Microsoft::WRL::ComPtr<IDXGIDevice>& device) {
    return WrapDxgiDevice(*device.Get(), wrapped_);
  }
  bool HasWrappedDevice() const { return wrapped_ != nullptr; }

  HRESULT ObtainItemInterop();
  HRESULT CreateItemForMonitor(HMONITOR monitor);
  HRESULT CreateItemForWindow(HWND window);
  bool HasItem() const { return item_ != nullptr; }
  /// Raises HResultError.
  PixelSize ItemSize() const;

  /// There is a pool when it succeeds. Raises HResultError when the service has no pools to give.
  HRESULT CreateFramePool(PixelSize size, std::int32_t buffers);
  /// Raises HResultError.
  void Subscribe(PoolHandler handler);
  HRESULT CreateSession();
  bool HasSession() const { return session_ != nullptr; }

  /// Keeps the pointer out of the session's pictures.
  HRESULT LeaveOutCursor();
  /// Keeps the system from drawing a border around the target.
  HRESULT LeaveOutBorder();
  /// Raises HResultError, also when there is no session.
  void StartCapture();
  /// Ends delivery and releases the session; nothing when there is none. Raises HResultError.
  void CloseSession();
  /// Releases the item and the wrapped device, which only the making of a session needs.
  void ReleaseTarget();
  /// Closes and releases the session and the pool, as far as there are any. Both go whatever fails; the first
  /// failure is given.
  HRESULT Close();

  /// Takes the next frame and keeps it until `Close`; false when there is none. Raises HResultError.
  bool TakeFrame();
  /// The kept frame's surface; null when it has none. Raises HResultError.
  Microsoft::WRL::ComPtr<abi::IDirect3DSurface> FrameSurface() const;
  /// How much of it is content. Raises HResultError.
  PixelSize FrameContent() const;

 private:
  Microsoft::WRL::ComPtr<abi::IDirect3DDevice> wrapped_;
  Microsoft::WRL::ComPtr<abi::IGraphicsCaptureItemInterop> interop_;
  Microsoft::WRL::ComPtr<abi::IGraphicsCaptureItem> item_;
  Microsoft::WRL::ComPtr<abi::IDirect3D11CaptureFramePool> pool_;
  bool subscribed_ = false;
  abi::EventRegistrationToken subscription_{};
  Microsoft::WRL::ComPtr<abi::IGraphicsCaptureSession> session_;
  Microsoft::WRL::ComPtr<abi::IDirect3D11CaptureFrame> frame_;
};

/// Closes an object of the capture service.
HRESULT CloseWinRt(IUnknown* object);

}  // namespace brisolte
