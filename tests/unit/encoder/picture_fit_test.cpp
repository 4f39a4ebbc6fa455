#include "encoder/ffmpeg/picture_fit.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace brisolte {
namespace {

std::pair<int, int> Fit(PictureSize source, PictureSize largest) {
  const PictureSize size = FitInto(source, largest);
  return {size.width, size.height};
}

TEST(PictureFit, LeavesWhatFitsAsItIs) {
  EXPECT_EQ(Fit({640, 360}, {1280, 720}), std::pair(640, 360));
  EXPECT_EQ(Fit({1281, 719}, {1281, 719}), std::pair(1281, 719));
}

TEST(PictureFit, KeepsTheRatioOfWhatIsLarger) {
  EXPECT_EQ(Fit({1920, 1080}, {1280, 720}), std::pair(1280, 720));
  EXPECT_EQ(Fit({1920, 1080}, {640, 4000}), std::pair(640, 360));
  EXPECT_EQ(Fit({1920, 1080}, {4000, 720}), std::pair(1280, 720));
  EXPECT_EQ(Fit({1080, 1920}, {640, 640}), std::pair(360, 640));
  EXPECT_EQ(Fit({3440, 1440}, {1280, 720}), std::pair(1280, 534)) << "535.8";
}

TEST(PictureFit, IsEvenAndNeverLarger) {
  EXPECT_EQ(Fit({1921, 1081}, {641, 361}), std::pair(640, 360));
  EXPECT_EQ(Fit({100, 10'000}, {50, 50}), std::pair(2, 50));
  EXPECT_EQ(Fit({10'000, 3}, {16, 16}), std::pair(16, 2));
}

TEST(PictureFit, HoldsForTheLargestSizes) {
  constexpr int kMost = std::numeric_limits<int>::max();
  EXPECT_EQ(Fit({kMost, kMost}, {1000, kMost}), std::pair(1000, 1000));
}

}  // namespace
}  // namespace brisolte
