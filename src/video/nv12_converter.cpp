#include "video/nv12_converter.h"

extern "C" {
#include <libswscale/swscale.h>
}

#include <array>
#include <cstddef>
#include <cstring>
#include <stdexcept>

namespace brisolte {
namespace {

constexpr std::size_t kBytesPerPixel = 4;

/// The scaler reads and writes rows in steps of its vector registers and so past a row's end; less than this.
constexpr std::size_t kSpare = 256;

void SetColours(SwsContext& scaler) {
  constexpr int kFullRange = 1;
  constexpr int kLimitedRange = 0;
  constexpr int kUnchanged = 1 << 16;
  const int* const matrix = sws_getCoefficients(SWS_CS_ITU709);
  sws_setColorspaceDetails(&scaler, matrix, kFullRange, matrix, kLimitedRange, 0, kUnchanged, kUnchanged);
}

}  // namespace

void Nv12Converter::FreeScaler::operator()(SwsContext* scaler) const {
  sws_freeContext(scaler);
}

Nv12Converter::Nv12Converter(PixelSize size)
    : size_(size),
      scaler_(sws_getContext(size.width, size.height, AV_PIX_FMT_BGRA, size.width, size.height,
                             AV_PIX_FMT_NV12, SWS_FAST_BILINEAR, nullptr, nullptr, nullptr)) {
  if (scaler_ == nullptr) {
    throw std::runtime_error("no conversion to NV12");
  }
  SetColours(*scaler_);
  const std::size_t pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
  packed_.resize(pixels * kBytesPerPixel + kSpare);
  converted_.resize(pixels + pixels / 2 + kSpare);
}

MappedPixels Nv12Converter::Convert(const MappedPixels& bgra) {
  const auto width = static_cast<std::size_t>(size_.width);
  const auto height = static_cast<std::size_t>(size_.height);
  const std::size_t rowBytes = width * kBytesPerPixel;
  // A copy, because the mapped picture may end where its last row does.
  for (std::size_t row = 0; row < height; ++row) {
    std::memcpy(packed_.data() + row * rowBytes, bgra.data + row * bgra.rowPitch, rowBytes);
  }
  const std::array<const std::uint8_t*, 4> from{packed_.data()};
  const std::array<int, 4> fromPitch{static_cast<int>(rowBytes)};
  const std::array<std::uint8_t*, 4> to{converted_.data(), converted_.data() + width * height};
  const std::array<int, 4> toPitch{size_.width, size_.width};
  if (sws_scale(scaler_.get(), from.data(), fromPitch.data(), 0, size_.height, to.data(), toPitch.data()) <=
      0) {
    throw std::runtime_error("conversion to NV12 failed");
  }
  return {converted_.data(), static_cast<std::uint32_t>(width),
          static_cast<std::uint32_t>(width * height * 3 / 2)};
}

}  // namespace brisolte
