#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "encoder/video_frame.h"

namespace brisolte::testing {

/// A colour as screens show it, 0 to 255 each.
struct Rgb {
  double red = 0;
  double green = 0;
  double blue = 0;
};

/// A colour as video holds it, in 8-bit steps.
struct Yuv {
  double y = 0;
  double u = 0;
  double v = 0;
};

/// Which of the two conversions a picture follows.
enum class ColourRule { kBt709Limited, kBt601Full };

Yuv ToYuv(const Rgb& colour, ColourRule rule);
Rgb ToRgb(const Yuv& colour, ColourRule rule);

/// Pixels in memory that ends right after them, filled with one colour, to be painted on.
class Picture {
 public:
  enum class Layout { kNv12, kBgra };

  /// NV12 pictures have `height` rounded down to even. `padding`: unused bytes after each row but the last.
  Picture(Layout layout, std::uint32_t width, std::uint32_t height, const Rgb& colour,
          std::uint32_t padding = 0);

  /// Paints a rectangle; in NV12 its edges are best even.
  void Paint(std::uint32_t left, std::uint32_t top, std::uint32_t width, std::uint32_t height,
             const Rgb& colour);

  /// The picture as captured at a time; valid as long as this object.
  VideoFrame Frame(std::int64_t milliseconds) const;

  const std::vector<std::uint8_t>& bytes() const { return bytes_; }
  std::uint32_t rowPitch() const { return pitch_; }

 private:
  void PaintPixel(std::uint32_t x, std::uint32_t y, const Rgb& colour);

  Layout layout_;
  std::uint32_t width_;
  std::uint32_t height_;
  std::uint32_t pitch_;
  std::vector<std::uint8_t> bytes_;
};

/// Red, green, blue and light grey in the four quarters.
Picture FourColours(Picture::Layout layout, std::uint32_t width, std::uint32_t height);

/// The colours of `FourColours`, left to right and top to bottom.
inline constexpr std::array<Rgb, 4> kFourColours{
    {{200, 30, 30}, {30, 160, 40}, {40, 50, 210}, {220, 220, 220}}};

}  // namespace brisolte::testing
