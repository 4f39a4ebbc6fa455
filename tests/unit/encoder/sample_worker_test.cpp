#include "encoder/mf/sample_worker.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <iterator>
#include <mutex>
#include <numeric>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr auto kLimit = std::chrono::seconds(60);
constexpr auto kMicrophone = AudioStreamKind::kMicrophone;
constexpr auto kSpeaker = AudioStreamKind::kSpeaker;

/// What the sinks of a test wrote, and a gate that holds them up.
class Writes {
 public:
  void Add(const std::string& write) {
    std::unique_lock lock(mutex_);
    all_.push_back(write);
    changed_.notify_all();
    changed_.wait(lock, [this] { return open_; });
  }

  void Open(bool open) {
    const std::scoped_lock lock(mutex_);
    open_ = open;
    changed_.notify_all();
  }

  /// Waits for as many writes and gives all there are.
  std::vector<std::string> Await(std::size_t count) {
    std::unique_lock lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, kLimit, [&] { return all_.size() >= count; }));
    return all_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> all_;
  bool open_ = true;
};

/// The time of a frame that cannot be written.
constexpr std::int64_t kLostFrame = 666;

/// Writes down "m" or "s" with the first byte of a chunk and its size, or "v" with a frame's time.
class WritingSink : public SampleSink {
 public:
  explicit WritingSink(Writes& writes) : writes_(writes) {}

  bool WriteFrame(const QueuedFrame& frame) override {
    writes_.Add("v" + std::to_string(frame.timestamp));
    return frame.timestamp != kLostFrame;
  }

  void WriteAudio(AudioStreamKind kind, std::span<const std::uint8_t> chunk) override {
    writes_.Add((kind == kMicrophone ? "m" : "s") + std::to_string(chunk.front()) + "+" +
                std::to_string(chunk.size()));
  }

  void SendTick(SinkStream stream, std::int64_t time) override {
    constexpr std::array kNames{"M", "S", "V"};
    writes_.Add(kNames.at(static_cast<std::size_t>(stream)) + std::to_string(time / 10'000));
  }

 private:
  Writes& writes_;
};

class SampleWorkerTest : public ::testing::Test {
 protected:
  void Start() {
    worker_.SetChunkBytes(4);
    worker_.Start([this] { return std::make_unique<WritingSink>(writes_); });
  }

  /// A worker that is busy with the frame of time -1.
  void StartBusy() {
    writes_.Open(false);
    Start();
    EXPECT_TRUE(worker_.PushFrame({nullptr, -1, 0}));
    writes_.Await(1);
  }

  /// Waits until the worker takes nothing more.
  void AwaitStopped() {
    const auto limit = std::chrono::steady_clock::now() + kLimit;
    while (worker_.AcceptsFrame() && std::chrono::steady_clock::now() < limit) {
      std::this_thread::yield();
    }
    EXPECT_FALSE(worker_.AcceptsFrame());
  }

  bool PushFrame(std::int64_t time) { return worker_.PushFrame({nullptr, time, 0}); }

  /// Bytes that count up from `first`.
  bool PushAudio(AudioStreamKind kind, std::uint8_t first, std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), first);
    return worker_.PushAudio(kind, bytes);
  }

  /// A worker with sounds of 100 bytes a second, so that a chunk has 40 ms, and 10 frames a second.
  void StartInTime() {
    for (const auto kind : {kMicrophone, kSpeaker}) {
      worker_.SetBytesPerSecond(kind, 100);
    }
    worker_.SetChunkBytes(4);
    constexpr std::int64_t kFrame = 1'000'000;
    worker_.Start([this] { return std::make_unique<WritingSink>(writes_); },
                  {SinkLayout::kAudioTick, SinkLayout::kAudioTick, kFrame});
  }

  Writes writes_;
  SampleWorker worker_{std::chrono::milliseconds(20)};
};

TEST_F(SampleWorkerTest, WritesFramesInOrder) {
  Start();
  for (int time = 0; time < 50; ++time) {
    EXPECT_TRUE(PushFrame(time));
  }
  const auto writes = writes_.Await(50);
  for (std::size_t i = 0; i < 50; ++i) {
    EXPECT_EQ(writes[i], "v" + std::to_string(i));
  }
}

