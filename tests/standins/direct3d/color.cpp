#include "direct3d/color.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace brisolte::standins {

namespace {

constexpr double kOne = 65536.0;

std::uint8_t Byte(int value) {
  return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

int Fixed(double value) {
  return static_cast<int>(std::lround(value * kOne));
}

}  // namespace

Rectangle Intersection(const Rectangle& one, const Rectangle& other) {
  Rectangle shared{std::max(one.left, other.left), std::max(one.top, other.top),
                   std::min(one.right, other.right), std::min(one.bottom, other.bottom)};
  shared.right = std::max(shared.left, shared.right);
  shared.bottom = std::max(shared.top, shared.bottom);
  return shared;
}

RgbToYcbcr::RgbToYcbcr(Matrix matrix, Range input, Range output) {
  const double kr = matrix == Matrix::kBt709 ? 0.2126 : 0.299;
  const double kb = matrix == Matrix::kBt709 ? 0.0722 : 0.114;
  const double spread = input == Range::kLimited ? 255.0 / 219.0 : 1.0;
  const double black = input == Range::kLimited ? 16.0 : 0.0;
  const double luma = (output == Range::kLimited ? 219.0 / 255.0 : 1.0) * spread;
  const double chroma = (output == Range::kLimited ? 224.0 / 255.0 : 1.0) * spread;

  yRed_ = Fixed(kr * luma);
  yBlue_ = Fixed(kb * luma);
  yGreen_ = Fixed(luma) - yRed_ - yBlue_;
  yBias_ = Fixed((output == Range::kLimited ? 16.0 : 0.0) - luma * black + 0.5);
  cbBlue_ = Fixed(0.5 * chroma);
  cbRed_ = Fixed(-0.5 * kr / (1.0 - kb) * chroma);
  cbGreen_ = -cbBlue_ - cbRed_;
  crRed_ = Fixed(0.5 * chroma);
  crBlue_ = Fixed(-0.5 * kb / (1.0 - kr) * chroma);
  crGreen_ = -crRed_ - crBlue_;
}

std::uint8_t RgbToYcbcr::Luma(const std::uint8_t* bgra) const {
  return Byte((yBlue_ * bgra[0] + yGreen_ * bgra[1] + yRed_ * bgra[2] + yBias_) >> 16);
}

void RgbToYcbcr::ConvertRows(const std::uint8_t* upper, const std::uint8_t* lower, int pixels,
                             std::uint8_t* upperLuma, std::uint8_t* lowerLuma, std::uint8_t* chroma) const {
  // Four pixels are summed, so the mean has two more bits behind the point.
  constexpr int kBias = (128 << 18) + (1 << 17);
  for (int x = 0; x < pixels; x += 2) {
    const std::uint8_t* a = upper + static_cast<std::ptrdiff_t>(x) * 4;
    const std::uint8_t* b = lower + static_cast<std::ptrdiff_t>(x) * 4;
    upperLuma[x] = Luma(a);
    upperLuma[x + 1] = Luma(a + 4);
    lowerLuma[x] = Luma(b);
    lowerLuma[x + 1] = Luma(b + 4);
    const int blue = a[0] + a[4] + b[0] + b[4];
    const int green = a[1] + a[5] + b[1] + b[5];
    const int red = a[2] + a[6] + b[2] + b[6];
    chroma[x] = Byte((cbBlue_ * blue + cbGreen_ * green + cbRed_ * red + kBias) >> 18);
    chroma[x + 1] = Byte((crBlue_ * blue + crGreen_ * green + crRed_ * red + kBias) >> 18);
  }
}

ComposedRows::ComposedRows(const BgraPicture& picture, const Rectangle& source, const Rectangle& destination,
                           const Rectangle& target, std::uint32_t background)
    : picture_(picture),
      source_(source),
      destination_(destination),
      target_(target),
      background_(background) {
  for (auto& row : rows_) {
    row.resize(static_cast<std::size_t>(target.width()));
  }
}

const std::uint8_t* ComposedRows::Row(int y) {
  const bool within = y >= destination_.top && y < destination_.bottom && destination_.width() > 0;
  const std::uint8_t* from = within ? SourceRow(y) : nullptr;
  const bool whole = destination_.left == target_.left && destination_.right == target_.right;
  if (within && whole && source_.width() == destination_.width()) {
    return from + static_cast<std::ptrdiff_t>(source_.left) * 4;
  }
  auto& row = rows_[next_];
  next_ = 1 - next_;
  std::fill(row.begin(), row.end(), background_);
  if (within) {
    FillPiece(from, row.data());
  }
  return reinterpret_cast<const std::uint8_t*>(row.data());
}

const std::uint8_t* ComposedRows::SourceRow(int y) const {
  const std::int64_t step = y - destination_.top;
  const std::int64_t row = source_.top + step * source_.height() / destination_.height();
  return picture_.pixels + static_cast<std::size_t>(row) * picture_.pitch;
}

void ComposedRows::FillPiece(const std::uint8_t* from, std::uint32_t* row) const {
  const Rectangle shown = Intersection(destination_, target_);
  for (int x = shown.left; x < shown.right; ++x) {
    const std::int64_t step = x - destination_.left;
    const std::int64_t column = source_.left + step * source_.width() / destination_.width();
    std::memcpy(row + (x - target_.left), from + column * 4, 4);
  }
}

}  // namespace brisolte::standins
