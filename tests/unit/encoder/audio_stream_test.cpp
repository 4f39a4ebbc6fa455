#include "encoder/ffmpeg/audio_stream.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/captured_log.h"
#include "support/temporary_directory.h"
#include "support/tones.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using testing::DeviceFormat;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using testing::TemporaryDirectory;

// What libmp3lame puts before the first sample, in samples.
constexpr std::int64_t kDelay = 1105;
constexpr std::int64_t kFrame = 1152;
constexpr std::size_t kChunkBytes = 8192;

struct Packet {
  std::int64_t pts;
  std::int64_t dts;
  int stream;
  bool key;
};

/// A stream in a recording whose clock and end are the test's.
class AudioStreamTest : public ::testing::Test {
 protected:
  AudioStreamTest() { EXPECT_TRUE(file_.Initialize(directory_ / "file.mp4")); }

  bool Create() { return stream_.Create(file_, &format_, {}); }

  bool Process(std::size_t bytes) { return stream_.Process(std::vector<std::uint8_t>(bytes)); }

  /// Delivers a chunk when the recording is `milliseconds` old.
  bool ProcessAt(std::int64_t milliseconds) {
    elapsed_ = milliseconds;
    return Process(kChunkBytes);
  }

  bool Running() {
    if (stepsToEnd_ > 0) {
      --stepsToEnd_;
      running_ = running_ && stepsToEnd_ > 0;
    }
    return running_;
  }

  bool Enqueue(const AVPacket& packet) {
    packets_.push_back({packet.pts, packet.dts, packet.stream_index, (packet.flags & AV_PKT_FLAG_KEY) != 0});
    return accepting_;
  }

  void ExpectRising() const {
    for (std::size_t i = 0; i < packets_.size(); ++i) {
      EXPECT_EQ(packets_[i].pts, packets_[i].dts);
      EXPECT_TRUE(i == 0 || packets_[i].pts > packets_[i - 1].pts) << i;
    }
  }

