#include "encoder/ffmpeg/space_budget.h"

#include <gtest/gtest.h>

namespace brisolte {
namespace {

constexpr std::uint64_t kMegabyte = 1'000'000;
constexpr std::uint64_t kPacket = 5'000;

/// What is left of a volume of `free` bytes when a file of packets like these is ended on it, which looks at
/// it each `packetsPerLook` packets; and how many there are.
struct Ended {
  std::uint64_t left = 0;
  std::uint64_t packets = 0;
};

Ended Fill(std::uint64_t free, std::uint64_t packetBytes, std::uint64_t packetsPerLook) {
  SpaceBudget budget;
  budget.Look(free);
  Ended ended{free, 0};
  while (budget.Admit(packetBytes)) {
    ended.left -= packetBytes;
    if (++ended.packets % packetsPerLook == 0) {
      budget.Look(ended.left);
    }
  }
  return ended;
}

TEST(SpaceBudget, LeavesRoomForTheIndexAndLittleMore) {
  const Ended ended = Fill(kMegabyte, kPacket, 10);
  EXPECT_GT(ended.left, ended.packets * 36 + 10'000);
  EXPECT_LT(ended.left, kMegabyte / 8);
}

TEST(SpaceBudget, KnowsThatManySmallPacketsHaveALargeIndex) {
  const Ended ended = Fill(100 * kMegabyte, 100, 1'000);
  EXPECT_GT(ended.left, ended.packets * 36);
  EXPECT_GT(ended.packets, 400'000U);
}

TEST(SpaceBudget, CountsForItselfBetweenTwoLooks) {
  const Ended ended = Fill(10 * kMegabyte, kPacket, 1'000'000'000);
  EXPECT_GT(ended.left, ended.packets * 36 + 10'000);
}

TEST(SpaceBudget, SeesThatOthersFillTheVolume) {
  SpaceBudget budget;
  budget.Look(1'000 * kMegabyte);
  EXPECT_TRUE(budget.Admit(kPacket));
  budget.Look(10'000);
  EXPECT_FALSE(budget.Admit(kPacket));
}

TEST(SpaceBudget, RefusesEverythingOnceItHasRefused) {
  SpaceBudget budget;
  budget.Look(20'000);
  EXPECT_FALSE(budget.Admit(kPacket));
  EXPECT_FALSE(budget.Admit(1));
  budget.Look(1'000 * kMegabyte);
  EXPECT_FALSE(budget.Admit(1));
}

TEST(SpaceBudget, RefusesNothingOnAVolumeThatDoesNotTell) {
  SpaceBudget budget;
  EXPECT_TRUE(budget.Admit(kMegabyte));
  budget.Look(std::nullopt);
  EXPECT_TRUE(budget.Admit(kMegabyte));
  budget.Look(10 * kMegabyte);
  EXPECT_TRUE(budget.Admit(kMegabyte));
  budget.Look(std::nullopt);
  EXPECT_TRUE(budget.Admit(100 * kMegabyte));
}

// A share of a large volume would be a long piece of the recording.
TEST(SpaceBudget, KeepsBackNoMoreOfALargeVolumeThanItNeeds) {
  const Ended ended = Fill(1'000'000 * kMegabyte, kMegabyte, 10);
  EXPECT_LT(ended.left, ended.packets * 50 + 20 * kMegabyte);
}

}  // namespace
}  // namespace brisolte
