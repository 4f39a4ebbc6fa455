#include "capture/image_area.h"

#include <algorithm>
#include <cstring>

namespace brisolte {
namespace {

constexpr std::size_t kBytesPerPixel = 4;

struct Span {
  std::uint32_t start;
  std::uint32_t length;
};

Span CropSpan(std::uint32_t imageLength, std::int32_t first, std::int32_t end) {
  const auto start = static_cast<std::uint32_t>(std::max(first, 0));
  // Unsigned differences: a start beyond the image leaves a large rest, which LiesWithin recognises.
  const std::uint32_t rest = imageLength - start;
  return {start, std::min(rest, static_cast<std::uint32_t>(end) - static_cast<std::uint32_t>(first))};
}

bool SpanLiesWithin(std::uint32_t start, std::uint32_t length, std::uint32_t imageLength) {
  return length > 0 && std::uint64_t{start} + length <= imageLength;
}

std::int32_t DrawnLength(std::int32_t image, std::int64_t content, std::int64_t visible) {
  const auto cut = [](std::int64_t length, std::int64_t limit) {
    return limit > 0 ? std::min(length, limit) : length;
  };
  return static_cast<std::int32_t>(cut(cut(image, content), visible));
}

}  // namespace

PixelSize DrawnSize(PixelSize image, PixelSize content, const std::optional<Rectangle>& visible) {
  const Rectangle shown = visible.value_or(Rectangle{});
  return {DrawnLength(image.width, content.width, shown.width()),
          DrawnLength(image.height, content.height, shown.height())};
}

ImageArea CropArea(std::uint32_t imageWidth, std::uint32_t imageHeight, const Rectangle& crop) {
  const Span across = CropSpan(imageWidth, crop.left, crop.right);
  const Span down = CropSpan(imageHeight, crop.top, crop.bottom);
  return {across.start, down.start, across.length, down.length};
}

bool LiesWithin(const ImageArea& area, std::uint32_t imageWidth, std::uint32_t imageHeight) {
  return SpanLiesWithin(area.x, area.width, imageWidth) && SpanLiesWithin(area.y, area.height, imageHeight);
}

void CopyArea(const ImagePixels& image, const ImageArea& area, std::uint8_t* destination, std::size_t pitch) {
  const std::size_t rowBytes = area.width * kBytesPerPixel;
  const std::uint8_t* source = image.bytes + area.x * kBytesPerPixel;
  for (std::size_t row = 0; row < area.height; ++row) {
    std::memcpy(destination + row * pitch, source + (area.y + row) * image.pitch, rowBytes);
  }
}

}  // namespace brisolte
