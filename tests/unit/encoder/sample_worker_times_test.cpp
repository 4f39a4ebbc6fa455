// In which order the worker writes by time, and what it sends for streams that deliver nothing.

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "sample_worker_fixture.h"

namespace brisolte {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

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

}  // namespace
}  // namespace brisolte
