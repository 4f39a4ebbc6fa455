#include "capture/canvas.h"

#include <algorithm>

namespace brisolte::standins {

namespace {
constexpr std::uint32_t kOpaque = 0xFF000000;
}

Canvas::Canvas(abi::SizeInt32 size) : size_(size) {
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(info.bmiHeader), size.Width, -size.Height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void* memory = nullptr;
  bitmap_.reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &memory, nullptr, 0));
  dc_.reset(CreateCompatibleDC(nullptr));
  if (bitmap_ && dc_) {
    SelectObject(dc_.get(), bitmap_.get());
    pixels_ = static_cast<std::uint32_t*>(memory);
    Blacken();
  }
}

bool Canvas::Draw(const CaptureTarget& target, abi::SizeInt32 content) {
  const abi::SizeInt32 visible{std::min(content.Width, size_.Width), std::min(content.Height, size_.Height)};
  if (visible.Width < content_.Width || visible.Height < content_.Height) {
    Blacken();
  }
  content_ = visible;
  const bool drawn = target.CopyTo(dc_.get(), visible);
  GdiFlush();
  return drawn;
}

void Canvas::Fill(const RECT& place, std::uint32_t colour) {
  const LONG left = std::clamp<LONG>(place.left, 0, content_.Width);
  const LONG right = std::clamp<LONG>(place.right, left, content_.Width);
  for (LONG row = std::max<LONG>(place.top, 0); row < std::min<LONG>(place.bottom, content_.Height); ++row) {
    std::fill_n(pixels_ + static_cast<std::ptrdiff_t>(row) * size_.Width + left, right - left, colour);
  }
}

bool Canvas::FinishAndCompare(const Canvas& other) {
  std::uint32_t difference = 0;
  for (std::size_t i = 0, count = PixelCount(); i < count; ++i) {
    pixels_[i] |= kOpaque;
    difference |= pixels_[i] ^ other.pixels_[i];
  }
  return difference != 0;
}

std::size_t Canvas::PixelCount() const {
  return static_cast<std::size_t>(size_.Width) * static_cast<std::size_t>(size_.Height);
}

void Canvas::Blacken() {
  std::fill_n(pixels_, PixelCount(), kOpaque);
}

}  // namespace brisolte::standins
