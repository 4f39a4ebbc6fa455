#include "encoder/mf/device_manager.h"

#include <d3d11_4.h>

#include <array>
#include <string>

#include "common/hresult_failure.h"
#include "common/logger.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

/// Media Foundation asks for devices made for video, which older drivers refuse; with the other flag,
/// captured pictures may be drawn on them. In the order in which they are tried.
constexpr std::array kDeviceFlags{UINT{D3D11_CREATE_DEVICE_BGRA_SUPPORT | D3D11_CREATE_DEVICE_VIDEO_SUPPORT},
                                  UINT{D3D11_CREATE_DEVICE_BGRA_SUPPORT}};
constexpr std::array kFeatureLevels{D3D_FEATURE_LEVEL_11_1, D3D_FEATURE_LEVEL_11_0, D3D_FEATURE_LEVEL_10_1,
                                    D3D_FEATURE_LEVEL_10_0};

HRESULT CreateDevice(MediaFoundation& platform, ComPtr<ID3D11Device>& device) {
  HRESULT result = E_FAIL;
  for (const UINT flags : kDeviceFlags) {
    result = platform.D3D11CreateDevice(flags, kFeatureLevels, device.ReleaseAndGetAddressOf());
    if (SUCCEEDED(result)) {
      break;
    }
  }
  return result;
}

HRESULT ProtectFromThreads(ID3D11Device& device) {
  ComPtr<ID3D11DeviceContext> context;
  device.GetImmediateContext(context.GetAddressOf());
  ComPtr<ID3D11Multithread> threads;
  const HRESULT result = context.As(&threads);
  if (SUCCEEDED(result)) {
    threads->SetMultithreadProtected(TRUE);
  }
  return result;
}

}  // namespace

bool DeviceManager::Create(MediaFoundation& platform) {
  ComPtr<ID3D11Device> device;
  if (!SucceededOrLog(CreateDevice(platform, device), "Failed to create D3D11 device: ")) {
    return false;
  }
  Logger::Info("Creating DXGI device manager...");
  if (!SucceededOrLog(platform.CreateDXGIDeviceManager(&resetToken_, manager_.ReleaseAndGetAddressOf()),
                      "Failed to create DXGI device manager: ")) {
    return false;
  }
  Logger::Info("DXGI device manager created with reset token: " + std::to_string(resetToken_));
  return ResetDevice(*device.Get());
}

bool DeviceManager::ResetDevice(ID3D11Device& device) {
  Logger::Info("Resetting device with token: " + std::to_string(resetToken_));
  if (!SucceededOrLog(ProtectFromThreads(device), "Failed to protect device: ") ||
      !SucceededOrLog(manager_->ResetDevice(&device, resetToken_), "Failed to reset device: ")) {
    return false;
  }
  device_ = &device;
  Logger::Info("Device reset successful");
  return true;
}

void DeviceManager::Release() {
  manager_.Reset();
  device_.Reset();
}

}  // namespace brisolte
