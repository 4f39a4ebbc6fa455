#pragma once

#include <wrl/client.h>

#include <cstdint>

#include "video/capture_platform.h"
#include "video/graphics_capture_abi.h"
#include "video/winrt_activation.h"

namespace brisolte {

/// The objects that one capture has from the capture service: item, frame pool with its handler, and session.
/// Gives them back in the order that the service wants.
class CaptureService {
 public:
  CaptureService() = default;
  CaptureService(const CaptureService&) = delete;
  CaptureService& operator=(const CaptureService&) = delete;
  ~CaptureService();

  HRESULT ObtainItemInterop();
  HRESULT CreateItemForMonitor(HMONITOR monitor);
  HRESULT CreateItemForWindow(HWND window);
  bool HasItem() const { return item_ != nullptr; }
  /// Raises HResultError.
  PixelSize ItemSize() const;
  void ReleaseItem() { item_ = nullptr; }

  /// There is a pool when it succeeds. Raises HResultError when the service has no pools to give.
  HRESULT CreateFramePool(abi::IDirect3DDevice* device, PixelSize size, std::int32_t buffers);
  /// Raises HResultError.
  void Subscribe(CapturePlatform::FrameArrivedHandler handler);
  HRESULT CreateSession();
  bool HasSession() const { return session_ != nullptr; }

  /// Raises HResultError, also when there is no session.
  void StartCapture();
  /// Ends delivery and releases the session; nothing when there is none. Raises HResultError.
  void CloseSession();
  /// Closes and releases the session and the pool, as far as there are any. Both go whatever fails; the first
  /// failure is given.
  HRESULT Close();
  /// Null when there is none. Raises HResultError.
  Microsoft::WRL::ComPtr<abi::IDirect3D11CaptureFrame> TryGetNextFrame();

 private:
  WinRtActivation activation_;  // first, so that what came from it goes before it
  Microsoft::WRL::ComPtr<abi::IGraphicsCaptureItemInterop> interop_;
  Microsoft::WRL::ComPtr<abi::IGraphicsCaptureItem> item_;
  Microsoft::WRL::ComPtr<abi::IDirect3D11CaptureFramePool> pool_;
  bool subscribed_ = false;
  abi::EventRegistrationToken subscription_{};
  Microsoft::WRL::ComPtr<abi::IGraphicsCaptureSession> session_;
};

/// Closes an object of the capture service.
HRESULT CloseWinRt(IUnknown* object);

}  // namespace brisolte
