#include "video/windows_capture_platform.h"

#include <windows.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "common/given_object.h"
#include "common/hresult_error.h"
#include "desktop/handles.h"
#include "video/confined_service.h"
#include "video/frame_converter.h"
#include "video/graphics_device.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

class WindowsCapturedFrame final : public CapturedFrame {
 public:
  WindowsCapturedFrame(ComPtr<abi::IDirect3D11CaptureFrame> frame, std::shared_ptr<FrameConverter> converter)
      : frame_(std::move(frame)), converter_(std::move(converter)) {}

  std::int64_t SystemRelativeTime() override {
    abi::TimeSpan time{};
    ThrowIfFailed(frame_->get_SystemRelativeTime(&time));
    return time.Duration;
  }

  bool SurfaceFromFrame(VideoFrame& frame, const FrameTiming& timing) override {
    return converter_->SurfaceFromFrame(*frame_.Get(), timing, frame, mapping_);
  }

  void Close() override { ThrowIfFailed(CloseWinRt(frame_.Get())); }

 private:
  ComPtr<abi::IDirect3D11CaptureFrame> frame_;
  const std::shared_ptr<FrameConverter> converter_;
  MappedTexture mapping_;
};

class WindowsFrameSource final : public FrameSource {
 public:
  WindowsFrameSource(abi::IDirect3D11CaptureFramePool& pool, std::shared_ptr<FrameConverter> converter)
      : pool_(pool), converter_(std::move(converter)) {}

  std::unique_ptr<CapturedFrame> TryGetNextFrame() override {
    ComPtr<abi::IDirect3D11CaptureFrame> frame;
    ThrowIfFailed(pool_.TryGetNextFrame(frame.GetAddressOf()));
    return frame == nullptr ? nullptr : std::make_unique<WindowsCapturedFrame>(std::move(frame), converter_);
  }

 private:
  abi::IDirect3D11CaptureFramePool& pool_;
  const std::shared_ptr<FrameConverter> converter_;
};

class WindowsCapturePlatform final : public CapturePlatform {
 public:
  std::int32_t CreateDevice(DriverType type, std::int32_t& featureLevel) override {
    D3D_FEATURE_LEVEL level{};
    const HRESULT result = CreateGraphicsDevice(type, graphics_, level);
    featureLevel = level;
    return result;
  }
  std::int32_t QueryVideoDevice() override {
    return Given(graphics_.device.As(&graphics_.videoDevice), graphics_.videoDevice);
  }
  std::int32_t QueryVideoContext() override {
    return Given(graphics_.context.As(&graphics_.videoContext), graphics_.videoContext);
  }
  ID3D11Device* Device() override { return graphics_.device.Get(); }

  bool WrapDevice() override {
    const ComPtr<IDXGIDevice> dxgi = DxgiDeviceOf(*graphics_.device.Get());
    if (dxgi == nullptr) {
      throw std::runtime_error("Failed to get DXGI device");
    }
    return SUCCEEDED(service_.Ask("CreateDirect3D11DeviceFromDXGIDevice", &CaptureService::WrapDevice, dxgi));
  }
  bool ObtainItemInterop() override {
    return SUCCEEDED(service_.Ask("RoGetActivationFactory", &CaptureService::ObtainItemInterop));
  }
  std::string DeviceIdentifier() override { return AdapterIdentifier(*graphics_.device.Get()); }
  bool HasWrappedDevice() override {
    return service_.Try("HasWrappedDevice", &CaptureService::HasWrappedDevice).value_or(false);
  }

  std::int32_t CreateItemForMonitor(std::int64_t monitor) override {
    return service_.Ask("CreateForMonitor", &CaptureService::CreateItemForMonitor, MonitorOf(monitor));
  }
  std::int32_t CreateItemForWindow(std::int64_t window) override {
    return service_.Ask("CreateForWindow", &CaptureService::CreateItemForWindow, WindowOf(window));
  }
  bool HasItem() override { return service_.Try("HasItem", &CaptureService::HasItem).value_or(false); }
  PixelSize ItemSize() override {
    return service_.Demand("GraphicsCaptureItem.Size", &CaptureService::ItemSize);
  }

  bool CreateFramePool(PixelSize size, std::int32_t buffers) override {
    return SUCCEEDED(service_.Ask("CreateFreeThreaded", &CaptureService::CreateFramePool, size, buffers));
  }
  void SubscribeFrameArrived(FrameArrivedHandler handler) override {
    converter_ = std::make_shared<FrameConverter>(graphics_);
    const PoolHandler take = [handler = std::move(handler), converter = converter_](auto& pool) {
      WindowsFrameSource source(pool, converter);
      return handler(source);
    };
    service_.Demand("FrameArrived", &CaptureService::Subscribe, take);
  }
  std::int32_t CreateSession() override {
    return service_.Ask("CreateCaptureSession", &CaptureService::CreateSession);
  }
  bool HasSession() override {
    return service_.Try("HasSession", &CaptureService::HasSession).value_or(false);
  }

  std::int32_t CreateVideoProcessorEnumerator(const CaptureGeometry& geometry,
                                              std::int32_t frameRate) override {
    return converter_ ? converter_->CreateVideoProcessorEnumerator(geometry, frameRate) : E_UNEXPECTED;
  }
  std::int32_t CreateVideoProcessor() override {
    return converter_ ? converter_->CreateVideoProcessor() : E_UNEXPECTED;
  }
  void ConvertOnCpu(const CaptureGeometry& geometry) override {
    if (converter_) {
      converter_->UseCpu(geometry);
    }
  }
  void SetOutputFormat(DxgiFormat format) override {
    if (converter_) {
      converter_->SetOutputFormat(format);
    }
  }

  bool Perform(const char* name, const std::function<void()>& work) override {
    return service_.Try(name, [work](CaptureService& /*service*/) { work(); }).has_value();
  }

  std::int32_t LeaveOutCursor() override {
    return service_.Ask("IsCursorCaptureEnabled", &CaptureService::LeaveOutCursor);
  }
  std::int32_t LeaveOutBorder() override {
    return service_.Ask("IsBorderRequired", &CaptureService::LeaveOutBorder);
  }

  void StartCapture() override { service_.Demand("StartCapture", &CaptureService::StartCapture); }
  void CloseSession() override {
    service_.Try("GraphicsCaptureSession.Close", &CaptureService::CloseSession);
  }
  void ReleaseTarget() override { service_.Try("ReleaseTarget", &CaptureService::ReleaseTarget); }

 private:
  Direct3D graphics_;
  std::shared_ptr<FrameConverter> converter_;  // the handler's too, which may be inside when this goes
  ConfinedService service_;                    // last, so that it goes before what it captures with
};

}  // namespace

std::unique_ptr<CapturePlatform> CreateWindowsCapturePlatform() {
  return std::make_unique<WindowsCapturePlatform>();
}

}  // namespace brisolte
