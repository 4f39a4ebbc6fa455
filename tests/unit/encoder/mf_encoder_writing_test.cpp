#include <algorithm>
#include <thread>

#include "encoder/mf/frame_textures.h"
#include "encoder/mf/sample_writer.h"
#include "mf/mf_encoder_fixture.h"
#include "mf/recording_sink_writer.h"
#include "support/standin_fault.h"

namespace brisolte {
namespace {

using ::testing::ElementsAre;
using testing::FloatFormat;
using ::testing::IsEmpty;
using testing::kFailure;
using testing::kFailureText;
using testing::MakeCaptureDevice;
using testing::MakeCaptureTexture;
using testing::PcmFormat;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr auto kMicrophone = AudioStreamKind::kMicrophone;
constexpr auto kSpeaker = AudioStreamKind::kSpeaker;

class MFEncoderWritingTest : public testing::MFEncoderTest {
 protected:
  /// A running encoder with video as stream 0.
  void StartWithVideo() {
    MakeWithVideo();
    ASSERT_TRUE(encoder_->Start());
  }

  /// A running encoder with sound alone; the sources named are the streams in their order.
  void StartWithSound(const std::vector<std::pair<AudioStreamKind, WaveFormat>>& sources) {
    MakeEncoder();
    for (const auto& [kind, format] : sources) {
      ASSERT_TRUE(encoder_->CreateAudioStream(kind, &format));
    }
    ASSERT_TRUE(encoder_->Start());
  }

  bool ProcessAudio(const std::string& name, std::size_t bytes, std::uint8_t value = 0) {
    return encoder_->ProcessAudioFrame(std::vector<std::uint8_t>(bytes, value), name);
  }

