#include <atomic>
#include <chrono>
#include <semaphore>
#include <thread>

#include "fixture.h"

namespace brisolte::testing {
namespace {

/// Two threads of the service that call for frames until they are told to end.
class Service {
 public:
  explicit Service(FakeSystem& system)
      : first_([&system](const std::stop_token& end) { Run(system, end); }),
        second_([&system](const std::stop_token& end) { Run(system, end); }) {}

 private:
  static void Run(FakeSystem& system, const std::stop_token& end) {
    while (!end.stop_requested()) {
      system.ArriveAtMs(nextMs.fetch_add(40));
    }
  }

  static inline std::atomic<std::int64_t> nextMs{1000};
  std::jthread first_;
  std::jthread second_;
};

/// An encoder whose end a test can watch for: it counts frames and knows when it must not be called any more.
class WatchedEncoder : public FakeEncoder {
 public:
  using FakeEncoder::FakeEncoder;

  bool ProcessFrameAsync(const VideoFrame& /*frame*/) override {
    EXPECT_FALSE(finished.load());
    EXPECT_EQ(inside_.fetch_add(1), 0) << "two frames at once";
    frames_.release();
    inside_.fetch_sub(1);
    return true;
  }

  bool WaitForFrames() {
    for (int frames = 0; frames < 3; ++frames) {
      if (!frames_.try_acquire_for(std::chrono::seconds(20))) {
        return false;
      }
    }
    return true;
  }

  std::atomic<bool> finished{false};

 private:
  std::counting_semaphore<> frames_{0};
  std::atomic<int> inside_{0};
};

class VideoCaptureRaces : public VideoCaptureTest {
 protected:
  VideoCaptureRaces() {
    capture_ = std::make_unique<VideoCapture>(settings_, watched_, system_->desktop, clock_,
                                              std::make_unique<FakeCapturePlatform>(system_));
    capture_->Start();
  }

  WatchedEncoder watched_{system_->journal};
  std::unique_ptr<VideoCapture> capture_;
};

TEST_F(VideoCaptureRaces, StopEndsDelivery) {
  const Service service(*system_);
  EXPECT_TRUE(watched_.WaitForFrames());
  capture_->Stop();
  watched_.finished = true;
}

TEST_F(VideoCaptureRaces, DetachingEndsDelivery) {
  const Service service(*system_);
  EXPECT_TRUE(watched_.WaitForFrames());
  capture_->DetachEncoder();
  watched_.finished = true;
}

TEST_F(VideoCaptureRaces, DestructionEndsDelivery) {
  const Service service(*system_);
  EXPECT_TRUE(watched_.WaitForFrames());
  capture_.reset();
  watched_.finished = true;
}

TEST_F(VideoCaptureRaces, OneFrameIsOpenAtATime) {
  {
    const Service service(*system_);
    EXPECT_TRUE(watched_.WaitForFrames());
  }
  EXPECT_EQ(system_->mostOpenFrames, 1);
}

}  // namespace
}  // namespace brisolte::testing
