#include "support/pictures.h"

#include <algorithm>
#include <cmath>

namespace brisolte::testing {
namespace {

struct Weights {
  double red;
  double blue;
};

Weights WeightsOf(ColourRule rule) {
  return rule == ColourRule::kBt709Limited ? Weights{0.2126, 0.0722} : Weights{0.299, 0.114};
}

double LumaScale(ColourRule rule) {
  return rule == ColourRule::kBt709Limited ? 219.0 / 255.0 : 1.0;
}
double ChromaScale(ColourRule rule) {
  return rule == ColourRule::kBt709Limited ? 224.0 / 255.0 : 1.0;
}
double LumaOffset(ColourRule rule) {
  return rule == ColourRule::kBt709Limited ? 16.0 : 0.0;
}

std::uint8_t Byte(double value) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

}  // namespace

Yuv ToYuv(const Rgb& colour, ColourRule rule) {
  const auto [kr, kb] = WeightsOf(rule);
  const double y = kr * colour.red + (1 - kr - kb) * colour.green + kb * colour.blue;
  const double u = (colour.blue - y) / (2 * (1 - kb));
  const double v = (colour.red - y) / (2 * (1 - kr));
  return {LumaOffset(rule) + y * LumaScale(rule), 128 + u * ChromaScale(rule), 128 + v * ChromaScale(rule)};
}

Rgb ToRgb(const Yuv& colour, ColourRule rule) {
  const auto [kr, kb] = WeightsOf(rule);
  const double y = (colour.y - LumaOffset(rule)) / LumaScale(rule);
  const double red = y + 2 * (1 - kr) * (colour.v - 128) / ChromaScale(rule);
  const double blue = y + 2 * (1 - kb) * (colour.u - 128) / ChromaScale(rule);
  return {red, (y - kr * red - kb * blue) / (1 - kr - kb), blue};
}

Picture::Picture(Layout layout, std::uint32_t width, std::uint32_t height, const Rgb& colour,
                 std::uint32_t padding)
    : layout_(layout),
      width_(width),
      height_(layout == Layout::kNv12 ? height - height % 2 : height),
      pitch_((layout == Layout::kNv12 ? width + width % 2 : 4 * width) + padding) {
  const std::size_t rows = layout == Layout::kNv12 ? height_ + height_ / 2 : height_;
  bytes_.resize(rows * pitch_ - padding);
  Paint(0, 0, width_, height_, colour);
}

void Picture::Paint(std::uint32_t left, std::uint32_t top, std::uint32_t width, std::uint32_t height,
                    const Rgb& colour) {
  for (std::uint32_t y = top; y < std::min(top + height, height_); ++y) {
    for (std::uint32_t x = left; x < std::min(left + width, width_); ++x) {
      PaintPixel(x, y, colour);
    }
  }
}

void Picture::PaintPixel(std::uint32_t x, std::uint32_t y, const Rgb& colour) {
  const std::size_t row = std::size_t{y} * pitch_;
  if (layout_ == Layout::kBgra) {
    std::uint8_t* const pixel = &bytes_[row + std::size_t{4} * x];
    pixel[0] = Byte(colour.blue);
    pixel[1] = Byte(colour.green);
    pixel[2] = Byte(colour.red);
    pixel[3] = 255;
    return;
  }
  const Yuv yuv = ToYuv(colour, ColourRule::kBt709Limited);
  bytes_[row + x] = Byte(yuv.y);
  std::uint8_t* const pair = &bytes_[std::size_t{height_ + y / 2} * pitch_ + x - x % 2];
  pair[0] = Byte(yuv.u);
  pair[1] = Byte(yuv.v);
}

VideoFrame Picture::Frame(std::int64_t milliseconds) const {
  VideoFrame frame;
  frame.pixels = {bytes_.data(), pitch_, static_cast<std::uint32_t>(bytes_.size())};
  frame.timestamp = milliseconds;
  frame.mapped = true;
  return frame;
}

Picture FourColours(Picture::Layout layout, std::uint32_t width, std::uint32_t height) {
  const std::uint32_t halfWidth = width / 4 * 2;
  const std::uint32_t halfHeight = height / 4 * 2;
  Picture picture(layout, width, height, kFourColours[3], 16);
  picture.Paint(0, 0, halfWidth, halfHeight, kFourColours[0]);
  picture.Paint(halfWidth, 0, width, halfHeight, kFourColours[1]);
  picture.Paint(0, halfHeight, halfWidth, height, kFourColours[2]);
  return picture;
}

}  // namespace brisolte::testing
