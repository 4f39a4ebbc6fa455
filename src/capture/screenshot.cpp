#include "capture/screenshot.h"

#include <windows.h>

#include <optional>

#include "capture/saved_frame.h"
#include "capture/screenshot_target.h"
#include "common/hresult_error.h"
#include "common/hresult_failure.h"
#include "common/logger.h"
#include "desktop/handles.h"
#include "video/confined_service.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

constexpr std::int32_t kPoolBuffers = 2;
constexpr DWORD kFrameWaitMs = 200;

class ServiceItems final : public ScreenshotItems {
 public:
  explicit ServiceItems(ConfinedService& service) : service_(service) {}

  std::int32_t CreateItemForWindow(std::int64_t window) override {
    return Create("CreateForWindow", &CaptureService::CreateItemForWindow, WindowOf(window));
  }
  std::int32_t CreateItemForMonitor(std::int64_t monitor) override {
    return Create("CreateForMonitor", &CaptureService::CreateItemForMonitor, MonitorOf(monitor));
  }

 private:
  template <typename Call, typename Target>
  HRESULT Create(const char* name, Call call, Target target) {
    const HRESULT found = service_.Ask("RoGetActivationFactory", &CaptureService::ObtainItemInterop);
    return FAILED(found) ? found : service_.Ask(name, call, target);
  }

  ConfinedService& service_;
};

/// Hands the device to the capture service. False when it cannot, with an ERROR line.
bool WrapDevice(ConfinedService& service, ID3D11Device& device) {
  const ComPtr<IDXGIDevice> dxgi = DxgiDeviceOf(device);
  if (dxgi == nullptr) {
    Logger::Error("Failed to get DXGI device");
    return false;
  }
  return CheckResult(service.Ask("CreateDirect3D11DeviceFromDXGIDevice", &CaptureService::WrapDevice, dxgi),
                     "Failed to create WinRT Direct3D device: ");
}

void StartCapture(ConfinedService& service, PixelSize size) {
  ThrowIfFailed(service.Ask("CreateFreeThreaded", &CaptureService::CreateFramePool, size, kPoolBuffers));
  Logger::Info("Successfully created Direct3D11CaptureFramePool");
  ThrowIfFailed(service.Ask("CreateCaptureSession", [](CaptureService& calls) {
    const HRESULT created = calls.CreateSession();
    return SUCCEEDED(created) && !calls.HasSession() ? E_POINTER : created;
  }));
  Logger::Info("Successfully created capture session");
  service.Demand("StartCapture", &CaptureService::StartCapture);
  Logger::Info("Started capture");
}

/// The service keeps the frame until it is closed.
bool SaveNextFrame(ConfinedService& service, const Direct3D& direct3d, const std::string& filePath,
                   const ScreenshotTarget& target) {
  if (!service.Demand("TryGetNextFrame", &CaptureService::TakeFrame)) {
    Logger::Error("Failed to get frame");
    return false;
  }
  FramePicture picture;
  picture.surface = service.Demand("Direct3D11CaptureFrame.Surface", &CaptureService::FrameSurface);
  if (picture.surface == nullptr) {
    Logger::Error("Failed to get frame surface");
    return false;
  }
  picture.content = service.Demand("Direct3D11CaptureFrame.ContentSize", &CaptureService::FrameContent);
  picture.visible = target.visible;
  if (!SaveFrameToFile(direct3d, picture, filePath, target.crop)) {
    Logger::Error("Failed to save frame to file");
    return false;
  }
  return true;
}

/// Gives everything back in order and tells of a failure. A service that does not come back keeps it, which
/// takes nothing from the picture.
void CloseCapture(ConfinedService& service) {
  if (const auto closed = service.Try("Close", &CaptureService::Close)) {
    ThrowIfFailed(*closed);
  }
}

bool CaptureItem(ConfinedService& service, const Direct3D& direct3d, const std::string& filePath,
                 const ScreenshotTarget& target) {
  Logger::Info("Processing WGC capture item...");
  if (!service.Try("HasItem", &CaptureService::HasItem).value_or(false)) {
    Logger::Error("Capture item is null");
    return false;
  }
  const PixelSize size = service.Demand("GraphicsCaptureItem.Size", &CaptureService::ItemSize);
  Logger::Info("Capture item size: " + std::to_string(size.width) + "x" + std::to_string(size.height));
  if (!WrapDevice(service, *direct3d.device.Get())) {
    return false;
  }
  StartCapture(service, size);
  Sleep(kFrameWaitMs);
  if (!SaveNextFrame(service, direct3d, filePath, target)) {
    return false;
  }
  CloseCapture(service);
  Logger::Info("WGC capture completed");
  return true;
}

}  // namespace

bool TakeScreenshot(const CaptureSettings& settings, Desktop& desktop, const Direct3D& direct3d,
                    const std::string& filePath) {
  ConfinedService service;
  ServiceItems items(service);
  const auto target = CreateScreenshotItem(desktop, items, settings);
  return target && CaptureItem(service, direct3d, filePath, *target);
}

}  // namespace brisolte
