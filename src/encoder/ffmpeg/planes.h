#pragma once

#include <cstddef>
#include <cstdint>

namespace brisolte {

/// A plane to read: rows of bytes, `stride` apart.
struct SourcePlane {
  const std::uint8_t* data;
  std::size_t stride;
};

/// A plane to write.
struct TargetPlane {
  std::uint8_t* data;
  std::size_t stride;
};

/// Copies `rows` rows of `rowBytes` bytes.
void CopyPlane(SourcePlane source, TargetPlane target, std::size_t rowBytes, std::size_t rows);

/// Copies the interleaved chroma of an NV12 picture `width` pixels wide, whole pairs only: the target's rows
/// hold `width` bytes rounded up to even. Of the source's last row only `width` bytes are read; where that
/// cuts the last pair of an odd width in two, its second byte is that of the pair before it (neutral if there
/// is none).
void CopyInterleavedChroma(SourcePlane source, TargetPlane target, std::size_t width, std::size_t rows);

/// Separates the interleaved chroma of an NV12 picture into two planes with half as many columns, rounded up.
/// Reads what `CopyInterleavedChroma` reads.
void SplitInterleavedChroma(SourcePlane source, TargetPlane u, TargetPlane v, std::size_t width,
                            std::size_t rows);

}  // namespace brisolte
