#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <string>

#include "common/hresult_failure.h"
#include "common/logger.h"
#include "video/capture_target.h"
#include "video/video_capture.h"

namespace brisolte {
namespace {

constexpr std::int32_t kPoolBuffers = 2;

/// Whether a device that was asked for video processing has none, as in virtual machines and remote sessions.
bool MeansThereIsNone(std::int32_t result) {
  constexpr std::array<std::uint32_t, 3> kNone{0x80004002,   // E_NOINTERFACE
                                               0x80004001,   // E_NOTIMPL
                                               0x887A0004};  // DXGI_ERROR_UNSUPPORTED
  return std::ranges::find(kNone, static_cast<std::uint32_t>(result)) != kNone.end();
}

std::string SizeText(PixelSize size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

}  // namespace

bool VideoCapture::RunConstructionSteps(Encoder& encoder) {
  const auto step = [](bool done, const char* name) {
    if (!done) {
      Logger::Error(std::string("VideoCapture: ") + name + " failed");
    }
    return done;
  };
  return step(InitializeCaptureConfig(), "InitializeCaptureConfig") &&
         step(InitializeD3D11(), "InitializeD3D11") && step(InitializeWGCDevice(), "InitializeWGCDevice") &&
         step(CreateCaptureItem(), "CreateCaptureItem") && step(CreateFramePool(), "CreateFramePool") &&
         step(ConfigureVideoStream(encoder), "ConfigureVideoStream");
}

bool VideoCapture::InitializeCaptureConfig() const {
  if (settings_.frameRate <= 0) {
    Logger::Error("Invalid frame rate");
    return false;
  }
  if (settings_.bitrate <= 0) {
    Logger::Error("Invalid bitrate");
    return false;
  }
  return true;
}

bool VideoCapture::InitializeD3D11() {
  return CreateAnyDevice() &&
         HasVideoProcessing(platform_->QueryVideoDevice(), "Failed to get video device: ") &&
         (convertsOnCpu_ ||
          HasVideoProcessing(platform_->QueryVideoContext(), "Failed to get video context: "));
}

bool VideoCapture::HasVideoProcessing(std::int32_t result, const char* failure) {
  if (!MeansThereIsNone(result)) {
    return CheckResult(result, failure);
  }
  convertsOnCpu_ = true;
  Logger::Info("No video processor, frames are converted on the CPU: " + HResultText(result));
  return true;
}

bool VideoCapture::CreateAnyDevice() {
  for (const DriverType type : {DriverType::kHardware, DriverType::kWarp, DriverType::kReference}) {
    const std::string number = std::to_string(static_cast<std::int32_t>(type));
    Logger::Info("Attempting to create D3D11 device with driver type: " + number);
    std::int32_t featureLevel = 0;
    if (CheckResult(platform_->CreateDevice(type, featureLevel),
                    "Failed to create D3D11 device with driver type " + number + ": ")) {
      Logger::Info("D3D11 device created successfully with driver type: " + number +
                   " and feature level: " + std::to_string(featureLevel));
      return true;
    }
  }
  Logger::Error("Failed to create D3D11 device with any driver type");
  return false;
}

bool VideoCapture::InitializeWGCDevice() {
  try {
    if (!platform_->WrapDevice()) {
      Logger::Error("Failed to create WinRT Direct3D device");
      return false;
    }
  } catch (const std::exception& error) {
    Logger::Error(std::string("Exception in InitializeWGCDevice: ") + error.what());
    return false;
  }
  if (!platform_->ObtainItemInterop()) {
    Logger::Error("Failed to get GraphicsCaptureItemInterop interface");
    return false;
  }
  Logger::Info("Successfully created WinRT Direct3D device (ID: " + platform_->DeviceIdentifier() + ")");
  return true;
}

bool VideoCapture::CreateCaptureItem() {
  const auto target = CreateTargetItem(desktop_, *platform_, settings_);
  if (!target) {
    return false;
  }
  if (!platform_->HasItem()) {
    Logger::Error("Capture item is null after creation");
    return false;
  }
  const PixelSize item = platform_->ItemSize();
  const GeometryResult result = ShowsRegion(settings_)
                                    ? RegionGeometry(item, target->monitor, settings_.region)
                                    : WholeItemGeometry(item);
  if (!result.error.empty()) {
    Logger::Error(result.error);
    return false;
  }
  geometry_ = result.geometry;
  Logger::Info("Capture dimensions set to: " + SizeText(geometry_.frame));
  return true;
}

bool VideoCapture::CreateFramePool() {
  if (!platform_->HasWrappedDevice()) {
    Logger::Error("WinRT Direct3D device is null");
    return false;
  }
  if (!platform_->HasItem()) {
    Logger::Error("Capture item is null after creating frame pool");
    return false;
  }
  Logger::Info("Creating frame pool with resolution: " + SizeText(geometry_.pool) + "pool size:" +
               std::to_string(kPoolBuffers) + ", frame rate: " + std::to_string(settings_.frameRate));
  if (!platform_->CreateFramePool(geometry_.pool, kPoolBuffers)) {
    Logger::Error("Failed to create frame pool object");
    return false;
  }
  platform_->SubscribeFrameArrived(
      [delivery = delivery_](FrameSource& source) { return delivery->OnFrameArrived(source); });
  if (!CreateSession() || !CreateConversion()) {
    return false;
  }
  Logger::Info("Frame pool and capture session initialized successfully");
  return true;
}

bool VideoCapture::CreateSession() {
  if (platform_->CreateSession() < 0) {
    Logger::Error("Failed to create videoCapture from frame pool");
    return false;
  }
  if (!platform_->HasSession()) {
    Logger::Error("Frame pool is null after creating capture session");
    return false;
  }
  return true;
}

bool VideoCapture::CreateConversion() {
  if (!convertsOnCpu_ && !CreateVideoProcessor()) {
    return false;
  }
  if (convertsOnCpu_) {
    platform_->ConvertOnCpu(geometry_);
  }
  return true;
}

bool VideoCapture::CreateVideoProcessor() {
  return HasVideoProcessing(platform_->CreateVideoProcessorEnumerator(geometry_, settings_.frameRate),
                            "Failed to create video processor enumerator: ") &&
         (convertsOnCpu_ ||
          HasVideoProcessing(platform_->CreateVideoProcessor(), "Failed to create video processor: "));
}

bool VideoCapture::ConfigureVideoStream(Encoder& encoder) {
  const auto width = static_cast<std::uint32_t>(geometry_.frame.width);
  const auto height = static_cast<std::uint32_t>(geometry_.frame.height);
  if (!encoder.InitializeVideoEncoder(width, height, platform_->Device())) {
    return false;
  }
  platform_->SetOutputFormat(ConvertFFmpegPixelFormatToDXGI(encoder.GetPixelFormat() ? 1 : 0));
  return true;
}

}  // namespace brisolte
