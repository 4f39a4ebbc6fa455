#include "moving_pictures.h"

#include <cstring>
#include <random>
#include <stdexcept>

namespace brisolte::bench {
namespace {

constexpr std::uint32_t kBandRows = 90;
constexpr std::uint32_t kSpeeds = 5;  // bands move by 0, 2, 4, 6 and 8 pixels a picture
constexpr std::uint32_t kGrid = 16;   // pixels between the points of the texture

/// A plane of bytes, wider than the picture, of which each picture shows a part.
struct Texture {
  std::size_t rowBytes;
  std::vector<std::uint8_t> bytes;
};

/// Soft shapes with a little grain; `step` bytes a pixel, each channel its own.
Texture MakeTexture(std::size_t pixels, std::size_t rows, std::size_t step, std::uint32_t seed) {
  std::mt19937 random(seed);
  const std::size_t gridPixels = pixels / kGrid + 2;
  std::vector<int> grid(gridPixels * (rows / kGrid + 2) * step);
  for (int& point : grid) {
    point = 40 + static_cast<int>(random() % 170);
  }
  Texture texture{pixels * step, std::vector<std::uint8_t>(pixels * step * rows)};
  for (std::size_t y = 0; y < rows; ++y) {
    for (std::size_t x = 0; x < pixels; ++x) {
      const auto fx = static_cast<int>(x % kGrid);
      const auto fy = static_cast<int>(y % kGrid);
      const int size = kGrid;
      const int grain = static_cast<int>(random() % 5) - 2;
      for (std::size_t channel = 0; channel < step; ++channel) {
        const auto at = [&](std::size_t dx, std::size_t dy) {
          return grid[((y / kGrid + dy) * gridPixels + x / kGrid + dx) * step + channel];
        };
        const int top = at(0, 0) * (size - fx) + at(1, 0) * fx;
        const int bottom = at(0, 1) * (size - fx) + at(1, 1) * fx;
        const int value = (top * (size - fy) + bottom * fy) / (size * size) + grain;
        texture.bytes[y * texture.rowBytes + x * step + channel] = static_cast<std::uint8_t>(value);
      }
    }
  }
  return texture;
}

/// Shows rows of a texture, each band as far along as picture `number` has it. `bytesPerStep`: bytes of two
/// pixels.
void Show(const Texture& texture, std::size_t number, std::size_t bandRows, std::size_t bytesPerStep,
          std::uint8_t* target, std::size_t rowBytes, std::size_t rows) {
  for (std::size_t row = 0; row < rows; ++row) {
    const std::size_t along = number * (row / bandRows % kSpeeds) * bytesPerStep;
    std::memcpy(target + row * rowBytes, texture.bytes.data() + row * texture.rowBytes + along, rowBytes);
  }
}

}  // namespace

MovingPictures::MovingPictures(Layout layout, std::uint32_t width, std::uint32_t height, std::size_t count)
    : rowPitch_(layout == Layout::kNv12 ? width : width * 4) {
  const std::size_t pixels = width + std::size_t{2} * (kSpeeds - 1) * count;
  const bool nv12 = layout == Layout::kNv12;
  const Texture first = MakeTexture(pixels, height, nv12 ? 1 : 4, 1);
  const Texture chroma = nv12 ? MakeTexture(pixels / 2, height / 2, 2, 2) : Texture{0, {}};
  for (std::size_t number = 0; number < count; ++number) {
    const std::size_t bytes = std::size_t{rowPitch_} * height;
    auto& picture = pictures_.emplace_back(nv12 ? bytes * 3 / 2 : bytes);
    Show(first, number, kBandRows, nv12 ? 2 : 8, picture.data(), rowPitch_, height);
    if (nv12) {
      Show(chroma, number, kBandRows / 2, 2, picture.data() + bytes, rowPitch_, height / 2);
    }
  }
}

VideoFrame MovingPictures::Frame(std::size_t number) const {
  VideoFrame frame;
  frame.pixels = {Picture(number), rowPitch_, static_cast<std::uint32_t>(pictureBytes())};
  frame.timestamp = static_cast<std::int64_t>(number) * 1000 / 30;
  frame.duration = 33;
  frame.mapped = true;
  return frame;
}

MovingPictures::Layout LayoutNamed(const std::string& name) {
  if (name == "nv12" || name == "yuv420p") {
    return MovingPictures::Layout::kNv12;
  }
  if (name == "bgra") {
    return MovingPictures::Layout::kBgra;
  }
  throw std::invalid_argument("no layout is called " + name);
}

}  // namespace brisolte::bench
