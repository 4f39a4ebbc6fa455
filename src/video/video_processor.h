#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <cstdint>
#include <utility>

#include "video/capture_geometry.h"
#include "video/graphics_device.h"

namespace brisolte {

/// Converts textures to the encoder's layout on the GPU: RGB of full range to BT.709 of limited range, which
/// is what encoders declare in their streams.
class VideoProcessor {
 public:
  explicit VideoProcessor(Direct3D graphics) : graphics_(std::move(graphics)) {}

  HRESULT CreateEnumerator(const CaptureGeometry& geometry, std::int32_t frameRate);
  /// Needs the enumerator.
  HRESULT CreateProcessor();

  /// Converts a part of `source` into all of `destination`, in one pass. False when it cannot, with an ERROR
  /// line.
  bool ProcessVideoFormat(ID3D11Texture2D* source, const RECT& part, ID3D11Texture2D* destination);

 private:
  void Configure();
  void Blit(ID3D11Texture2D* source, const RECT& part, ID3D11Texture2D* destination);

  Direct3D graphics_;
  PixelSize frame_;
  Microsoft::WRL::ComPtr<ID3D11VideoProcessorEnumerator> enumerator_;
  Microsoft::WRL::ComPtr<ID3D11VideoProcessor> processor_;
};

}  // namespace brisolte
