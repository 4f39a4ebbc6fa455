#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace brisolte::standins {

enum class Matrix { kBt601, kBt709 };
enum class Range { kLimited, kFull };

struct Rectangle {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  [[nodiscard]] int width() const { return right - left; }
  [[nodiscard]] int height() const { return bottom - top; }
  friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

/// The part that two rectangles share; empty ones have no width or no height.
Rectangle Intersection(const Rectangle& one, const Rectangle& other);

/// A packed BGRA picture in memory that somebody else owns.
struct BgraPicture {
  const std::uint8_t* pixels = nullptr;
  std::size_t pitch = 0;
};

/// An NV12 picture in memory that somebody else owns: luma, then chroma in pairs for every second row and
/// column.
struct Nv12Picture {
  std::uint8_t* luma = nullptr;
  std::uint8_t* chroma = nullptr;
  std::size_t pitch = 0;
};

/// Turns 8-bit RGB of one range into YCbCr of one matrix and range. Grey has no colour, black and white are
/// exact.
class RgbToYcbcr {
 public:
  RgbToYcbcr(Matrix matrix, Range input, Range output);

  /// Converts two rows of an even number of BGRA pixels; chroma is that of the mean of each block of four.
  void ConvertRows(const std::uint8_t* upper, const std::uint8_t* lower, int pixels, std::uint8_t* upperLuma,
                   std::uint8_t* lowerLuma, std::uint8_t* chroma) const;

 private:
  // Fixed point with 15 bits behind the point, so that each fits the factors of a 16-bit multiplication.
  struct Weights {
    int red = 0;
    int green = 0;
    int blue = 0;
    int bias = 0;
  };

  Weights y_, cb_, cr_;
};

/// The rows of a picture put together from a piece of another one, scaled by nearest neighbour, on a
/// background.
class ComposedRows {
 public:
  /// `source` is shown at `destination`; rows cover `target`. Background is one BGRA pixel.
  ComposedRows(const BgraPicture& picture, const Rectangle& source, const Rectangle& destination,
               const Rectangle& target, std::uint32_t background);

  /// The row `y` of the output, from the target's left edge. It stays valid until the next but one call.
  const std::uint8_t* Row(int y);

 private:
  [[nodiscard]] const std::uint8_t* SourceRow(int y) const;
  void FillPiece(const std::uint8_t* from, std::uint32_t* row) const;

  BgraPicture picture_;
  Rectangle source_;
  Rectangle destination_;
  Rectangle target_;
  std::uint32_t background_;
  std::array<std::vector<std::uint32_t>, 2> rows_;
  std::size_t next_ = 0;
};

}  // namespace brisolte::standins