TEST_F(SampleWorkerTest, CutsSoundIntoChunksAcrossDeliveries) {
  Start();
  EXPECT_TRUE(PushAudio(kMicrophone, 0, 3));
  EXPECT_TRUE(PushAudio(kMicrophone, 3, 7));
  EXPECT_THAT(writes_.Await(2), ElementsAre("m0+4", "m4+4"));
  EXPECT_TRUE(PushAudio(kSpeaker, 20, 4));
  EXPECT_TRUE(PushAudio(kMicrophone, 10, 2));
  const auto writes = writes_.Await(4);
  EXPECT_THAT(writes, Contains("s20+4"));
  EXPECT_THAT(writes, Contains("m8+4"));
}

TEST_F(SampleWorkerTest, WritesMicrophoneThenSpeakerThenFrames) {
  StartBusy();
  EXPECT_TRUE(PushFrame(0));
  EXPECT_TRUE(PushFrame(1));
  EXPECT_TRUE(PushAudio(kSpeaker, 0, 8));
  EXPECT_TRUE(PushAudio(kMicrophone, 0, 9));
  writes_.Open(true);
  EXPECT_THAT(writes_.Await(7), ElementsAre("v-1", "m0+4", "m4+4", "s0+4", "s4+4", "v0", "v1"));
}

TEST_F(SampleWorkerTest, WritesInTheOrderOfTime) {
  writes_.Open(false);
  StartInTime();
  EXPECT_TRUE(PushFrame(0));
  writes_.Await(1);
  EXPECT_TRUE(PushAudio(kMicrophone, 0, 16));
  EXPECT_TRUE(PushAudio(kSpeaker, 0, 8));
  EXPECT_TRUE(PushFrame(40));
  EXPECT_TRUE(PushFrame(100));
  writes_.Open(true);
  EXPECT_THAT(writes_.Await(9),
              ElementsAre("v0", "m0+4", "s0+4", "m4+4", "s4+4", "v40", "m8+4", "v100", "m12+4"));
}

TEST_F(SampleWorkerTest, SendsATickForEachFrameThatIsMissingWhileSoundGoesOn) {
  writes_.Open(false);
  StartInTime();
  EXPECT_TRUE(PushFrame(0));
  writes_.Await(1);
  // A second of both sounds: the picture is not taken as missing for half of it, which may be late.
  EXPECT_TRUE(PushAudio(kSpeaker, 0, 100));
  EXPECT_TRUE(PushAudio(kMicrophone, 0, 100));
  writes_.Open(true);
  const auto writes = writes_.Await(51 + 3);
  const auto ticks = [&writes](char stream) {
    std::vector<std::string> found;
    std::ranges::copy_if(writes, std::back_inserter(found), [&](const auto& w) { return w[0] == stream; });
    return found;
  };
  EXPECT_THAT(ticks('V'), ElementsAre("V100", "V200", "V300"));
  EXPECT_THAT(writes, ::testing::SizeIs(51 + 3));
}

TEST_F(SampleWorkerTest, SendsTicksForASoundThatNeverComes) {
  StartInTime();
  for (int time = 0; time <= 3000; time += 500) {
    EXPECT_TRUE(PushFrame(time));
  }
  const auto writes = writes_.Await(7 + 2 * 12);
  for (const char* const stream : {"M", "S"}) {
    for (int time = 0; time <= 2200; time += 200) {
      EXPECT_THAT(writes, Contains(stream + std::to_string(time)));
    }
  }
  // Before the picture that would otherwise run ahead of it.
  EXPECT_LT(std::ranges::find(writes, "M2200"), std::ranges::find(writes, "v3000"));
}

