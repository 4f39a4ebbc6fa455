#include "audio/encoder_link.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <thread>

#include "recording_encoder.h"

namespace brisolte {
namespace {

using ::testing::ElementsAre;
using testing::RecordingEncoder;

TEST(EncoderLink, PassesSoundOnAndTheAnswerBack) {
  RecordingEncoder encoder;
  encoder.answer = [](const std::string& name) { return name == "speaker"; };
  EncoderLink link(encoder);
  EXPECT_TRUE(link.Deliver({1, 2}, "speaker"));
  EXPECT_FALSE(link.Deliver({3}, "microphone"));
  EXPECT_THAT(encoder.delivered("speaker"), ElementsAre(1, 2));
  EXPECT_THAT(encoder.delivered("microphone"), ElementsAre(3));
}

TEST(EncoderLink, ReachesNobodyOnceDetached) {
  RecordingEncoder encoder;
  EncoderLink link(encoder);
  link.Detach();
  link.Detach();
  EXPECT_FALSE(link.Deliver({1}, "speaker"));
  EXPECT_EQ(encoder.deliveries("speaker"), 0);
}

TEST(EncoderLink, LetsSoundGoWhilePaused) {
  RecordingEncoder encoder;
  EncoderLink link(encoder);
  link.Pause();
  EXPECT_TRUE(link.Deliver({1}, "speaker")) << "so that a poll finds that there was something";
  link.Resume();
  link.Deliver({2}, "speaker");
  EXPECT_THAT(encoder.delivered("speaker"), ElementsAre(2));
}

TEST(EncoderLink, LetsTheEncoderGoWhileAnotherThreadDelivers) {
  auto encoder = std::make_unique<RecordingEncoder>();
  EncoderLink link(*encoder);
  std::atomic<bool> done = false;
  const std::jthread worker([&] {
    while (!done) {
      link.Deliver({1}, "speaker");
    }
  });
  EXPECT_TRUE(encoder->WaitForBytes("speaker", 10));
  link.Detach();
  encoder.reset();
  done = true;
}

}  // namespace
}  // namespace brisolte
