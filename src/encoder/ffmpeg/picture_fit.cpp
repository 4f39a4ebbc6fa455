#include "encoder/ffmpeg/picture_fit.h"

#include <algorithm>
#include <cstdint>

namespace brisolte {
namespace {

/// Chroma has half the size.
std::int32_t EvenDown(std::int64_t length) {
  return static_cast<std::int32_t>(std::max<std::int64_t>(length - length % 2, 2));
}

}  // namespace

PictureSize FitInto(PictureSize source, PictureSize largest) {
  if (source.width <= largest.width && source.height <= largest.height) {
    return source;
  }
  const auto width = std::int64_t{source.width};
  const auto height = std::int64_t{source.height};
  const bool widthDecides = width * largest.height >= height * largest.width;
  return widthDecides ? PictureSize{EvenDown(largest.width), EvenDown(height * largest.width / width)}
                      : PictureSize{EvenDown(width * largest.height / height), EvenDown(largest.height)};
}

}  // namespace brisolte
