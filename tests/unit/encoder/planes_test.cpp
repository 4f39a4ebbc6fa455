#include "encoder/ffmpeg/planes.h"

#include <gmock/gmock.h>

#include <vector>

namespace brisolte {
namespace {

using ::testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

TEST(Planes, AreCopiedRowByRowBetweenDifferentStrides) {
  const Bytes source{1, 2, 3, 90, 4, 5, 6};
  Bytes target(10, 99);
  CopyPlane({source.data(), 4}, {target.data(), 5}, 3, 2);
  EXPECT_THAT(target, ElementsAre(1, 2, 3, 99, 99, 4, 5, 6, 99, 99));
}

TEST(Planes, InterleavedChromaOfEvenWidthsIsSeparated) {
  const Bytes source{1, 2, 3, 4, 90, 5, 6, 7, 8};
  Bytes u(6, 99);
  Bytes v(4, 99);
  SplitInterleavedChroma({source.data(), 5}, {u.data(), 3}, {v.data(), 2}, 4, 2);
  EXPECT_THAT(u, ElementsAre(1, 3, 99, 5, 7, 99));
  EXPECT_THAT(v, ElementsAre(2, 4, 6, 8));
}

// The last column of an odd width has a chroma sample of its own. The very last one may be cut off by the end
// of the source, which the size of these vectors pins.
TEST(Planes, InterleavedChromaOfOddWidthsKeepsItsLastColumn) {
  const Bytes source{1, 2, 3, 4, 5, 6, 7, 8, 9};
  Bytes u(4, 99);
  Bytes v(4, 99);
  SplitInterleavedChroma({source.data(), 6}, {u.data(), 2}, {v.data(), 2}, 3, 2);
  EXPECT_THAT(u, ElementsAre(1, 3, 7, 9));
  EXPECT_THAT(v, ElementsAre(2, 4, 8, 8));

  Bytes pairs(8, 99);
  CopyInterleavedChroma({source.data(), 6}, {pairs.data(), 4}, 3, 2);
  EXPECT_THAT(pairs, ElementsAre(1, 2, 3, 4, 7, 8, 9, 8));
}

TEST(Planes, RowsWithoutRoomForTheLastPairDoNotTakeTheNextRows) {
  const Bytes source{1, 2, 3, 4, 5, 6};
  Bytes u(4, 99);
  Bytes v(4, 99);
  SplitInterleavedChroma({source.data(), 3}, {u.data(), 2}, {v.data(), 2}, 3, 2);
  EXPECT_THAT(u, ElementsAre(1, 3, 4, 6));
  EXPECT_THAT(v, ElementsAre(2, 2, 5, 5));
}

TEST(Planes, ASingleColumnWithHalfAPairIsNeutral) {
  const Bytes source{7};
  Bytes u(1, 99);
  Bytes v(1, 99);
  SplitInterleavedChroma({source.data(), 1}, {u.data(), 1}, {v.data(), 1}, 1, 1);
  EXPECT_THAT(u, ElementsAre(7));
  EXPECT_THAT(v, ElementsAre(128));
}

}  // namespace
}  // namespace brisolte
