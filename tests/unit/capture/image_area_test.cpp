#include "capture/image_area.h"

#include <gmock/gmock.h>

#include <limits>
#include <vector>

namespace brisolte {
namespace {

using ::testing::Each;

constexpr std::uint32_t kWidth = 1920;
constexpr std::uint32_t kHeight = 1080;
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

struct Case {
  const char* name;
  Rectangle crop;
  ImageArea area;
};

TEST(DrawnSize, IsTheSmallestThatIsKnown) {
  const PixelSize image{414, 247};
  EXPECT_EQ(DrawnSize(image, {400, 240}, std::nullopt), (PixelSize{400, 240}));
  EXPECT_EQ(DrawnSize(image, image, Rectangle{-50, 30, 350, 270}), (PixelSize{400, 240}));
  EXPECT_EQ(DrawnSize(image, {380, 247}, Rectangle{0, 0, 400, 240}), (PixelSize{380, 240}));
  EXPECT_EQ(DrawnSize(image, {900, 600}, Rectangle{0, 0, 1000, 700}), image);
}

TEST(DrawnSize, IsTheImagesWhereNothingIsKnown) {
  const PixelSize image{414, 247};
  EXPECT_EQ(DrawnSize(image, {}, std::nullopt), image);
  EXPECT_EQ(DrawnSize(image, {-1, 0}, Rectangle{}), image);
  EXPECT_EQ(DrawnSize(image, image, Rectangle{kMost, kMost, kLeast, kLeast}), image);
}

TEST(CropArea, TakesTheRectangleFromTheImage) {
  const std::vector<Case> cases = {
      {"inside", {10, 20, 110, 70}, {10, 20, 100, 50}},
      {"all", {0, 0, 1920, 1080}, {0, 0, 1920, 1080}},
      {"a pixel at the far corner", {1919, 1079, 1920, 1080}, {1919, 1079, 1, 1}},
      {"beyond right and bottom", {1900, 1000, 2100, 1200}, {1900, 1000, 20, 80}},
      {"larger than the image", {0, 0, 5000, 5000}, {0, 0, 1920, 1080}},
      {"left of the image: moved, not narrowed", {-10, 0, 90, 50}, {0, 0, 100, 50}},
      {"above the image: moved, not lowered", {0, -10, 100, 40}, {0, 0, 100, 50}},
      {"wholly left of it", {-200, 0, -100, 50}, {0, 0, 100, 50}},
      {"larger than the image on all sides", {-100, -100, 4000, 4000}, {0, 0, 1920, 1080}},
      {"as wide as 32 bits are", {kLeast, kLeast, kMost, kMost}, {0, 0, 1920, 1080}},
  };
  for (const Case& each : cases) {
    const ImageArea area = CropArea(kWidth, kHeight, each.crop);
    EXPECT_EQ(area, each.area) << each.name << ": " << area.x << " " << area.y << " " << area.width << " "
                               << area.height;
    EXPECT_TRUE(LiesWithin(area, kWidth, kHeight)) << each.name;
  }
}

TEST(CropArea, IsRecognisedAsOutsideWhenItIs) {
  const std::vector<Rectangle> outside = {
      {1920, 0, 2000, 50},        // begins just right of the image
      {0, 1080, 50, 2000},        // begins just below
      {1921, 0, 2000, 50},        // the rest would be negative
      {0, 1081, 50, 2000},        //
      {3000, 2000, 3100, 2100},   // both ways
      {kMost - 1, 0, kMost, 50},  // far right
      {0, kMost - 1, 50, kMost},  // far below
      {100, 100, 100, 200},       // without a width
      {100, 100, 200, 100},       // without a height
      {kMost, kMost, kMost, kMost}, {kLeast, kLeast, kLeast, kLeast},
  };
  for (const Rectangle& crop : outside) {
    EXPECT_FALSE(LiesWithin(CropArea(kWidth, kHeight, crop), kWidth, kHeight))
        << crop.left << " " << crop.top << " " << crop.right << " " << crop.bottom;
  }
}

TEST(CropArea, NeverReachesBeyondTheImageUnrecognised) {
  const std::vector<std::int32_t> edges = {kLeast, kLeast + 1, -1920, -10,  -1,        0,         1,
                                           959,    1919,       1920,  1921, 1'000'000, kMost - 1, kMost};
  for (const std::int32_t left : edges) {
    for (const std::int32_t right : edges) {
      for (const std::uint32_t width : {1U, 1920U, 16384U, 4294967295U}) {
        const ImageArea area = CropArea(width, 1, {left, 0, right, 1});
        const bool inside = area.width > 0 && std::uint64_t{area.x} + area.width <= width;
        EXPECT_EQ(LiesWithin(area, width, 1), inside) << left << " " << right << " " << width;
        if (left < right && left >= 0 && static_cast<std::uint32_t>(left) < width) {
          EXPECT_TRUE(inside) << left << " " << right << " " << width;
        }
      }
    }
  }
}

TEST(LiesWithin, DoesNotOverflow) {
  EXPECT_FALSE(LiesWithin({4294967295U, 0, 2, 1}, 1920, 1080));
  EXPECT_FALSE(LiesWithin({0, 4294967295U, 1, 4294967295U}, 1920, 1080));
  EXPECT_FALSE(LiesWithin({0, 0, 0, 1}, 1920, 1080));
  EXPECT_FALSE(LiesWithin({0, 0, 1, 0}, 1920, 1080));
  EXPECT_TRUE(LiesWithin({0, 0, 1920, 1080}, 1920, 1080));
}

// Each pixel of the image has its number in its four bytes; the memory ends with the last pixel.
TEST(CopyArea, CopiesTheAreaAndNothingBesideIt) {
  constexpr std::uint32_t kImageWidth = 5;
  constexpr std::uint32_t kImageHeight = 4;
  constexpr std::uint32_t kPitch = kImageWidth * 4 + 12;
  std::vector<std::uint8_t> bytes(kPitch * (kImageHeight - 1) + kImageWidth * 4, 0xEE);
  for (std::uint32_t y = 0; y < kImageHeight; ++y) {
    for (std::uint32_t i = 0; i < kImageWidth * 4; ++i) {
      bytes[y * kPitch + i] = static_cast<std::uint8_t>(y * kImageWidth + i / 4);
    }
  }
  constexpr std::size_t kTargetPitch = 3 * 4 + 4;
  std::vector<std::uint8_t> target(kTargetPitch * 2, 0xAA);
  CopyArea({bytes.data(), kPitch, kImageWidth, kImageHeight}, {2, 2, 3, 2}, target.data(), kTargetPitch);
  const std::vector<std::uint8_t> first(target.begin(), target.begin() + 12);
  EXPECT_EQ(first, (std::vector<std::uint8_t>{12, 12, 12, 12, 13, 13, 13, 13, 14, 14, 14, 14}));
  EXPECT_THAT(std::vector<std::uint8_t>(target.begin() + 12, target.begin() + 16), Each(0xAA));
  const std::vector<std::uint8_t> second(target.begin() + 16, target.begin() + 28);
  EXPECT_EQ(second, (std::vector<std::uint8_t>{17, 17, 17, 17, 18, 18, 18, 18, 19, 19, 19, 19}));
  EXPECT_THAT(std::vector<std::uint8_t>(target.begin() + 28, target.end()), Each(0xAA));
}

}  // namespace
}  // namespace brisolte
