#include "video/frame_canvas.h"

#include <array>

#include "common/given_object.h"

namespace brisolte {

HRESULT FrameCanvas::Adopt(ID3D11Device& device, ID3D11Texture2D* texture) {
  const HRESULT result =
      Given(device.CreateRenderTargetView(texture, nullptr, target_.ReleaseAndGetAddressOf()), target_);
  texture_ = SUCCEEDED(result) ? texture : nullptr;
  drawn_.reset();
  return result;
}

void FrameCanvas::Draw(ID3D11DeviceContext& context, ID3D11Texture2D* captured, const Placement& placement) {
  // Frames of the same place cover the ones before them.
  if (drawn_ != placement) {
    constexpr std::array kBlack{0.0F, 0.0F, 0.0F, 1.0F};
    context.ClearRenderTargetView(target_.Get(), kBlack.data());
    drawn_ = placement;
  }
  if (placement.size == PixelSize{}) {
    return;
  }
  const auto unsign = [](std::int32_t n) { return static_cast<UINT>(n); };
  const D3D11_BOX part{unsign(placement.source.x),
                       unsign(placement.source.y),
                       0,
                       unsign(placement.source.x + placement.size.width),
                       unsign(placement.source.y + placement.size.height),
                       1};
  context.CopySubresourceRegion(texture_.Get(), 0, unsign(placement.destination.x),
                                unsign(placement.destination.y), 0, captured, 0, &part);
}

}  // namespace brisolte