TEST_F(SampleWorkerTest, SendsNoTicksForStreamsThatAreNotThere) {
  Start();
  EXPECT_TRUE(PushFrame(0));
  EXPECT_TRUE(PushFrame(10'000));
  EXPECT_THAT(writes_.Await(2), ElementsAre("v0", "v10000"));
}

TEST_F(SampleWorkerTest, AsksForHelpWhenAWriteDoesNotReturn) {
  StartBusy();
  int asked = 0;
  worker_.Stop([&] {
    ++asked;
    writes_.Open(true);
  });
  EXPECT_EQ(asked, 1);
}

TEST_F(SampleWorkerTest, AsksForNoHelpWhenItEnds) {
  SampleWorker patient;
  patient.Start([this] { return std::make_unique<WritingSink>(writes_); });
  EXPECT_TRUE(patient.PushFrame({}));
  writes_.Await(1);
  patient.Stop([] { ADD_FAILURE(); });
}

TEST_F(SampleWorkerTest, LeavesWhatDoesNotFillAChunk) {
  Start();
  EXPECT_TRUE(PushAudio(kMicrophone, 0, 7));
  EXPECT_TRUE(PushAudio(kSpeaker, 0, 3));
  writes_.Await(1);
  EXPECT_TRUE(PushFrame(5));
  EXPECT_THAT(writes_.Await(2), ElementsAre("m0+4", "v5"));
  worker_.Stop();
  EXPECT_EQ(writes_.Await(2).size(), 2U);
}

TEST_F(SampleWorkerTest, WritesNoSoundWithoutAChunkSize) {
  worker_.Start([this] { return std::make_unique<WritingSink>(writes_); });
  EXPECT_TRUE(PushAudio(kMicrophone, 0, 8));
  EXPECT_TRUE(PushFrame(0));
  EXPECT_THAT(writes_.Await(1), ElementsAre("v0"));
  worker_.SetChunkBytes(8);
  EXPECT_THAT(writes_.Await(2), ElementsAre("v0", "m0+8"));
}

TEST_F(SampleWorkerTest, RefusesThe101stFrameThatWaits) {
  StartBusy();
  for (int time = 0; time < 100; ++time) {
    EXPECT_TRUE(worker_.AcceptsFrame());
    EXPECT_TRUE(PushFrame(time));
  }
  EXPECT_FALSE(worker_.AcceptsFrame());
  EXPECT_FALSE(PushFrame(100));
  EXPECT_TRUE(PushAudio(kMicrophone, 0, 1)) << "sound has no bound";
  writes_.Open(true);
  EXPECT_EQ(writes_.Await(101).back(), "v99");
  EXPECT_TRUE(PushFrame(101));
  EXPECT_EQ(writes_.Await(102).back(), "v101");
}

TEST_F(SampleWorkerTest, StopsAfterTheWriteThatIsUnderWay) {
  StartBusy();
  EXPECT_TRUE(PushFrame(0));
  EXPECT_TRUE(PushAudio(kMicrophone, 0, 8));
  std::jthread stopping([this] { worker_.Stop(); });
  AwaitStopped();
  writes_.Open(true);
  stopping.join();
  EXPECT_THAT(writes_.Await(1), ElementsAre("v-1"));
}

TEST_F(SampleWorkerTest, WritesTheLastFrameInPlaceOfWhatWaits) {
  StartBusy();
  EXPECT_TRUE(PushFrame(0));
  worker_.SetLastFrame({nullptr, 7, 0});
  std::jthread stopping([this] { worker_.Stop(); });
  AwaitStopped();
  writes_.Open(true);
  stopping.join();
  EXPECT_THAT(writes_.Await(2), ElementsAre("v-1", "v7"));
  Start();
  worker_.Stop();
  EXPECT_THAT(writes_.Await(2), SizeIs(2)) << "once";
}

// Sound that waits when the recording ends is not written: without ticks the last frame would be held back
// for it.
TEST_F(SampleWorkerTest, SendsTicksForSoundThatWaitsBeforeTheLastFrame) {
  writes_.Open(false);
  StartInTime();
  EXPECT_TRUE(PushFrame(0));
  writes_.Await(1);
  EXPECT_TRUE(PushAudio(kMicrophone, 0, 100));
  worker_.SetLastFrame({nullptr, 1000, 100});
  std::jthread stopping([this] { worker_.Stop(); });
  AwaitStopped();
  writes_.Open(true);
  stopping.join();
  EXPECT_THAT(writes_.Await(6), ElementsAre("v0", "M0", "M200", "S0", "S200", "v1000"));
}

TEST_F(SampleWorkerTest, WritesNoLastFrameAfterOneThatWasLost) {
  Start();
  EXPECT_TRUE(PushFrame(kLostFrame));
  writes_.Await(1);
  worker_.SetLastFrame({nullptr, 7, 0});
  worker_.Stop();
  EXPECT_THAT(writes_.Await(1), SizeIs(1));
}

TEST_F(SampleWorkerTest, StopsWhileItWritesSoundAndFrames) {
  writes_.Open(false);
  Start();
  EXPECT_TRUE(PushAudio(kMicrophone, 0, 40));
  writes_.Await(1);
  std::jthread stopping([this] { worker_.Stop(); });
  AwaitStopped();
  writes_.Open(true);
  stopping.join();
  EXPECT_THAT(writes_.Await(1), ElementsAre("m0+4"));
}

TEST_F(SampleWorkerTest, TakesNothingUnlessItRuns) {
  EXPECT_FALSE(worker_.AcceptsFrame());
  EXPECT_FALSE(PushFrame(0));
  EXPECT_FALSE(PushAudio(kMicrophone, 0, 4));
  worker_.Stop();
  Start();
  worker_.Stop();
  worker_.Stop();
  EXPECT_FALSE(worker_.AcceptsFrame());
  EXPECT_FALSE(PushFrame(0));
  EXPECT_FALSE(PushAudio(kSpeaker, 0, 4));
  EXPECT_THAT(writes_.Await(0), IsEmpty());
}

TEST_F(SampleWorkerTest, GivesTexturesBackWhenWrittenAndWhenForgotten) {
  int given = 0;
  int texture = 0;
  const auto frame = [&](std::int64_t time) {
    return QueuedFrame{PooledTexture(reinterpret_cast<ID3D11Texture2D*>(&texture), [&](auto*) { ++given; }),
                       time, 0};
  };
  writes_.Open(false);
  Start();
  EXPECT_TRUE(worker_.PushFrame(frame(0)));
  writes_.Await(1);
  EXPECT_TRUE(worker_.PushFrame(frame(1)));
  std::jthread stopping([this] { worker_.Stop(); });
  AwaitStopped();
  writes_.Open(true);
  stopping.join();
  EXPECT_EQ(given, 2);
}

TEST_F(SampleWorkerTest, DestroysTheSinkOnItsOwnThreadBeforeStopReturns) {
  std::thread::id made;
  std::thread::id destroyed;
  class KnowingSink final : public WritingSink {
   public:
    KnowingSink(Writes& writes, std::thread::id& where) : WritingSink(writes), where_(where) {}
    KnowingSink(const KnowingSink&) = delete;
    KnowingSink& operator=(const KnowingSink&) = delete;
    ~KnowingSink() override { where_ = std::this_thread::get_id(); }

   private:
    std::thread::id& where_;
  };
  worker_.Start([&] {
    made = std::this_thread::get_id();
    return std::make_unique<KnowingSink>(writes_, destroyed);
  });
  EXPECT_TRUE(PushFrame(0));
  writes_.Await(1);
  worker_.Stop();
  EXPECT_NE(made, std::this_thread::get_id());
  EXPECT_EQ(destroyed, made);
}

TEST_F(SampleWorkerTest, EndsWithAnErrorWhenThereIsNoSink) {
  const CapturedLog log;
  worker_.Start([]() -> std::unique_ptr<SampleSink> { throw std::runtime_error("no sink"); });
  AwaitStopped();
  worker_.Stop();
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Exception in MFEncoder worker: no sink"));
}

TEST_F(SampleWorkerTest, CannotBeStoppedByItself) {
  class StoppingSink final : public WritingSink {
   public:
    StoppingSink(Writes& writes, SampleWorker& worker)
        : WritingSink(writes), writes_(writes), worker_(worker) {}
    bool WriteFrame(const QueuedFrame& /*frame*/) override {
      try {
        worker_.Stop();
      } catch (const std::system_error& error) {
        writes_.Add(error.code() == std::errc::resource_deadlock_would_occur ? "deadlock" : error.what());
      }
      return true;
    }

   private:
    Writes& writes_;
    SampleWorker& worker_;
  };
  worker_.Start([this] { return std::make_unique<StoppingSink>(writes_, worker_); });
  EXPECT_TRUE(PushFrame(0));
  EXPECT_THAT(writes_.Await(1), ElementsAre("deadlock"));
  worker_.Stop();
}

TEST_F(SampleWorkerTest, TakesFromManyThreadsAtOnce) {
  Start();
  constexpr int kRounds = 200;
  std::size_t frames = 0;
  {
    const std::jthread microphone([this] {
      for (int i = 0; i < kRounds; ++i) {
        EXPECT_TRUE(PushAudio(kMicrophone, 0, 2));
      }
    });
    const std::jthread speaker([this] {
      for (int i = 0; i < kRounds; ++i) {
        EXPECT_TRUE(PushAudio(kSpeaker, 0, 2));
      }
    });
    for (int i = 0; i < kRounds; ++i) {
      frames += PushFrame(i) ? 1U : 0U;
    }
  }
  writes_.Await(kRounds + frames);
  worker_.Stop();
  EXPECT_EQ(writes_.Await(0).size(), kRounds + frames);
}

}  // namespace
}  // namespace brisolte
