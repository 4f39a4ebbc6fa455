#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "desktop/rectangle.h"

namespace brisolte {

/// Pixels of four bytes each in somebody else's memory.
struct ImagePixels {
  const std::uint8_t* bytes = nullptr;
  std::uint32_t pitch = 0;  ///< bytes from a row to the next
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// A part of an image in pixels, from its top left corner.
struct ImageArea {
  std::uint32_t x = 0;
  std::uint32_t y = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;

  friend bool operator==(const ImageArea&, const ImageArea&) = default;
};

/// How much of an image of this size is drawn, from its top left corner. `content` is what the service says
/// of it, `visible` where the window is drawn on the desktop, if it is one and that is known.
///
/// Both are needed: some systems make a window's pictures as large as its frame with invisible borders, which
/// stay black right and below, and count them as content of the first picture. A content without a size
/// counts as unknown.
PixelSize DrawnSize(PixelSize image, PixelSize content, const std::optional<Rectangle>& visible);

/// What a rectangle cuts out of an image of this size. One that begins left of the image or above it keeps
/// its size and is moved to the edge; one that begins beyond the image gives an area that is not within it.
ImageArea CropArea(std::uint32_t imageWidth, std::uint32_t imageHeight, const Rectangle& crop);

/// Whether there is anything in the area and all of it is in the image.
bool LiesWithin(const ImageArea& area, std::uint32_t imageWidth, std::uint32_t imageHeight);

/// Copies the rows of an area that lies within the image to `destination`, whose rows are `pitch` bytes apart
/// and hold at least the area's width.
void CopyArea(const ImagePixels& image, const ImageArea& area, std::uint8_t* destination, std::size_t pitch);

}  // namespace brisolte
