#include "video/frame_delivery.h"

#include <gmock/gmock.h>

#include <memory>
#include <semaphore>
#include <thread>

#include "fake_encoder.h"
#include "fake_system.h"
#include "support/captured_log.h"

namespace brisolte::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// A source that does not come back from the first call until it is told to.
class HangingSource : public FrameSource {
 public:
  explicit HangingSource(FakeSystem& system) : source_(system) {}

  std::unique_ptr<CapturedFrame> TryGetNextFrame() override {
    hanging.release();
    comeBack.acquire();
    return source_.TryGetNextFrame();
  }

  std::binary_semaphore hanging{0};
  std::binary_semaphore comeBack{0};

 private:
  FakeFrameSource source_;
};

class FrameDeliveryTest : public ::testing::Test {
 protected:
  FrameDeliveryTest() { system_.frames = {50'000'000}; }

  FakeSystem system_;
  FakeEncoder encoder_{system_.journal};
};

TEST_F(FrameDeliveryTest, StopFinishesTheFrameThatIsHavingItsTurn) {
  FrameDelivery delivery(encoder_, 30, 60s);
  HangingSource source(system_);
  delivery.Start();
  const std::jthread service([&] { delivery.OnFrameArrived(source); });
  source.hanging.acquire();
  source.comeBack.release();
  EXPECT_TRUE(delivery.Stop());
  EXPECT_EQ(delivery.framesProcessed(), 1);
  EXPECT_THAT(system_.journal.entries(), Contains("encode 0 0"));
}

TEST_F(FrameDeliveryTest, StopDoesNotWaitForAServiceThatDoesNotComeBack) {
  const auto delivery = std::make_shared<FrameDelivery>(encoder_, 30, 20ms);
  HangingSource source(system_);
  delivery->Start();
  std::jthread service([&] { delivery->OnFrameArrived(source); });
  source.hanging.acquire();
  EXPECT_FALSE(delivery->Stop());
  EXPECT_TRUE(delivery->Stop()) << "waits once";
  FakeFrameSource late(system_);
  EXPECT_EQ(delivery->OnFrameArrived(late), 0) << "an arrival after the end";
  system_.raised = {{"TryGetNextFrame", kFailure}};
  const CapturedLog log;
  source.comeBack.release();
  service.join();
  EXPECT_THAT(log.lines(), IsEmpty()) << "of a recording that has ended";
  EXPECT_EQ(delivery->framesProcessed(), 0);
  EXPECT_THAT(system_.journal.entries(), Not(Contains(StartsWith("encode"))));
}

TEST_F(FrameDeliveryTest, CountsArrivalsSinceTheStart) {
  FrameDelivery delivery(encoder_, 30);
  FakeFrameSource source(system_);
  delivery.OnFrameArrived(source);
  EXPECT_THAT(system_.journal.entries(), IsEmpty());
  delivery.Start();
  EXPECT_EQ(delivery.triggerCount(), 0);
  delivery.OnFrameArrived(source);
  EXPECT_EQ(delivery.triggerCount(), 1);
  EXPECT_EQ(delivery.framesProcessed(), 1);
}

}  // namespace
}  // namespace brisolte::testing