  const TemporaryDirectory directory_;
  const WaveFormat format_ = DeviceFormat(SampleType::kFloat32, 2, 48'000);
  OutputFile file_;
  std::int64_t elapsed_ = 0;
  bool running_ = true;
  int stepsToEnd_ = 0;  ///< how often the recording still runs when it is asked; 0: for ever
  bool accepting_ = true;
  std::vector<Packet> packets_;
  AudioStream stream_{"microphone",
                      "Microphone",
                      {[this] { return Running(); }, [this] { return elapsed_; },
                       [this](const AVPacket& packet) { return Enqueue(packet); }}};
};

TEST_F(AudioStreamTest, TellsWhatItSetsUp) {
  const CapturedLog log;
  ASSERT_TRUE(Create());
  ASSERT_THAT(log.lines(), SizeIs(4));
  EXPECT_THAT(log.lines()[0], ::testing::StartsWith("[INFO] === AudioCodec Supported format:"));
  EXPECT_THAT(log.lines()[0], HasSubstr(" fltp"));
  EXPECT_EQ(log.lines()[1], "[INFO] Setting as microphone stream (index=0)");
  EXPECT_EQ(log.lines()[2],
            "[INFO] Initializing audio resampler with channels=2, sample_rate=48000, bits_per_sample=32");
  EXPECT_EQ(log.lines()[3], "[INFO] Audio resampler initialized successfully");
}

TEST_F(AudioStreamTest, NeedsAFile) {
  const CapturedLog log;
  OutputFile none;
  EXPECT_FALSE(stream_.Create(none, &format_, {}));
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Invalid parameters for CreateAudioStream"));
}

TEST_F(AudioStreamTest, NeedsAFormatItKnows) {
  const CapturedLog log;
  const WaveFormat unknown;
  EXPECT_FALSE(stream_.Create(file_, &unknown, {}));
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Invalid parameters for CreateAudioStream"));
}

TEST_F(AudioStreamTest, CannotComeAfterTheHeader) {
  ASSERT_TRUE(Create());
  ASSERT_TRUE(file_.WriteHeader());
  const CapturedLog log;
  EXPECT_FALSE(Create());
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Failed to create audio stream"));
  EXPECT_TRUE(Process(kChunkBytes));
}

TEST_F(AudioStreamTest, LeavesNothingInTheFileWhenItsEncoderCannotTakeTheFormat) {
  const CapturedLog log;
  for (const auto& [channels, rate] : {std::pair<std::uint16_t, std::uint32_t>{2, 999},
                                       {2, 768'001},
                                       {2, 1},
                                       {2, 0x7FFFFFFF},
                                       {9, 48'000},
                                       {64, 48'000}}) {
    const WaveFormat format = DeviceFormat(SampleType::kSigned16, channels, rate);
    EXPECT_FALSE(stream_.Create(file_, &format, {})) << channels << " " << rate;
    EXPECT_EQ(log.lines().back(), "[ERROR] Could not open audio codec: Invalid argument");
  }
  EXPECT_FALSE(Process(kChunkBytes));
  EXPECT_EQ(log.lines().back(), "[ERROR] Audio context not initialized for microphone");
  ASSERT_TRUE(Create());
  EXPECT_TRUE(log.has("[INFO] Setting as microphone stream (index=0)"));
}

TEST_F(AudioStreamTest, KeepsItsStreamAndEncoderWhenSetUpAgain) {
  const CapturedLog log;
  ASSERT_TRUE(Create());
  ASSERT_TRUE(Create());
  EXPECT_EQ(log.count("[INFO] Setting as microphone stream (index=0)"), 2);
  const WaveFormat tooMany = DeviceFormat(SampleType::kSigned16, 9, 48'000);
  EXPECT_FALSE(stream_.Create(file_, &tooMany, {}));
  EXPECT_TRUE(Process(kChunkBytes));
}

TEST_F(AudioStreamTest, WaitsForAWholeChunk) {
  ASSERT_TRUE(Create());
  const CapturedLog log;
  EXPECT_FALSE(Process(8191));
  EXPECT_THAT(packets_, IsEmpty());
  EXPECT_TRUE(Process(1));
  EXPECT_FALSE(Process(1));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AudioStreamTest, ReportsABacklogAndEncodesAllOfIt) {
  ASSERT_TRUE(Create());
  const CapturedLog log;
  EXPECT_TRUE(Process(2 * kChunkBytes + 8));
  EXPECT_THAT(log.lines(),
              ElementsAre("[INFO] Adjusting microphone buffer - discarding 8 bytes (keeping 16384 bytes)"));
  EXPECT_FALSE(Process(kChunkBytes - 9));
  EXPECT_TRUE(Process(1));
}

TEST_F(AudioStreamTest, StampsWithTheClock) {
  ASSERT_TRUE(Create());
  for (std::int64_t i = 0; i < 90; ++i) {
    EXPECT_TRUE(ProcessAt(1000 + i * 64 / 3));
  }
  stream_.Drain();
  ExpectRising();
  EXPECT_EQ(packets_.front().pts, 48'000 - kDelay);
  for (std::size_t i = 0; i < packets_.size(); ++i) {
    EXPECT_NEAR(static_cast<double>(packets_[i].pts),
                static_cast<double>(48'000 - kDelay + kFrame * static_cast<std::int64_t>(i)), 48)
        << i;
    EXPECT_TRUE(packets_[i].key);
    EXPECT_EQ(packets_[i].stream, 0);
  }
}

TEST_F(AudioStreamTest, ShowsAGapInDeliveryAsAGapInTime) {
  ASSERT_TRUE(Create());
  for (const std::int64_t start : {0, 5000}) {
    for (std::int64_t i = 0; i < 45; ++i) {
      ProcessAt(start + i * 64 / 3);
    }
  }
  stream_.Drain();
  ExpectRising();
  std::int64_t largest = 0;
  for (std::size_t i = 1; i < packets_.size(); ++i) {
    largest = std::max(largest, packets_[i].pts - packets_[i - 1].pts);
  }
  EXPECT_NEAR(static_cast<double>(largest) / 48, 5000 - 45 * 64.0 / 3, 50);
  EXPECT_NEAR(static_cast<double>(packets_.back().pts) / 48, 5000 + 45 * 64.0 / 3, 50);
}

TEST_F(AudioStreamTest, RisesWhileTheClockStandsStill) {
  ASSERT_TRUE(Create());
  elapsed_ = 40;
  EXPECT_TRUE(Process(100 * kChunkBytes));
  elapsed_ = 41;
  EXPECT_TRUE(Process(100 * kChunkBytes));
  stream_.Drain();
  ExpectRising();
  EXPECT_GE(packets_.size(), 200U * 1024 / kFrame);
  EXPECT_LT(packets_.back().pts, 42 * 48 + 3 * kFrame);
}

TEST_F(AudioStreamTest, RisesWithTheFilesCoarserClock) {
  OutputFile avi;
  ASSERT_TRUE(avi.Initialize(directory_ / "file.avi"));
  ASSERT_TRUE(stream_.Create(avi, &format_, {}));
  ASSERT_TRUE(avi.WriteHeader());
  EXPECT_TRUE(Process(50 * kChunkBytes));
  stream_.Drain();
  ExpectRising();
  EXPECT_GE(packets_.size(), 50U * 1024 / kFrame);
}

TEST_F(AudioStreamTest, IsInterruptedWhenTheRecordingStopsAndLosesNothing) {
  ASSERT_TRUE(Create());
  std::size_t samples = 0;
  for (const int steps : {1, 2, 3, 6, 11}) {
    running_ = true;
    stepsToEnd_ = steps;
    const CapturedLog log;
    const bool encoded = Process(20 * kChunkBytes);
    samples += 20 * 1024;
    EXPECT_EQ(encoded, steps > 1);
    EXPECT_THAT(log.lines().back(), "[INFO] microphone frame processing interrupted: thread is stopping");
  }
  stream_.Drain();
  const auto delivered = static_cast<std::int64_t>(samples);
  EXPECT_GE(static_cast<std::int64_t>(packets_.size()) * kFrame, delivered + kDelay);
  EXPECT_LE(static_cast<std::int64_t>(packets_.size()) * kFrame, delivered + kDelay + 2 * kFrame);
}

// The recording is asked before each chunk and before each of the encoder's frames; the second chunk
// completes the first of those.
TEST_F(AudioStreamTest, SkipsEncodingWhenTheRecordingStopsWithinAChunk) {
  ASSERT_TRUE(Create());
  const CapturedLog log;
  stepsToEnd_ = 3;
  EXPECT_TRUE(Process(2 * kChunkBytes));
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Skipping frame encoding: audio thread is stopping"));
  stream_.Drain();
  EXPECT_GE(static_cast<std::int64_t>(packets_.size()) * kFrame, 2048 + kDelay);
}

TEST_F(AudioStreamTest, DrainsOnceAndTakesNothingAfterwards) {
  ASSERT_TRUE(Create());
  EXPECT_TRUE(Process(kChunkBytes));
  EXPECT_FALSE(Process(80));
  stream_.Drain();
  const auto drained = packets_.size();
  EXPECT_GE(static_cast<std::int64_t>(drained) * kFrame, 1034 + kDelay);
  stream_.Drain();
  const CapturedLog log;
  Process(2 * kChunkBytes);
  EXPECT_TRUE(log.has("[ERROR] Failed to send Audio frame to  encoder"));
  EXPECT_THAT(packets_, SizeIs(drained));
}

TEST_F(AudioStreamTest, DrainsNothingWithoutSamples) {
  stream_.Drain();
  ASSERT_TRUE(Create());
  stream_.Drain();
  EXPECT_THAT(packets_, IsEmpty());
}

TEST_F(AudioStreamTest, ReportsPacketsThatAreRefused) {
  ASSERT_TRUE(Create());
  accepting_ = false;
  const CapturedLog log;
  EXPECT_TRUE(Process(10 * kChunkBytes));
  EXPECT_EQ(log.count("[ERROR] Failed to add Audio packet to encoder"),
            static_cast<std::ptrdiff_t>(packets_.size()));
  EXPECT_THAT(packets_, Not(IsEmpty()));
}

TEST_F(AudioStreamTest, TakesNothingWhenReleased) {
  ASSERT_TRUE(Create());
  EXPECT_TRUE(Process(kChunkBytes));
  stream_.Release();
  const CapturedLog log;
  EXPECT_FALSE(Process(kChunkBytes));
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Audio context not initialized for microphone"));
}

}  // namespace
}  // namespace brisolte
