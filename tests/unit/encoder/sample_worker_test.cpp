#include <gmock/gmock.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "sample_worker_fixture.h"
#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

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
