#include "video/nv12_converter.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <vector>

namespace brisolte {
namespace {

struct Colour {
  std::array<std::uint8_t, 4> bgra;
  int y;
  int u;
  int v;
};

// BT.709 of limited range.
constexpr std::array kColours{Colour{{0, 0, 255, 255}, 63, 102, 240}, Colour{{0, 255, 0, 255}, 173, 42, 26},
                              Colour{{255, 0, 0, 255}, 32, 240, 118},
                              Colour{{255, 255, 255, 255}, 235, 128, 128},
                              Colour{{0, 0, 0, 255}, 16, 128, 128}};

/// A picture of one colour, whose rows are `spare` bytes further apart than needed and whose last row ends
/// with its pixels.
std::vector<std::uint8_t> Fill(PixelSize size, std::uint32_t pitch, const Colour& colour) {
  const auto rowBytes = static_cast<std::size_t>(size.width) * 4;
  std::vector<std::uint8_t> bytes(pitch * static_cast<std::size_t>(size.height - 1) + rowBytes, 0x55);
  for (std::size_t row = 0; row < static_cast<std::size_t>(size.height); ++row) {
    for (std::size_t byte = 0; byte < rowBytes; ++byte) {
      bytes[row * pitch + byte] = colour.bgra[byte % 4];
    }
  }
  return bytes;
}

class Nv12ConverterTest : public ::testing::TestWithParam<PixelSize> {};

TEST_P(Nv12ConverterTest, GivesTheColoursThatStreamsDeclare) {
  const PixelSize size = GetParam();
  const auto pitch = static_cast<std::uint32_t>(size.width) * 4 + 12;
  Nv12Converter converter(size);
  for (const Colour& colour : kColours) {
    const auto bytes = Fill(size, pitch, colour);
    const MappedPixels given =
        converter.Convert({bytes.data(), pitch, static_cast<std::uint32_t>(bytes.size())});
    ASSERT_EQ(given.rowPitch, static_cast<std::uint32_t>(size.width));
    ASSERT_EQ(given.depthPitch, given.rowPitch * static_cast<std::uint32_t>(size.height) * 3 / 2);
    const std::size_t luma = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    for (std::size_t i = 0; i < luma; ++i) {
      ASSERT_LE(std::abs(given.data[i] - colour.y), 2) << i;
    }
    for (std::size_t i = luma; i < given.depthPitch; i += 2) {
      ASSERT_LE(std::abs(given.data[i] - colour.u), 2) << i;
      ASSERT_LE(std::abs(given.data[i + 1] - colour.v), 2) << i;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, Nv12ConverterTest,
                         ::testing::Values(PixelSize{2, 2}, PixelSize{202, 122}, PixelSize{1280, 720}));

}  // namespace
}  // namespace brisolte
