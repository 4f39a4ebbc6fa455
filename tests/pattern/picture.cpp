#include "picture.h"

#include <algorithm>
#include <array>

namespace brisolte {
namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr std::uint32_t kBlack = 0x000000;
constexpr std::uint32_t kGrey = 0x808080;
constexpr std::array<std::uint32_t, 4> kQuarters{0xE02020, 0x20C040, 0x2040E0, 0xE0D020};

constexpr int kRuler = 16;  // breadth of the ruler and length of its cells
constexpr int kLaneHeight = 32;
constexpr int kCell = 16;
constexpr int kDigits = 12;
constexpr int kBlockWidth = (kDigits + 2) * kCell;  // the digits between a white and a black guard
constexpr int kStep = 8;
constexpr int kTrack = 320;  // a block and the room in which it moves; a wide lane holds several alike
constexpr std::uint32_t kNumbers = 1U << kDigits;
constexpr int kSmallestHeight = 128;

std::uint32_t RulerColour(int along) {
  return (along / kRuler) % 2 == 0 ? kWhite : kBlack;
}

}  // namespace

Picture::Picture(int width, int height, int palette) : width_(width), height_(height), palette_(palette) {}

void Picture::PaintStill(std::span<std::uint32_t> pixels) const {
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      pixels[static_cast<std::size_t>(y) * width_ + x] = StillColour(x, y);
    }
  }
}

void Picture::PaintNumber(std::span<std::uint32_t> pixels, std::uint32_t number) const {
  if (Positions() < 1) {
    return;
  }
  PaintLane(pixels, FirstLaneRow(), number % kNumbers);
  PaintLane(pixels, EndLaneRow() - kLaneHeight, number % kNumbers);
}

int Picture::FirstLaneRow() const {
  return Positions() < 1 ? 0 : height_ / 4 - kLaneHeight / 2;
}

int Picture::EndLaneRow() const {
  return Positions() < 1 ? 0 : height_ - height_ / 4 + kLaneHeight / 2;
}

std::uint32_t Picture::StillColour(int x, int y) const {
  if (y < kRuler || y >= height_ - kRuler) {
    return RulerColour(x);
  }
  if (x < kRuler || x >= width_ - kRuler) {
    return RulerColour(y);
  }
  const int quarter = (y < height_ / 2 ? 0 : 2) + (x < width_ / 2 ? 0 : 1);
  return kQuarters[static_cast<std::size_t>(quarter + palette_) % kQuarters.size()];
}

void Picture::Fill(std::span<std::uint32_t> pixels, int left, int top, int width, int height,
                   std::uint32_t colour) const {
  for (int y = top; y < top + height; ++y) {
    std::ranges::fill(
        pixels.subspan(static_cast<std::size_t>(y) * width_ + left, static_cast<std::size_t>(width)), colour);
  }
}

void Picture::PaintLane(std::span<std::uint32_t> pixels, int top, std::uint32_t number) const {
  Fill(pixels, kRuler, top, width_ - 2 * kRuler, kLaneHeight, kGrey);
  // In the Gray code one digit differs between neighbours: a blend of two pictures shows one grey digit, not
  // nonsense.
  const std::uint32_t code = number ^ (number >> 1U);
  const int offset = kRuler + kStep * static_cast<int>(number % static_cast<std::uint32_t>(Positions()));
  for (int track = 0; track < Tracks(); ++track) {
    PaintBlock(pixels, offset + track * kTrack, top + (kLaneHeight - kCell) / 2, code);
  }
}

void Picture::PaintBlock(std::span<std::uint32_t> pixels, int left, int top, std::uint32_t code) const {
  Fill(pixels, left, top, kCell, kCell, kWhite);
  for (int digit = 0; digit < kDigits; ++digit) {
    const bool set = (code >> static_cast<unsigned>(kDigits - 1 - digit)) % 2 == 1;
    Fill(pixels, left + (digit + 1) * kCell, top, kCell, kCell, set ? kWhite : kBlack);
  }
  Fill(pixels, left + (kDigits + 1) * kCell, top, kCell, kCell, kBlack);
}

int Picture::Tracks() const {
  return std::max(1, (width_ - 2 * kRuler) / kTrack);
}

int Picture::Positions() const {
  const int room = std::min(width_ - 2 * kRuler, kTrack) - kBlockWidth;
  return room < 0 || height_ < kSmallestHeight ? 0 : room / kStep + 1;
}

}  // namespace brisolte
