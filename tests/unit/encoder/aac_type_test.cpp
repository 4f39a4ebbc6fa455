#include "encoder/mf/aac_type.h"

#include <gtest/gtest.h>

#include <vector>

namespace brisolte {
namespace {

/// What the documentation of the system's AAC encoder lists.
std::vector<AacType> SystemTypes() {
  std::vector<AacType> types;
  for (const std::uint32_t rate : {44'100U, 48'000U}) {
    for (const std::uint32_t bytes : {12'000U, 16'000U, 20'000U, 24'000U}) {
      types.insert(types.end(), {{rate, 1, bytes}, {rate, 2, bytes}, {rate, 6, 6 * bytes}});
    }
  }
  return types;
}

std::optional<AacType> Nearest(const AacType& wanted) {
  return NearestAacType(wanted, SystemTypes());
}

TEST(NearestAacType, IsTheOneThatIsWantedWhereItExists) {
  for (const AacType& type : SystemTypes()) {
    EXPECT_EQ(Nearest(type), type);
  }
}

TEST(NearestAacType, HasTheNearestBitRate) {
  EXPECT_EQ(Nearest({48'000, 2, 8'000}), (AacType{48'000, 2, 12'000}));
  EXPECT_EQ(Nearest({48'000, 2, 15'000}), (AacType{48'000, 2, 16'000}));
  EXPECT_EQ(Nearest({48'000, 1, 40'000}), (AacType{48'000, 1, 24'000}));
  EXPECT_EQ(Nearest({48'000, 6, 16'000}), (AacType{48'000, 6, 72'000}));
}

TEST(NearestAacType, IsOf48KilohertzForOtherRates) {
  for (const std::uint32_t rate : {8'000U, 16'000U, 32'000U, 96'000U, 192'000U}) {
    EXPECT_EQ(Nearest({rate, 1, 16'000}), (AacType{48'000, 1, 16'000})) << rate;
  }
}

TEST(NearestAacType, IsOf44KilohertzForItsMultiples) {
  EXPECT_EQ(Nearest({88'200, 2, 16'000}), (AacType{44'100, 2, 16'000}));
  EXPECT_EQ(Nearest({176'400, 2, 16'000}), (AacType{44'100, 2, 16'000}));
}

TEST(NearestAacType, IsStereoForChannelsThatItDoesNotHave) {
  for (const std::uint32_t channels : {3U, 4U, 5U, 7U, 8U}) {
    EXPECT_EQ(Nearest({48'000, channels, 16'000}), (AacType{48'000, 2, 16'000})) << channels;
  }
  const std::vector<AacType> upToStereo{{48'000, 1, 16'000}, {48'000, 2, 16'000}};
  EXPECT_EQ(NearestAacType({48'000, 6, 16'000}, upToStereo), (AacType{48'000, 2, 16'000}));
}

TEST(NearestAacType, IsNoneWhereNothingIsNear) {
  EXPECT_EQ(NearestAacType({48'000, 2, 16'000}, {}), std::nullopt);
  const std::vector<AacType> onlyDisc{{44'100, 2, 16'000}};
  EXPECT_EQ(NearestAacType({48'000, 2, 16'000}, onlyDisc), std::nullopt);
}

}  // namespace
}  // namespace brisolte
