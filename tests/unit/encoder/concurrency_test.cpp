#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "support/captured_log.h"
#include "support/pictures.h"
#include "support/temporary_directory.h"
#include "support/tones.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using testing::Picture;
using testing::TemporaryDirectory;

/// Lets a random short time go by for the other threads.
void Dawdle(std::mt19937& random) {
  for (auto i = random() % 300; i > 0; --i) {
    std::this_thread::yield();
  }
}

// One thread delivers frames, as the capture service does, and one sound; another one starts and stops; a
// fourth asks and finalizes.
TEST(FFmpegEncoderThreads, MayDeliverStartStopAndDestroyAtAnyMoment) {
  const auto seed = std::random_device()();
  SCOPED_TRACE(seed);
  const CapturedLog log;
  const TemporaryDirectory directory;
  const Picture picture(Picture::Layout::kNv12, 64, 48, {10, 200, 90});
  const WaveFormat microphone = testing::DeviceFormat(SampleType::kSigned24Packed, 1, 16'000);
  for (unsigned round = 0; round < 12; ++round) {
    CaptureSettings settings;
    settings.encoderName = round % 2 == 0 ? "libx264" : "mpeg4";
    settings.outputFilePath = directory / "file.mp4";
    std::optional<FFmpegEncoder> encoder(settings);
    ASSERT_TRUE(encoder->InitializeVideoEncoder(64, 48, nullptr));
    ASSERT_TRUE(encoder->CreateAudioStream(AudioStreamKind::kMicrophone, &microphone));
    ASSERT_TRUE(encoder->CreateAudioStream(AudioStreamKind::kSpeaker, nullptr));
    std::atomic<bool> done = false;
    std::thread frames([&, random = std::mt19937(seed + ~round)]() mutable {
      for (std::int64_t time = 0; !done; time += 33) {
        encoder->ProcessFrameAsync(picture.Frame(time));
        Dawdle(random);
      }
    });
    std::thread sound([&, random = std::mt19937(seed ^ round)]() mutable {
      while (!done) {
        const std::vector<std::uint8_t> samples(random() % 40'000);
        encoder->ProcessAudioFrame(samples, random() % 2 == 0 ? "microphone" : "speaker");
        Dawdle(random);
      }
    });
    std::thread observer([&, random = std::mt19937(seed + round)]() mutable {
      while (!done) {
        encoder->GetPixelFormat();
        encoder->Finalize();
        encoder->InitializeVideoEncoder(64, 48, nullptr);
        encoder->CreateAudioStream(AudioStreamKind::kMicrophone, &microphone);
        Dawdle(random);
      }
    });
    std::mt19937 random(seed - round);
    for (auto steps = random() % 4; steps > 0; --steps) {
      Dawdle(random);
      encoder->Start();
      Dawdle(random);
      encoder->Stop();
    }
    Dawdle(random);
    encoder->Start();
    done = true;
    frames.join();
    sound.join();
    observer.join();
    encoder.reset();
  }
  EXPECT_GT(log.count("[INFO] FFmpegEncoder: Writer thread has stopped"), 0);
}

// Two controllers' calls at once: one of them starts, both may stop.
TEST(FFmpegEncoderThreads, MayStartAndStopTwiceAtOnce) {
  const CapturedLog log;
  const TemporaryDirectory directory;
  for (int round = 0; round < 10; ++round) {
    CaptureSettings settings;
    settings.encoderName = "mpeg4";
    settings.outputFilePath = directory / "file.mp4";
    FFmpegEncoder encoder(settings);
    ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
    const auto startAndStop = [&encoder] {
      encoder.Start();
      encoder.Stop();
    };
    std::thread one(startAndStop);
    std::thread two(startAndStop);
    one.join();
    two.join();
    EXPECT_FALSE(encoder.Stop());
  }
}

}  // namespace
}  // namespace brisolte
