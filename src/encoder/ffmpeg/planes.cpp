#include "encoder/ffmpeg/planes.h"

#include <cstring>

namespace brisolte {
namespace {

constexpr std::uint8_t kNeutralChroma = 128;

/// The second byte of the last pair of a row with an odd `width`.
std::uint8_t LastPairV(const std::uint8_t* row, std::size_t width, bool pairIsWhole) {
  if (pairIsWhole) {
    return row[width];
  }
  return width > 1 ? row[width - 2] : kNeutralChroma;
}

/// Whether the byte after the first `width` of a row belongs to that row and to memory that can be read.
bool HasByteAfterWidth(const SourcePlane& source, std::size_t width, std::size_t row, std::size_t rows) {
  return source.stride > width && row + 1 < rows;
}

}  // namespace

void CopyPlane(SourcePlane source, TargetPlane target, std::size_t rowBytes, std::size_t rows) {
  for (std::size_t row = 0; row < rows; ++row) {
    std::memcpy(target.data + row * target.stride, source.data + row * source.stride, rowBytes);
  }
}

void CopyInterleavedChroma(SourcePlane source, TargetPlane target, std::size_t width, std::size_t rows) {
  CopyPlane(source, target, width, rows);
  if (width % 2 == 0) {
    return;
  }
  for (std::size_t row = 0; row < rows; ++row) {
    target.data[row * target.stride + width] =
        LastPairV(source.data + row * source.stride, width, HasByteAfterWidth(source, width, row, rows));
  }
}

void SplitInterleavedChroma(SourcePlane source, TargetPlane u, TargetPlane v, std::size_t width,
                            std::size_t rows) {
  const std::size_t wholePairs = width / 2;
  for (std::size_t row = 0; row < rows; ++row) {
    const std::uint8_t* const from = source.data + row * source.stride;
    std::uint8_t* const toU = u.data + row * u.stride;
    std::uint8_t* const toV = v.data + row * v.stride;
    for (std::size_t pair = 0; pair < wholePairs; ++pair) {
      toU[pair] = from[2 * pair];
      toV[pair] = from[2 * pair + 1];
    }
    if (width % 2 != 0) {
      toU[wholePairs] = from[width - 1];
      toV[wholePairs] = LastPairV(from, width, HasByteAfterWidth(source, width, row, rows));
    }
  }
}

}  // namespace brisolte
