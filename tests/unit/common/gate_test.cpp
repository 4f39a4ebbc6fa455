#include "common/gate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <semaphore>
#include <thread>

namespace brisolte {
namespace {

TEST(Gate, LetsCallsThroughAndTheirResultsBack) {
  int target = 4;
  Gate<int> gate(target);
  EXPECT_EQ(gate.Through([](int& number) { return ++number; }), 5);
  EXPECT_EQ(target, 5);
}

TEST(Gate, LetsNothingThroughOnceClosed) {
  int target = 4;
  Gate<int> gate(target);
  gate.Close();
  gate.Close();
  EXPECT_EQ(gate.Through([](int& number) { return ++number; }), 0);
  EXPECT_EQ(target, 4);
}

TEST(Gate, ClosesWhenTheCallInsideIsThrough) {
  std::binary_semaphore inside{0};
  std::binary_semaphore leave{0};
  std::atomic<bool> through{false};
  auto target = std::make_unique<int>(4);
  Gate<int> gate(*target);
  const std::jthread caller([&] {
    gate.Through([&](int& number) {
      inside.release();
      leave.acquire();
      through = true;
      return number;
    });
  });
  inside.acquire();
  leave.release();
  gate.Close();
  EXPECT_TRUE(through);
  target.reset();
}

}  // namespace
}  // namespace brisolte
