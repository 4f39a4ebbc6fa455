#include "video/windows_capture_platform.h"

#include <windows.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "common/hresult_error.h"
#include "desktop/handles.h"
#include "video/capture_service.h"
#include "video/frame_converter.h"
#include "video/graphics_device.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

class WindowsCapturedFrame final : public CapturedFrame {
 public:
  WindowsCapturedFrame(ComPtr<abi::IDirect3D11CaptureFrame> frame, FrameConverter& converter)
      : frame_(std::move(frame)), converter_(converter) {}

  std::int64_t SystemRelativeTime() override {
    abi::TimeSpan time{};
    ThrowIfFailed(frame_->get_SystemRelativeTime(&time));
    return time.Duration;
  }

  bool SurfaceFromFrame(VideoFrame& frame, const FrameTiming& timing) override {
    return converter_.SurfaceFromFrame(*frame_.Get(), timing, frame, mapping_);
  }

  void Close() override { ThrowIfFailed(CloseWinRt(frame_.Get())); }

 private:
  ComPtr<abi::IDirect3D11CaptureFrame> frame_;
  FrameConverter& converter_;
  MappedTexture mapping_;
};

class WindowsCapturePlatform final : public CapturePlatform {
 public:
  std::int32_t CreateDevice(DriverType type, std::int32_t& featureLevel) override {
    D3D_FEATURE_LEVEL level{};
    const HRESULT result = CreateGraphicsDevice(type, graphics_, level);
    featureLevel = level;
    return result;
  }
  std::int32_t QueryVideoDevice() override { return graphics_.device.As(&graphics_.videoDevice); }
  std::int32_t QueryVideoContext() override { return graphics_.context.As(&graphics_.videoContext); }
  ID3D11Device* Device() override { return graphics_.device.Get(); }

  bool WrapDevice() override {
    const ComPtr<IDXGIDevice> dxgi = DxgiDeviceOf(*graphics_.device.Get());
    if (dxgi == nullptr) {
      throw std::runtime_error("Failed to get DXGI device");
    }
    return SUCCEEDED(WrapDxgiDevice(*dxgi.Get(), wrapped_));
  }
  bool ObtainItemInterop() override { return SUCCEEDED(service_.ObtainItemInterop()); }
  std::string DeviceIdentifier() override { return AdapterIdentifier(*graphics_.device.Get()); }
  bool HasWrappedDevice() const override { return wrapped_ != nullptr; }
  void ReleaseWrappedDevice() override { wrapped_ = nullptr; }

  std::int32_t CreateItemForMonitor(std::int64_t monitor) override {
    return service_.CreateItemForMonitor(MonitorOf(monitor));
  }
  std::int32_t CreateItemForWindow(std::int64_t window) override {
    return service_.CreateItemForWindow(WindowOf(window));
  }
  bool HasItem() const override { return service_.HasItem(); }
  PixelSize ItemSize() override { return service_.ItemSize(); }
  void ReleaseItem() override { service_.ReleaseItem(); }

  bool CreateFramePool(PixelSize size, std::int32_t buffers) override {
    return SUCCEEDED(service_.CreateFramePool(wrapped_.Get(), size, buffers));
  }
  void SubscribeFrameArrived(FrameArrivedHandler handler) override { service_.Subscribe(std::move(handler)); }
  std::int32_t CreateSession() override { return service_.CreateSession(); }
  bool HasSession() const override { return service_.HasSession(); }

  std::int32_t CreateVideoProcessorEnumerator(const CaptureGeometry& geometry,
                                              std::int32_t frameRate) override {
    converter_.emplace(graphics_);
    return converter_->CreateVideoProcessorEnumerator(geometry, frameRate);
  }
  std::int32_t CreateVideoProcessor() override {
    return converter_ ? converter_->CreateVideoProcessor() : E_UNEXPECTED;
  }
  void SetOutputFormat(DxgiFormat format) override {
    if (converter_) {
      converter_->SetOutputFormat(format);
    }
  }

  void StartCapture() override { service_.StartCapture(); }
  void CloseSession() override { service_.CloseSession(); }
  std::unique_ptr<CapturedFrame> TryGetNextFrame() override {
    auto frame = service_.TryGetNextFrame();
    return frame == nullptr || !converter_
               ? nullptr
               : std::make_unique<WindowsCapturedFrame>(std::move(frame), *converter_);
  }

 private:
  Direct3D graphics_;
  ComPtr<abi::IDirect3DDevice> wrapped_;
  std::optional<FrameConverter> converter_;
  CaptureService service_;  // last, so that it goes before what it captures with
};

}  // namespace

std::unique_ptr<CapturePlatform> CreateWindowsCapturePlatform() {
  return std::make_unique<WindowsCapturePlatform>();
}

}  // namespace brisolte
