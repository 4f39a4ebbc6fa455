#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "capture/recording_options.h"
#include "encoder/ffmpeg/ffmpeg_types.h"
#include "encoder/video_frame.h"

namespace brisolte {

/// Converts packed BGRA pictures of one size into an encoder's pixel format and size.
class BgraScaler {
 public:
  /// For pictures of one size, into frames of another.
  BgraScaler(PictureSize source, PictureSize target, AVPixelFormat format);

  /// Whether FFmpeg can convert into the format at all.
  bool usable() const { return scaler_ != nullptr; }

  /// The bytes of one source row.
  std::size_t rowBytes() const { return static_cast<std::size_t>(source_.width) * kBytesPerPixel; }

  /// Converts `pixels`, whose rows are at least `rowBytes()` apart, into the writable `frame`. Reads nothing
  /// beyond the last row's pixels. False when nothing was written.
  bool Convert(const MappedPixels& pixels, AVFrame& frame);

 private:
  static constexpr std::size_t kBytesPerPixel = 4;

  int ConvertRows(const std::uint8_t* data, int stride, int firstRow, int rows, AVFrame& frame);

  PictureSize source_;
  ScalerPtr scaler_;
  std::vector<std::uint8_t> lastRows_;
};

}  // namespace brisolte
