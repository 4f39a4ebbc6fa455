#pragma once

#include <wrl/client.h>

#include "encoder/mf/media_foundation.h"

namespace brisolte {

/// The device that the sink writer's encoder works on, and the manager that shares it with the encoder.
class DeviceManager {
 public:
  /// Makes a device of its own and the manager, and gives the one to the other. False with an ERROR line.
  bool Create(MediaFoundation& platform);

  /// Gives the manager another device, because a texture can only be encoded on the device it belongs to.
  /// The device is made safe for several threads first: the encoder's use it besides its owner's. False with
  /// an ERROR line; the device before is then the one still.
  bool ResetDevice(ID3D11Device& device);

  void Release();

  /// Null before `Create`.
  ID3D11Device* device() const { return device_.Get(); }
  IMFDXGIDeviceManager* manager() const { return manager_.Get(); }

 private:
  Microsoft::WRL::ComPtr<ID3D11Device> device_;
  Microsoft::WRL::ComPtr<IMFDXGIDeviceManager> manager_;
  UINT resetToken_ = 0;
};

}  // namespace brisolte
