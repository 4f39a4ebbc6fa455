#include "desktop/window_filter.h"

#include <gtest/gtest.h>

#include <limits>

namespace brisolte {
namespace {

constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
constexpr auto kHighest = std::numeric_limits<std::int32_t>::max();

TEST(WindowFilter, ListsFromFiftyOneBothWays) {
  EXPECT_TRUE(IsWorthListing({100, 100, 151, 151}));
  EXPECT_FALSE(IsWorthListing({100, 100, 150, 300}));
  EXPECT_FALSE(IsWorthListing({100, 100, 300, 150}));
}

TEST(WindowFilter, LeavesOutEmptyAndInvertedOnes) {
  EXPECT_FALSE(IsWorthListing({}));
  EXPECT_FALSE(IsWorthListing({300, 300, 100, 100}));
}

TEST(WindowFilter, HoldsAtTheEndsOfTheRange) {
  EXPECT_TRUE(IsWorthListing({kLowest, kLowest, kHighest, kHighest}));
  EXPECT_FALSE(IsWorthListing({kHighest, kHighest, kLowest, kLowest}));
}

TEST(Rectangle, HasASizeBeyondItsEdgesType) {
  const Rectangle all{kLowest, kLowest, kHighest, kHighest};
  EXPECT_EQ(all.width(), 4294967295);
  EXPECT_EQ(all.height(), 4294967295);
}

TEST(Rectangle, HasItsCentreOverTheWholeRange) {
  EXPECT_EQ((Rectangle{0, 0, 1920, 1080}.centre()), (PixelPoint{960, 540}));
  EXPECT_EQ((Rectangle{-1921, -1, 0, 0}.centre()), (PixelPoint{-961, -1}));
  EXPECT_EQ((Rectangle{kLowest, kLowest, kHighest, kHighest}.centre()), (PixelPoint{-1, -1}));
}

}  // namespace
}  // namespace brisolte
