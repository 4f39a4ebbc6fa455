#include "capture/screenshot.h"

#include <windows.h>

#include <optional>

#include "capture/saved_frame.h"
#include "capture/screenshot_target.h"
#include "common/hresult_error.h"
#include "common/hresult_failure.h"
#include "common/logger.h"
#include "desktop/handles.h"
#include "video/capture_service.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

constexpr std::int32_t kPoolBuffers = 2;
constexpr DWORD kFrameWaitMs = 200;

class ServiceItems final : public ScreenshotItems {
 public:
  explicit ServiceItems(CaptureService& service) : service_(service) {}

  std::int32_t CreateItemForWindow(std::int64_t window) override {
    const HRESULT found = service_.ObtainItemInterop();
    return FAILED(found) ? found : service_.CreateItemForWindow(WindowOf(window));
  }
  std::int32_t CreateItemForMonitor(std::int64_t monitor) override {
    const HRESULT found = service_.ObtainItemInterop();
    return FAILED(found) ? found : service_.CreateItemForMonitor(MonitorOf(monitor));
  }

 private:
  CaptureService& service_;
};

/// The device for the capture service; null when it cannot be had, with an ERROR line.
ComPtr<abi::IDirect3DDevice> WrapDevice(ID3D11Device& device) {
  const ComPtr<IDXGIDevice> dxgi = DxgiDeviceOf(device);
  if (dxgi == nullptr) {
    Logger::Error("Failed to get DXGI device");
    return nullptr;
  }
  ComPtr<abi::IDirect3DDevice> wrapped;
  CheckResult(WrapDxgiDevice(*dxgi.Get(), wrapped), "Failed to create WinRT Direct3D device: ");
  return wrapped;
}

void StartCapture(CaptureService& service, abi::IDirect3DDevice* device, PixelSize size) {
  ThrowIfFailed(service.CreateFramePool(device, size, kPoolBuffers));
  Logger::Info("Successfully created Direct3D11CaptureFramePool");
  ThrowIfFailed(service.CreateSession());
  ThrowIfFailed(service.HasSession() ? S_OK : E_POINTER);
  Logger::Info("Successfully created capture session");
  service.StartCapture();
  Logger::Info("Started capture");
}

/// The frame and its surface are given back before it returns.
bool SaveNextFrame(CaptureService& service, const Direct3D& direct3d, const std::string& filePath,
                   const std::optional<Rectangle>& crop) {
  const ComPtr<abi::IDirect3D11CaptureFrame> frame = service.TryGetNextFrame();
  if (frame == nullptr) {
    Logger::Error("Failed to get frame");
    return false;
  }
  ComPtr<abi::IDirect3DSurface> surface;
  ThrowIfFailed(frame->get_Surface(surface.GetAddressOf()));
  if (surface == nullptr) {
    Logger::Error("Failed to get frame surface");
    return false;
  }
  if (!SaveFrameToFile(direct3d, *surface.Get(), filePath, crop)) {
    Logger::Error("Failed to save frame to file");
    return false;
  }
  return true;
}

bool CaptureItem(CaptureService& service, const Direct3D& direct3d, const std::string& filePath,
                 const std::optional<Rectangle>& crop) {
  Logger::Info("Processing WGC capture item...");
  if (!service.HasItem()) {
    Logger::Error("Capture item is null");
    return false;
  }
  const PixelSize size = service.ItemSize();
  Logger::Info("Capture item size: " + std::to_string(size.width) + "x" + std::to_string(size.height));
  const ComPtr<abi::IDirect3DDevice> device = WrapDevice(*direct3d.device.Get());
  if (device == nullptr) {
    return false;
  }
  StartCapture(service, device.Get(), size);
  Sleep(kFrameWaitMs);
  if (!SaveNextFrame(service, direct3d, filePath, crop)) {
    return false;
  }
  ThrowIfFailed(service.Close());
  Logger::Info("WGC capture completed");
  return true;
}

}  // namespace

bool TakeScreenshot(const CaptureSettings& settings, Desktop& desktop, const Direct3D& direct3d,
                    const std::string& filePath) {
  CaptureService service;
  ServiceItems items(service);
  const auto target = CreateScreenshotItem(desktop, items, settings);
  return target && CaptureItem(service, direct3d, filePath, target->crop);
}

}  // namespace brisolte
