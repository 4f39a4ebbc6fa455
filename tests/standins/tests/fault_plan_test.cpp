#include "shared/fault_plan.h"

#include <gtest/gtest.h>

namespace brisolte::standins {

namespace {

constexpr Fault kDenied{.result = static_cast<std::int32_t>(0x80070005)};

TEST(FaultPlan, AnswersNothingWithoutARule) {
  FaultPlan plan("Map 0x80070005\n");
  EXPECT_EQ(FaultPlan().Take("Map"), std::nullopt);
  EXPECT_EQ(plan.Take("Ma"), std::nullopt);
  EXPECT_EQ(plan.Take(""), std::nullopt);
}

TEST(FaultPlan, AnswersEveryCallUnlessToldOtherwise) {
  FaultPlan plan("Map 0x80070005\r\nClose 1");
  EXPECT_EQ(plan.Take("Map"), kDenied);
  EXPECT_EQ(plan.Take("Map"), kDenied);
  EXPECT_EQ(plan.Take("Close"), (Fault{.result = 1}));
}

TEST(FaultPlan, SkipsAndCounts) {
  FaultPlan plan("Map 0x80070005 skip 2 times 1\nMap 7 times 1");
  EXPECT_EQ(plan.Take("Map"), (Fault{.result = 7}));
  EXPECT_EQ(plan.Take("Map"), std::nullopt);
  EXPECT_EQ(plan.Take("Map"), kDenied);
  EXPECT_EQ(plan.Take("Map"), std::nullopt);
}

TEST(FaultPlan, LetsACallHang) {
  FaultPlan plan("Close hang skip 1 times 1");
  EXPECT_EQ(plan.Take("Close"), std::nullopt);
  EXPECT_EQ(plan.Take("Close"), (Fault{.hangs = true}));
  EXPECT_EQ(plan.Take("Close"), std::nullopt);
}

TEST(FaultPlan, LeavesOutWhatDoesNotReadAsARule) {
  FaultPlan plan("# Map 1\n\nMap\nMap x\nMap 1 skip\nMap 1 often 3\nMap 1 times x\nMap 1 times 2x\n");
  EXPECT_EQ(plan.Take("Map"), std::nullopt);
}

}  // namespace

}  // namespace brisolte::standins
