#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <optional>

#include "video/capture_geometry.h"

namespace brisolte {

/// A packed texture of the frame's size that shows what is visible of a captured one, and black where nothing
/// is.
class FrameCanvas {
 public:
  /// Draws on this texture from now on, which has the format of captured ones and is a render target.
  HRESULT Adopt(ID3D11Device& device, ID3D11Texture2D* texture);

  ID3D11Texture2D* texture() const { return texture_.Get(); }

  void Draw(ID3D11DeviceContext& context, ID3D11Texture2D* captured, const Placement& placement);

 private:
  Microsoft::WRL::ComPtr<ID3D11Texture2D> texture_;
  Microsoft::WRL::ComPtr<ID3D11RenderTargetView> target_;
  std::optional<Placement> drawn_;
};

}  // namespace brisolte