  /// A worker that is busy with a frame of time -1, which the sink writer holds up.
  void StartBusy() {
    StartWithVideo();
    stage_.HoldWrites(true);
    ASSERT_TRUE(ProcessFrame(-1));
    stage_.AwaitSamples(1);
  }
};

TEST_F(MFEncoderWritingTest, AFrameBecomesASampleOverACopyOfItsTexture) {
  StartWithVideo();
  EXPECT_TRUE(ProcessFrame(0, 0, 30));
  EXPECT_TRUE(ProcessFrame(33, 33, 40));
  EXPECT_TRUE(ProcessFrame(3'600'001, 41, 50));
  const auto samples = stage_.AwaitSamples(3);
  EXPECT_EQ(samples[0].stream, 0U);
  EXPECT_EQ(samples[0].time, 0);
  EXPECT_EQ(samples[0].duration, 0);
  EXPECT_EQ(samples[0].length, kWidth * kHeight * 3 / 2);
  EXPECT_EQ(samples[0].luma, 30);
  EXPECT_EQ(samples[1].time, 330'000);
  EXPECT_EQ(samples[1].duration, 330'000);
  EXPECT_EQ(samples[1].luma, 40);
  EXPECT_EQ(samples[2].time, 36'000'010'000);
  EXPECT_EQ(samples[2].duration, 410'000);
  EXPECT_EQ(samples[2].luma, 50);
  EXPECT_THAT(TakeErrors(), IsEmpty());
}

TEST_F(MFEncoderWritingTest, TheLastPictureIsShownUntilTheStop) {
  StartWithVideo();
  clock_.Set(0);
  EXPECT_TRUE(ProcessFrame(0, 0, 30));
  clock_.Set(400);
  EXPECT_TRUE(ProcessFrame(400, 400, 50));
  stage_.AwaitSamples(2);
  testing::Paint(*texture_.Get(), 200);
  clock_.Set(3000);
  EXPECT_TRUE(encoder_->Stop());
  const auto samples = stage_.samples();
  ASSERT_THAT(samples, SizeIs(3));
  EXPECT_EQ(samples[2].time, 29'600'000);
  EXPECT_EQ(samples[2].duration, 400'000) << "one frame";
  EXPECT_EQ(samples[2].luma, 50);
  EXPECT_THAT(TakeErrors(), IsEmpty());
}

TEST_F(MFEncoderWritingTest, APictureThatLastsUntilTheStopIsWrittenOnce) {
  StartWithVideo();
  clock_.Set(0);
  EXPECT_TRUE(ProcessFrame(0));
  stage_.AwaitSamples(1);
  clock_.Set(39);
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(stage_.samples(), SizeIs(1));
}

TEST_F(MFEncoderWritingTest, WithoutAPictureThereIsNoLastOne) {
  StartWithVideo();
  clock_.Set(3000);
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(stage_.samples(), IsEmpty());
}

TEST_F(MFEncoderWritingTest, AWriterThatFailsIsGivenNoLastPicture) {
  StartWithVideo();
  clock_.Set(0);
  stage_.Fail("WriteSample", kFailure);
  EXPECT_TRUE(ProcessFrame(0));
  EXPECT_TRUE(AwaitError());
  clock_.Set(3000);
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(TakeErrors(), ElementsAre("Failed to write sample: " + kFailureText));
}

TEST_F(MFEncoderWritingTest, AQueuedFrameKeepsThePictureItWasCapturedWith) {
  StartBusy();
  for (std::uint8_t luma = 20; luma < 30; ++luma) {
    EXPECT_TRUE(ProcessFrame(luma, 1, luma));
  }
  testing::Paint(*texture_.Get(), 200);
  stage_.HoldWrites(false);
  const auto samples = stage_.AwaitSamples(11);
  for (std::uint8_t i = 0; i < 10; ++i) {
    EXPECT_EQ(samples[i + 1U].luma, 20 + i);
  }
}

TEST_F(MFEncoderWritingTest, The101stFrameThatWaitsIsDroppedWithoutACopy) {
  StartBusy();
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(ProcessTexture(texture_.Get(), i));
  }
  EXPECT_FALSE(ProcessTexture(texture_.Get(), 100));
  EXPECT_FALSE(ProcessTexture(nullptr, 100)) << "it is not even looked at";
  EXPECT_THAT(TakeErrors(), IsEmpty());
  stage_.HoldWrites(false);
  EXPECT_EQ(stage_.AwaitSamples(101).back().time, 990'000);
  EXPECT_EQ(stage_.textures(), 101U);
  for (std::size_t i = 0; i < 100; ++i) {
    EXPECT_TRUE(ProcessTexture(texture_.Get(), static_cast<int>(200 + i)));
    stage_.AwaitSamples(102 + i);
  }
  EXPECT_EQ(stage_.textures(), 101U) << "the textures are used again";
}

TEST_F(MFEncoderWritingTest, AFewTexturesServeAnEncoderThatKeepsUp) {
  StartWithVideo();
  for (std::size_t i = 0; i < 50; ++i) {
    EXPECT_TRUE(ProcessTexture(texture_.Get(), static_cast<int>(i)));
    stage_.AwaitSamples(i + 1);
  }
  // The worker may still hold the last frame while the next one comes.
  EXPECT_LE(stage_.textures(), 3U);
}

TEST(TexturePool, GivesBackWhatAStallMadeItGrowBy) {
  const auto device = MakeCaptureDevice();
  D3D11_TEXTURE2D_DESC description{};
  MakeCaptureTexture(*device.Get(), 64, 48)->GetDesc(&description);
  TexturePool pool(*device.Get(), description);
  std::vector<Microsoft::WRL::ComPtr<ID3D11Texture2D>> all;
  {
    std::vector<PooledTexture> waiting(30);
    for (PooledTexture& texture : waiting) {
      ASSERT_EQ(pool.Take(texture), S_OK);
      all.emplace_back(texture.get());
    }
  }
  const auto heldByThePool = std::ranges::count_if(all, [](const auto& texture) {
    texture->AddRef();
    return texture->Release() > 1;
  });
  EXPECT_EQ(heldByThePool, static_cast<std::ptrdiff_t>(TexturePool::kMostFree));
}

TEST_F(MFEncoderWritingTest, ATextureIsNotUsedAgainWhileItsSampleIsHeld) {
  stage_.KeepSamples(true);
  StartWithVideo();
  EXPECT_TRUE(ProcessFrame(0, 1, 10));
  EXPECT_TRUE(ProcessFrame(1, 1, 20));
  stage_.AwaitSamples(2);
  EXPECT_TRUE(ProcessFrame(2, 1, 30));
  stage_.AwaitSamples(3);
  EXPECT_EQ(stage_.textures(), 3U);
  std::vector<std::uint8_t> lumas;
  for (const auto& sample : stage_.kept()) {
    lumas.push_back(testing::ReadSample(0, *sample.Get()).luma);
  }
  EXPECT_THAT(lumas, ElementsAre(10, 20, 30));
  EXPECT_TRUE(encoder_->Stop());
  encoder_.reset();
  stage_.KeepSamples(false);  // What is let go of after the pool is gone goes, too.
}

TEST_F(MFEncoderWritingTest, ATextureThatCannotBeEncodedIsRefused) {
  StartWithVideo();
  const auto bgra = MakeCaptureTexture(*device_.Get(), kWidth, kHeight, DXGI_FORMAT_B8G8R8A8_UNORM);
  const auto wide = MakeCaptureTexture(*device_.Get(), kWidth * 2, kHeight);
  const auto high = MakeCaptureTexture(*device_.Get(), kWidth, kHeight + 2);
  const auto otherDevice = MakeCaptureDevice();
  const auto foreign = MakeCaptureTexture(*otherDevice.Get(), kWidth, kHeight);
  EXPECT_FALSE(ProcessTexture(nullptr));
  EXPECT_FALSE(ProcessTexture(bgra.Get()));
  EXPECT_FALSE(ProcessTexture(wide.Get()));
  EXPECT_FALSE(ProcessTexture(high.Get()));
  EXPECT_FALSE(ProcessTexture(foreign.Get()));
  const std::string invalid = "Invalid frame data: texture is null or invalid";
  EXPECT_THAT(TakeErrors(), ElementsAre(invalid, "Unsupported texture format: 0x57",
                                        "Unsupported texture format: 0x67 in 128x48",
                                        "Unsupported texture format: 0x67 in 64x50", invalid));
  EXPECT_TRUE(ProcessFrame(7));
  EXPECT_EQ(stage_.AwaitSamples(1)[0].time, 70'000);
}

TEST_F(MFEncoderWritingTest, AFrameIsTakenOnlyWhileWritingAndWithAVideoStream) {
  MakeWithVideo();
  EXPECT_FALSE(ProcessFrame(0));
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_FALSE(ProcessFrame(0));
  const std::string text = "Cannot process video frame: not capturing or sink writer is null";
  EXPECT_THAT(TakeErrors(), ElementsAre(text, text));
  encoder_.reset();
  MakeEncoder();
  EXPECT_TRUE(encoder_->Start());
  EXPECT_FALSE(ProcessFrame(0));
  EXPECT_FALSE(ProcessTexture(nullptr));
  EXPECT_THAT(TakeErrors(), ElementsAre("Device manager not initialized",
                                        "Invalid frame data: texture is null or invalid"));
}

TEST_F(MFEncoderWritingTest, AFrameThatFindsNoTextureIsDropped) {
  StartWithVideo();
  {
    const testing::StandinFault fault("CreateDefaultTexture 0x80070005");
    EXPECT_FALSE(ProcessFrame(0));
  }
  const auto errors = TakeErrors();
  ASSERT_THAT(errors, SizeIs(1));
  EXPECT_THAT(errors[0], StartsWith("Failed to create frame texture: HRESULT: 0x80070005"));
  EXPECT_TRUE(ProcessFrame(1));
  stage_.AwaitSamples(1);
}

struct WriteFailure {
  std::string call;
  std::string error;
};

TEST_F(MFEncoderWritingTest, EachFailureOfAFrameLosesTheFrameAlone) {
  const std::vector<WriteFailure> failures{
      {"MFCreateDXGISurfaceBuffer", "Failed to create DXGI surface buffer: "},
      {"IMFDXGIBuffer::SetUnknown", "Failed to keep frame texture: "},
      {"SetCurrentLength", "Failed to set buffer length: "},
      {"MFCreateSample", "Failed to create media sample: "},
      {"AddBuffer", "Failed to add buffer to sample: "},
      {"SetSampleTime", "Failed to set sample time: "},
      {"SetSampleDuration", "Failed to set sample duration: "},
      {"WriteSample", "Failed to write sample: "},
  };
  StartWithVideo();
  std::size_t written = 0;
  for (const auto& [call, error] : failures) {
    SCOPED_TRACE(call);
    stage_.ForgetCalls();
    stage_.Fail(call, kFailure);
    EXPECT_TRUE(ProcessFrame(1));
    EXPECT_TRUE(stage_.AwaitCalls(call, 1));
    stage_.FailNothing();
    EXPECT_TRUE(ProcessFrame(2));
    EXPECT_EQ(stage_.AwaitSamples(++written).back().time, 20'000);
    EXPECT_THAT(TakeErrors(), ElementsAre(error + kFailureText));
  }
  EXPECT_EQ(stage_.samples().size(), written);
}

TEST_F(MFEncoderWritingTest, SoundBecomesSamplesOf40Milliseconds) {
  StartWithSound({{kSpeaker, FloatFormat()}});
  EXPECT_TRUE(ProcessAudio("speaker", 15'359, 1));
  EXPECT_TRUE(ProcessAudio("speaker", 15'361, 2));
  EXPECT_TRUE(ProcessAudio("speaker", 15'368, 3));
  const auto samples = stage_.AwaitSamples(3);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(samples[i].stream, 0U);
    EXPECT_EQ(samples[i].length, 15'360U);
    EXPECT_EQ(samples[i].bytes.size(), 15'360U);
    EXPECT_EQ(samples[i].time, static_cast<std::int64_t>(i) * 400'000);
    EXPECT_EQ(samples[i].duration, 400'000);
  }
  EXPECT_EQ(samples[0].bytes.front(), 1);
  EXPECT_EQ(samples[0].bytes.back(), 2);
  EXPECT_EQ(samples[2].bytes.front(), 3);
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_EQ(stage_.samples().size(), 3U) << "what does not fill a chunk is left";
}

TEST_F(MFEncoderWritingTest, TheFormatThatCameLastCutsBothStreams) {
  StartWithSound({{kSpeaker, FloatFormat()}, {kMicrophone, PcmFormat()}});
  EXPECT_TRUE(ProcessAudio("speaker", 1280));
  EXPECT_EQ(stage_.AwaitSamples(1)[0].length, 1280U);
  EXPECT_EQ(stage_.samples()[0].stream, 0U);
  EXPECT_EQ(stage_.samples()[0].duration, 160LL * 10'000'000 / 48'000);
  EXPECT_TRUE(ProcessAudio("microphone", 1280));
  const auto microphone = stage_.AwaitSamples(2)[1];
  EXPECT_EQ(microphone.stream, 1U);
  EXPECT_EQ(microphone.time, 0);
  EXPECT_EQ(microphone.duration, 400'000);
}

TEST_F(MFEncoderWritingTest, AChunkThatEndsWithinASampleIsRefused) {
  WaveFormat threeBytes = PcmFormat();
  threeBytes.blockAlign = 3;
  StartWithSound({{kMicrophone, threeBytes}});
  EXPECT_TRUE(ProcessAudio("microphone", 1280));
  EXPECT_TRUE(AwaitError());
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(TakeErrors(), ElementsAre("Audio data size mismatch. Expected: 1278, Actual: 1280"));
  EXPECT_THAT(stage_.samples(), IsEmpty());
}

TEST_F(MFEncoderWritingTest, SoundOfNoStreamIsRefused) {
  StartWithSound({{kMicrophone, PcmFormat()}});
  EXPECT_FALSE(ProcessAudio("Microphone", 1280));
  EXPECT_FALSE(ProcessAudio("", 1280));
  EXPECT_THAT(TakeErrors(), ElementsAre("Invalid stream name: Microphone", "Invalid stream name: "));
  EXPECT_TRUE(ProcessAudio("speaker", 1280));
  EXPECT_TRUE(ProcessAudio("microphone", 1280));
  stage_.AwaitSamples(1);
  EXPECT_TRUE(ProcessAudio("speaker", 0));
  EXPECT_TRUE(ProcessAudio("microphone", 1280));
  stage_.AwaitSamples(2);
  // The speaker's turn may come after both of the microphone's.
  EXPECT_TRUE(AwaitError());
  EXPECT_THAT(TakeErrors(), ElementsAre("Invalid stream name: speaker"));
}

TEST_F(MFEncoderWritingTest, SoundIsTakenOnlyWhileWriting) {
  MakeEncoder();
  const WaveFormat format = PcmFormat();
  EXPECT_TRUE(encoder_->CreateAudioStream(kMicrophone, &format));
  EXPECT_FALSE(ProcessAudio("microphone", 1280));
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_FALSE(ProcessAudio("microphone", 1280));
  EXPECT_THAT(stage_.samples(), IsEmpty());
  const std::string text = "Cannot process audio frame: not capturing or sink writer is null";
  EXPECT_THAT(TakeErrors(), ElementsAre(text, text));
}

TEST_F(MFEncoderWritingTest, EachFailureOfSoundLosesTheChunkAlone) {
  const std::vector<WriteFailure> failures{
      {"MFCreateMemoryBuffer", "Failed to create memory buffer: " + kFailureText},
      {"Lock", "Failed to lock buffer: " + kFailureText},
      {"room in the buffer", "Buffer too small. Required: 1280, Available: 1"},
      {"Unlock", "Failed to unlock buffer: " + kFailureText},
      {"SetCurrentLength", "Failed to set buffer length: " + kFailureText},
      {"MFCreateSample", "Failed to create media sample: " + kFailureText},
      {"AddBuffer", "Failed to add buffer to sample: " + kFailureText},
      {"SetSampleTime", "Failed to set sample time: " + kFailureText},
      {"SetSampleDuration", "Failed to set sample duration: " + kFailureText},
      {"WriteSample", "Failed to write audio sample: " + kFailureText},
  };
  StartWithSound({{kMicrophone, PcmFormat()}});
  std::size_t written = 0;
  std::int64_t time = 0;
  for (const auto& [call, error] : failures) {
    SCOPED_TRACE(call);
    stage_.Fail(call, kFailure);
    EXPECT_TRUE(ProcessAudio("microphone", 1280));
    ASSERT_TRUE(AwaitError());
    stage_.FailNothing();
    // A chunk that reached the sink writer leaves a gap of its length; others leave none.
    time += call == "WriteSample" ? 400'000 : 0;
    EXPECT_TRUE(ProcessAudio("microphone", 1280));
    EXPECT_EQ(stage_.AwaitSamples(++written).back().time, time);
    time += 400'000;
    EXPECT_THAT(TakeErrors(), ElementsAre(error));
  }
  EXPECT_EQ(stage_.calls("Lock").size(), stage_.calls("Unlock").size() + 1) << "all but the one that failed";
}

TEST_F(MFEncoderWritingTest, AnEmptyChunkIsRefused) {
  const auto platform = testing::MakeRecordingPlatform(stage_);
  SinkStreams streams;
  streams.speaker = AudioSinkStream{0, PcmFormat()};
  std::jthread([&] {
    SampleWriter writer(*platform, testing::MakeRecordingSinkWriter(stage_), streams);
    writer.WriteAudio(kSpeaker, {});
  }).join();
  EXPECT_THAT(TakeErrors(), ElementsAre("Audio data is empty"));
}

}  // namespace
}  // namespace brisolte
