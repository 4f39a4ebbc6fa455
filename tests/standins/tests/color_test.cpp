#include "direct3d/color.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace brisolte::standins {

namespace {

struct Ycbcr {
  int y, cb, cr;
  friend bool operator==(const Ycbcr&, const Ycbcr&) = default;
  friend void PrintTo(const Ycbcr& color, std::ostream* out) {
    *out << color.y << ' ' << color.cb << ' ' << color.cr;
  }
};

Ycbcr Convert(const RgbToYcbcr& convert, int red, int green, int blue) {
  std::array<std::uint8_t, 8> row{};
  for (std::size_t x = 0; x < 8; x += 4) {
    row[x] = static_cast<std::uint8_t>(blue);
    row[x + 1] = static_cast<std::uint8_t>(green);
    row[x + 2] = static_cast<std::uint8_t>(red);
  }
  std::array<std::uint8_t, 6> out{};
  convert.ConvertRows(row.data(), row.data(), 2, out.data(), out.data() + 2, out.data() + 4);
  return {out[0], out[4], out[5]};
}

// Values of the colours as the two recommendations give them.
TEST(RgbToYcbcr, FollowsBt601) {
  const RgbToYcbcr convert(Matrix::kBt601, Range::kFull, Range::kLimited);
  EXPECT_EQ(Convert(convert, 0, 0, 0), (Ycbcr{16, 128, 128}));
  EXPECT_EQ(Convert(convert, 255, 255, 255), (Ycbcr{235, 128, 128}));
  EXPECT_EQ(Convert(convert, 255, 0, 0), (Ycbcr{81, 90, 240}));
  EXPECT_EQ(Convert(convert, 0, 255, 0), (Ycbcr{145, 54, 34}));
  EXPECT_EQ(Convert(convert, 0, 0, 255), (Ycbcr{41, 240, 110}));
}

TEST(RgbToYcbcr, FollowsBt709) {
  const RgbToYcbcr convert(Matrix::kBt709, Range::kFull, Range::kLimited);
  EXPECT_EQ(Convert(convert, 255, 0, 0), (Ycbcr{63, 102, 240}));
  EXPECT_EQ(Convert(convert, 0, 255, 0), (Ycbcr{173, 42, 26}));
  EXPECT_EQ(Convert(convert, 0, 0, 255), (Ycbcr{32, 240, 118}));
}

TEST(RgbToYcbcr, KnowsBothRanges) {
  const RgbToYcbcr full(Matrix::kBt709, Range::kFull, Range::kFull);
  EXPECT_EQ(Convert(full, 255, 255, 255), (Ycbcr{255, 128, 128}));
  EXPECT_EQ(Convert(full, 0, 0, 0), (Ycbcr{0, 128, 128}));
  EXPECT_EQ(Convert(full, 255, 0, 0).cr, 255);
  const RgbToYcbcr limited(Matrix::kBt709, Range::kLimited, Range::kLimited);
  EXPECT_EQ(Convert(limited, 235, 235, 235), (Ycbcr{235, 128, 128}));
  EXPECT_EQ(Convert(limited, 16, 16, 16), (Ycbcr{16, 128, 128}));
  EXPECT_EQ(Convert(limited, 0, 0, 0).y, 0) << "below black";
}

TEST(RgbToYcbcr, TreatsEveryPixelOfARowAlike) {
  constexpr int kPixels = 22;
  std::array<std::uint8_t, kPixels * 4> upper{};
  std::array<std::uint8_t, kPixels * 4> lower{};
  for (std::size_t i = 0; i < upper.size(); ++i) {
    upper[i] = static_cast<std::uint8_t>(i * 37);
    lower[i] = static_cast<std::uint8_t>(255 - i * 11);
  }
  for (const Range range : {Range::kLimited, Range::kFull}) {
    const RgbToYcbcr convert(Matrix::kBt709, range, Range::kLimited);
    std::array<std::uint8_t, kPixels * 3> all{};
    convert.ConvertRows(upper.data(), lower.data(), kPixels, all.data(), all.data() + kPixels,
                        all.data() + 2 * kPixels);
    for (std::size_t x = 0; x < kPixels; x += 2) {
      std::array<std::uint8_t, 6> two{};
      convert.ConvertRows(&upper[x * 4], &lower[x * 4], 2, two.data(), &two[2], &two[4]);
      for (std::size_t row = 0; row < 3; ++row) {
        EXPECT_EQ(all[row * kPixels + x], two[row * 2]) << x;
        EXPECT_EQ(all[row * kPixels + x + 1], two[row * 2 + 1]) << x;
      }
    }
  }
}

TEST(ComposedRows, ScalesAPieceOntoABackground) {
  const std::array<std::uint32_t, 8> picture{1, 2, 3, 4, 5, 6, 7, 8};
  ComposedRows rows({reinterpret_cast<const std::uint8_t*>(picture.data()), 16}, {1, 0, 3, 2}, {2, 1, 6, 3},
                    {1, 0, 8, 4}, 99);
  const auto row = [&](int y) {
    std::vector<std::uint32_t> pixels(7);
    std::memcpy(pixels.data(), rows.Row(y), 28);
    return pixels;
  };
  EXPECT_EQ(row(0), (std::vector<std::uint32_t>{99, 99, 99, 99, 99, 99, 99}));
  EXPECT_EQ(row(1), (std::vector<std::uint32_t>{99, 2, 2, 3, 3, 99, 99}));
  EXPECT_EQ(row(2), (std::vector<std::uint32_t>{99, 6, 6, 7, 7, 99, 99}));
  EXPECT_EQ(row(3), (std::vector<std::uint32_t>{99, 99, 99, 99, 99, 99, 99}));
}

}  // namespace

}  // namespace brisolte::standins
