#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "desktop/rectangle.h"
#include "encoder/video_frame.h"

struct SwsContext;

namespace brisolte {

/// Converts packed BGRA pictures of one size to NV12 on the CPU: RGB of full range to BT.709 of limited
/// range, as `VideoProcessor` does on the GPU.
class Nv12Converter {
 public:
  /// Width and height are even. Raises std::runtime_error when there is no such conversion.
  explicit Nv12Converter(PixelSize size);

  /// What it gives is valid until the next conversion. Raises std::runtime_error.
  MappedPixels Convert(const MappedPixels& bgra);

 private:
  struct FreeScaler {
    void operator()(SwsContext* scaler) const;
  };

  const PixelSize size_;
  std::unique_ptr<SwsContext, FreeScaler> scaler_;
  std::vector<std::uint8_t> packed_;
  std::vector<std::uint8_t> converted_;
};

}  // namespace brisolte
