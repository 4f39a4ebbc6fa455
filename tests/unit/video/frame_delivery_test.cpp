#include "video/frame_delivery.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <semaphore>
#include <thread>

#include "fake_encoder.h"
#include "fake_system.h"
#include "support/captured_log.h"
#include "support/hand_clock.h"

namespace brisolte::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
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

  /// A frame that was captured at this time arrives.
  void Arrive(FrameDelivery& delivery, std::int64_t milliseconds) {
    system_.frames = {milliseconds * 10'000};
    FakeFrameSource source(system_);
    EXPECT_EQ(delivery.OnFrameArrived(source), 0);
  }

  /// What happened since the last call.
  std::vector<std::string> Take() {
    const auto entries = system_.journal.entries();
    system_.journal.Clear();
    return entries;
  }

  FakeSystem system_;
  FakeEncoder encoder_{system_.journal};
  HandClock steady_;
  std::shared_ptr<PausableClock> clock_ = std::make_shared<PausableClock>(steady_.now());
};

TEST_F(FrameDeliveryTest, StopFinishesTheFrameThatIsHavingItsTurn) {
  FrameDelivery delivery(encoder_, 30, clock_, 60s);
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
  const auto delivery = std::make_shared<FrameDelivery>(encoder_, 30, clock_, 20ms);
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

TEST_F(FrameDeliveryTest, HandsNothingOnWhilePausedAndGoesOnAsIfNoTimeHadPassed) {
  FrameDelivery delivery(encoder_, 30, clock_);
  delivery.Start();
  Arrive(delivery, 5000);
  delivery.Pause();
  clock_->Pause();
  Take();
  steady_.Set(60'000);
  clock_->Resume();
  delivery.Resume();
  delivery.DeliverKept();
  EXPECT_THAT(Take(), IsEmpty()) << "nothing had come";
  Arrive(delivery, 65'040);
  EXPECT_THAT(Take(), Contains("encode 40 40"));
}

TEST_F(FrameDeliveryTest, HandsTheLastFrameOfAPauseOnAfterIt) {
  FrameDelivery delivery(encoder_, 30, clock_);
  delivery.Start();
  Arrive(delivery, 5000);
  Take();
  delivery.Pause();
  clock_->Pause();
  Arrive(delivery, 20'000);
  EXPECT_THAT(Take(), IsEmpty()) << "it is kept";
  Arrive(delivery, 65'004);
  EXPECT_THAT(Take(), ElementsAre("release frame")) << "of the two the earlier one";
  steady_.Set(60'000);
  clock_->Resume();
  delivery.Resume();
  delivery.DeliverKept();
  EXPECT_EQ(delivery.framesProcessed(), 2) << "although less than a frame's time after the one before";
  EXPECT_THAT(Take(),
              ElementsAre(StartsWith("convert"), "close frame", StartsWith("encode"), "release frame"));
  Arrive(delivery, 75'000);
  EXPECT_THAT(Take(), Contains(StartsWith("encode 10000 ")));
}

TEST_F(FrameDeliveryTest, CountsAKeptFrameAsCapturedAfterThePause) {
  using std::chrono::steady_clock;
  clock_ = std::make_shared<PausableClock>();
  FrameDelivery delivery(encoder_, 30, clock_);
  delivery.Start();
  Arrive(delivery, 5000);
  delivery.Pause();
  clock_->Pause();
  const auto paused = steady_clock::now();
  Arrive(delivery, 5010);
  while (steady_clock::now() - paused < 50ms) {
    std::this_thread::yield();
  }
  clock_->Resume();
  const auto resumed = steady_clock::now();
  delivery.Resume();
  Take();
  delivery.DeliverKept();
  const auto delivered = std::chrono::ceil<std::chrono::milliseconds>(steady_clock::now() - resumed).count();
  const std::string encode = Take().at(2);
  const std::int64_t time = std::stoll(encode.substr(encode.find(' ')));
  EXPECT_GE(time, 9) << "the pause is left out";
  EXPECT_LE(time, 11 + delivered);
}

TEST_F(FrameDeliveryTest, LetsAKeptFrameGoForALaterOne) {
  FrameDelivery delivery(encoder_, 30, clock_);
  delivery.Start();
  delivery.Pause();
  Arrive(delivery, 5000);
  delivery.Resume();
  Arrive(delivery, 5040);
  EXPECT_THAT(Take(),
              ElementsAre("release frame", "convert 0 0", "close frame", "encode 0 0", "release frame"));
  delivery.DeliverKept();
  EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(FrameDeliveryTest, GivesAKeptFrameBackAfterTheEnd) {
  FrameDelivery delivery(encoder_, 30, clock_);
  delivery.Start();
  delivery.Pause();
  Arrive(delivery, 5000);
  EXPECT_TRUE(delivery.Stop());
  EXPECT_THAT(Take(), IsEmpty()) << "not on this thread";
  delivery.DeliverKept();
  EXPECT_THAT(Take(), ElementsAre("release frame"));
}

TEST_F(FrameDeliveryTest, PauseWaitsForTheFrameThatIsHavingItsTurn) {
  FrameDelivery delivery(encoder_, 30, clock_, 60s);
  HangingSource source(system_);
  delivery.Start();
  const std::jthread service([&] { delivery.OnFrameArrived(source); });
  source.hanging.acquire();
  const std::jthread wakes([&] { source.comeBack.release(); });
  delivery.Pause();
  EXPECT_THAT(delivery.framesProcessed() == 1 ? Take() : std::vector<std::string>{"kept"},
              ::testing::AnyOf(Contains("release frame"), ElementsAre("kept")));
  EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(FrameDeliveryTest, IsPausedWhileFramesArrive) {
  clock_ = std::make_shared<PausableClock>();
  FrameDelivery delivery(encoder_, 1000, clock_);
  delivery.Start();
  std::atomic<bool> ended = false;
  std::jthread service([&] {
    for (std::int64_t milliseconds = 5000; !ended; milliseconds += 2) {
      Arrive(delivery, milliseconds);
    }
  });
  for (int pause = 0; pause < 200; ++pause) {
    delivery.Pause();
    clock_->Pause();
    const auto before = delivery.framesProcessed();
    std::this_thread::yield();
    EXPECT_EQ(delivery.framesProcessed(), before);
    clock_->Resume();
    delivery.Resume();
    delivery.DeliverKept();
  }
  EXPECT_TRUE(delivery.Stop());
  ended = true;
  service.join();
  delivery.DeliverKept();
  EXPECT_EQ(system_.openFrames, 0);
}

TEST_F(FrameDeliveryTest, CountsArrivalsSinceTheStart) {
  FrameDelivery delivery(encoder_, 30, clock_);
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
