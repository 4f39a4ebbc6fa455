#pragma once

#include <cstdint>
#include <span>

namespace brisolte {

/// The known picture: four coloured quarters, a ruler along the edges, and two lanes in which a block moves
/// that shows the picture's number in black and white cells. tests/js/support/pattern.js describes the same
/// picture to the tests.
///
/// The number is shown in several places, far apart, so that a picture made of parts of two others is
/// noticed.
class Picture {
 public:
  Picture(int width, int height, int palette);

  /// Paints everything but the lanes' content. `pixels` are width by height, top row first, 0x00RRGGBB.
  void PaintStill(std::span<std::uint32_t> pixels) const;

  /// Paints both lanes with the blocks of picture `number`.
  void PaintNumber(std::span<std::uint32_t> pixels, std::uint32_t number) const;

  /// The rows that `PaintNumber` touches, from the first to one past the last; equal when the picture has no
  /// lanes.
  [[nodiscard]] int FirstLaneRow() const;
  [[nodiscard]] int EndLaneRow() const;

 private:
  [[nodiscard]] std::uint32_t StillColour(int x, int y) const;
  void Fill(std::span<std::uint32_t> pixels, int left, int top, int width, int height,
            std::uint32_t colour) const;
  void PaintLane(std::span<std::uint32_t> pixels, int top, std::uint32_t number) const;
  void PaintBlock(std::span<std::uint32_t> pixels, int left, int top, std::uint32_t code) const;
  [[nodiscard]] int Tracks() const;
  [[nodiscard]] int Positions() const;

  int width_;
  int height_;
  int palette_;
};

}  // namespace brisolte
