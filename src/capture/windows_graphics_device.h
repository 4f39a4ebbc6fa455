#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <memory>

#include "capture/recording_parts.h"

namespace brisolte {

/// A Direct3D 11 device with its immediate context, which is released first. Windows only.
class WindowsGraphicsDevice final : public GraphicsDevice {
 public:
  /// A device on the default adapter's hardware; null when there is none.
  static std::unique_ptr<WindowsGraphicsDevice> Create();

  ID3D11Device& device() const { return *device_.Get(); }
  ID3D11DeviceContext& context() const { return *context_.Get(); }

 private:
  Microsoft::WRL::ComPtr<ID3D11Device> device_;
  Microsoft::WRL::ComPtr<ID3D11DeviceContext> context_;
};

}  // namespace brisolte
