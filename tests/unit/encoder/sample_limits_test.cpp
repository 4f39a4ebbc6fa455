#include "encoder/ffmpeg/sample_limits.h"

#include <gmock/gmock.h>

#include <array>
#include <limits>

namespace brisolte {
namespace {

using ::testing::ElementsAre;

TEST(LimitToFullScale, LeavesSoundAsItIs) {
  std::array samples{0.0F, -0.0F, 1.0F, -1.0F, 0.25F, -1.0e-30F};
  LimitToFullScale(samples);
  EXPECT_THAT(samples, ElementsAre(0.0F, -0.0F, 1.0F, -1.0F, 0.25F, -1.0e-30F));
}

TEST(LimitToFullScale, BringsWhatIsBeyondBack) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  std::array samples{1.5F, -1.0e20F, kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN()};
  LimitToFullScale(samples);
  EXPECT_THAT(samples, ElementsAre(1.0F, -1.0F, 1.0F, -1.0F, 0.0F));
}

}  // namespace
}  // namespace brisolte
