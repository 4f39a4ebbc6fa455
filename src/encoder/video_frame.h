#pragma once

#include <cstdint>
#include <memory>

struct ID3D11Texture2D;

namespace brisolte {

/// One counted reference to a texture, given back by the function it carries; this header needs no Direct3D
/// for it.
using TextureReference = std::unique_ptr<ID3D11Texture2D, void (*)(ID3D11Texture2D*)>;

/// Pixels in system memory that somebody else keeps mapped. NV12: `height` rows of luma, then the rows of
/// interleaved chroma, all `rowPitch` apart; otherwise packed BGRA. The last row may end right after its
/// pixels.
struct MappedPixels {
  const std::uint8_t* data = nullptr;
  std::uint32_t rowPitch = 0;    ///< bytes from one row to the next
  std::uint32_t depthPitch = 0;  ///< bytes of the whole picture
};

/// One captured frame on its way into an encoder. Its pixels are valid until `ProcessFrameAsync` returns.
struct VideoFrame {
  TextureReference texture{nullptr, [](ID3D11Texture2D*) {}};  ///< the frame on the GPU; may be empty
  MappedPixels pixels;
  std::int64_t timestamp = 0;  ///< milliseconds since the recording's first frame
  std::int64_t duration = 0;   ///< milliseconds since the accepted frame before
  bool mapped = false;         ///< `pixels` is valid
  std::int64_t delay = 0;      ///< milliseconds from its capture to its delivery; 0 also when unknown
};

}  // namespace brisolte
