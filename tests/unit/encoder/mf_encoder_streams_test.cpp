#include "encoder/mf/sink_streams.h"

#include <algorithm>

#include "mf/mf_encoder_fixture.h"
#include "mf/recording_sink_writer.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::FloatFormat;
using ::testing::IsEmpty;
using testing::kFailure;
using testing::kFailureText;
using testing::PcmFormat;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr auto kMicrophone = AudioStreamKind::kMicrophone;
constexpr auto kSpeaker = AudioStreamKind::kSpeaker;

class MFEncoderStreamsTest : public testing::MFEncoderTest {
 protected:
  bool AddVideo() { return encoder_->InitializeVideoEncoder(1280, 720, nullptr); }
  bool AddAudio(AudioStreamKind kind, const WaveFormat& format) {
    return encoder_->CreateAudioStream(kind, &format);
  }
};

const std::string kVideoInput =
    "MF_MT_MAJOR_TYPE = MFMediaType_Video, MF_MT_SUBTYPE = MFVideoFormat_NV12, MF_MT_FRAME_SIZE = 1280 : "
    "720, MF_MT_FRAME_RATE = 25 : 1, MF_MT_PIXEL_ASPECT_RATIO = 1 : 1";
const std::string kVideoOutputEnd =
    "MF_MT_FRAME_RATE = 25 : 1, MF_MT_MAX_KEYFRAME_SPACING = 25, MF_MT_PIXEL_ASPECT_RATIO = 1 : 1, "
    "MF_MT_FRAME_SIZE = 1280 : 720, MF_MT_INTERLACE_MODE = 2";

TEST_F(MFEncoderStreamsTest, H264IsDescribedFieldByField) {
  MakeEncoder();
  EXPECT_TRUE(AddVideo());
  EXPECT_THAT(stage_.types(),
              ElementsAre("output 0: MF_MT_MAJOR_TYPE = MFMediaType_Video, MF_MT_SUBTYPE = "
                          "MFVideoFormat_H264, MF_MT_AVG_BITRATE = 3000000, "
                          "{8D0F5A49-6B9B-4F95-9A8E-4B8D8C0C0C88} = 66, "
                          "{8D0F5A4A-6B9B-4F95-9A8E-4B8D8C0C0C88} = 40, " +
                              kVideoOutputEnd,
                          "input 0: " + kVideoInput, "parameters 0: MF_SINK_WRITER_D3D_MANAGER = an object"));
  EXPECT_TRUE(log_.has("[INFO] Successfully set device manager for video stream"));
}

TEST_F(MFEncoderStreamsTest, HevcIsDescribedFieldByField) {
  settings_.encoderName = "mf_hevc";
  MakeEncoder();
  EXPECT_TRUE(AddVideo());
  EXPECT_THAT(stage_.types(),
              ElementsAre("output 0: MF_MT_MAJOR_TYPE = MFMediaType_Video, MF_MT_SUBTYPE = "
                          "MFVideoFormat_HEVC, MF_MT_AVG_BITRATE = 3000000, "
                          "{DFA21BAE-245A-4C94-A56C-D01CC00CB9D6} = 1, "
                          "{DFA21BAF-245A-4C94-A56C-D01CC00CB9D6} = 40, " +
                              kVideoOutputEnd,
                          "input 0: " + kVideoInput, "parameters 0: MF_SINK_WRITER_D3D_MANAGER = an object"));
}

TEST_F(MFEncoderStreamsTest, AnyOtherNameDescribesNoEncoder) {
  settings_.encoderName = "MF_H264";
  MakeEncoder();
  EXPECT_TRUE(AddVideo());
  EXPECT_EQ(stage_.types().front(), "output 0: MF_MT_MAJOR_TYPE = MFMediaType_Video, " + kVideoOutputEnd);
}

TEST_F(MFEncoderStreamsTest, WithoutAManagerTheInputHasNoAttributes) {
  const auto platform = testing::MakeRecordingPlatform(stage_);
  const MFSession session(*platform);
  const auto writer = testing::MakeRecordingSinkWriter(stage_);
  const auto added = AddVideoStream(*platform, *writer.Get(), settings_, 1280, 720, nullptr);
  ASSERT_TRUE(added);
  EXPECT_EQ(added->index, 0U);
  EXPECT_TRUE(log_.has("[INFO] Device manager not available for video stream"));
  EXPECT_THAT(stage_.calls("SetInputMediaType"),
              ElementsAre("SetInputMediaType stream 0, the type, without attributes"));
  stage_.Fail("SetInputMediaType", kFailure);
  EXPECT_FALSE(AddVideoStream(*platform, *writer.Get(), settings_, 1280, 720, nullptr));
  EXPECT_THAT(TakeErrors(), ElementsAre("Failed to set input media type: " + kFailureText));
}

struct StreamFailure {
  std::string call;
  int skip;
  std::string error;
};

TEST_F(MFEncoderStreamsTest, EachFailureOfVideoHasItsText) {
  const std::vector<StreamFailure> failures{
      {"MFCreateMediaType", 0, "Failed to create media type: "},
      {"SetGUID MF_MT_MAJOR_TYPE", 0, "Failed to set major type: "},
      {"SetGUID MF_MT_SUBTYPE", 0, "Failed to set subtype: "},
      {"SetUINT32 MF_MT_AVG_BITRATE", 0, "Failed to set average bitrate: "},
      {"SetUINT32 {8D0F5A49", 0, "Failed to set profile: "},
      {"SetUINT32 {8D0F5A4A", 0, "Failed to set level: "},
      {"SetUINT64 MF_MT_FRAME_RATE", 0, "Failed to set frame rate: "},
      {"SetUINT32 MF_MT_MAX_KEYFRAME_SPACING", 0, "Failed to set max keyframe spacing: "},
      {"SetUINT64 MF_MT_PIXEL_ASPECT_RATIO", 0, "Failed to set pixel aspect ratio: "},
      {"SetUINT64 MF_MT_FRAME_SIZE", 0, "Failed to set frame size: "},
      {"SetUINT32 MF_MT_INTERLACE_MODE", 0, "Failed to set interlace mode: "},
      {"AddStream", 0, "Failed to add video stream: "},
      {"MFCreateMediaType", 1, "Failed to create input media type: "},
      {"SetGUID MF_MT_MAJOR_TYPE", 1, "Failed to set input major type: "},
      {"SetGUID MF_MT_SUBTYPE", 1, "Failed to set input subtype: "},
      {"SetUINT64 MF_MT_FRAME_SIZE", 1, "Failed to set input frame size: "},
      {"SetUINT64 MF_MT_FRAME_RATE", 1, "Failed to set input frame rate: "},
      {"SetUINT64 MF_MT_PIXEL_ASPECT_RATIO", 1, "Failed to set input pixel aspect ratio: "},
      {"MFCreateAttributes", 0, "Failed to create attributes: "},
      {"SetUnknown MF_SINK_WRITER_D3D_MANAGER", 0, "Failed to set device manager attribute: "},
      {"SetInputMediaType", 0, "Failed to set input media type with device manager: "},
  };
  for (const auto& [call, skip, error] : failures) {
    SCOPED_TRACE(error);
    MakeEncoder();
    stage_.Fail(call, kFailure, skip);
    EXPECT_FALSE(AddVideo());
    EXPECT_THAT(TakeErrors(), ElementsAre(error + kFailureText));
    stage_.FailNothing();
    EXPECT_TRUE(AddVideo()) << "it may be tried again";
    encoder_.reset();
  }
}

TEST_F(MFEncoderStreamsTest, EachFailureOfSoundHasItsText) {
  const std::vector<StreamFailure> failures{
      {"MFCreateMediaType", 0, "Failed to create audio input media type: "},
      {"SetGUID MF_MT_MAJOR_TYPE", 0, "Failed to set major type: "},
      {"SetGUID MF_MT_SUBTYPE", 0, "Failed to set subtype: "},
      {"SetUINT32 MF_MT_AUDIO_NUM_CHANNELS", 0, "Failed to set channels: "},
      {"SetUINT32 MF_MT_AUDIO_SAMPLES_PER_SECOND", 0, "Failed to set sample rate: "},
      {"SetUINT32 MF_MT_AUDIO_BITS_PER_SAMPLE", 0, "Failed to set bits per sample: "},
      {"SetUINT32 MF_MT_AUDIO_BLOCK_ALIGNMENT", 0, "Failed to set block alignment: "},
      {"SetUINT32 MF_MT_AUDIO_AVG_BYTES_PER_SECOND", 0, "Failed to set average bytes per second: "},
      {"MFCreateMediaType", 1, "Failed to create audio output media type: "},
      {"SetGUID MF_MT_MAJOR_TYPE", 1, "Failed to set output major type: "},
      {"SetGUID MF_MT_SUBTYPE", 1, "Failed to set output subtype: "},
      {"SetUINT32 MF_MT_AUDIO_NUM_CHANNELS", 1, "Failed to set output channels: "},
      {"SetUINT32 MF_MT_AUDIO_SAMPLES_PER_SECOND", 1, "Failed to set output sample rate: "},
      {"SetUINT32 MF_MT_AUDIO_BITS_PER_SAMPLE", 1, "Failed to set output bits per sample: "},
      {"SetUINT32 MF_MT_AUDIO_AVG_BYTES_PER_SECOND", 1, "Failed to set output bitrate: "},
      {"AddStream", 0, "Failed to add audio stream: "},
      {"SetInputMediaType", 0, "Failed to set input media type: "},
  };
  for (const auto& [call, skip, error] : failures) {
    SCOPED_TRACE(error);
    MakeEncoder();
    stage_.Fail(call, kFailure, skip);
    EXPECT_FALSE(AddAudio(kMicrophone, FloatFormat()));
    EXPECT_THAT(TakeErrors(), ElementsAre(error + kFailureText));
    stage_.FailNothing();
    EXPECT_TRUE(AddAudio(kMicrophone, FloatFormat()));
    encoder_.reset();
  }
}

struct TagCase {
  std::uint16_t tag;
  bool floatingPoint;
  std::string subtype;
};

TEST_F(MFEncoderStreamsTest, SoundOfEachTagAndSourceIsDescribedFieldByField) {
  const std::vector<TagCase> cases{{WaveFormat::kIeeeFloatTag, true, "MFAudioFormat_Float"},
                                   {WaveFormat::kPcmTag, false, "MFAudioFormat_PCM"},
                                   {WaveFormat::kExtensibleTag, true, "MFAudioFormat_Float"},
                                   {WaveFormat::kExtensibleTag, false, "MFAudioFormat_PCM"}};
  settings_.audioBitrate = 128'007;  // of which whole bytes are asked for
  for (const AudioStreamKind kind : {kMicrophone, kSpeaker}) {
    for (const auto& [tag, floatingPoint, subtype] : cases) {
      SCOPED_TRACE(std::to_string(tag) + " " + subtype);
      WaveFormat format = FloatFormat();
      format.formatTag = tag;
      format.floatingPoint = floatingPoint;
      MakeEncoder();
      const std::size_t before = stage_.types().size();
      const CapturedLog log(LogLevel::kInfo);
      EXPECT_TRUE(AddAudio(kind, format));
      const std::string facts =
          "Channels: 2, Sample Rate: 48000, Bits per sample: 32, Block align: 8, Avg bytes per sec: 384000, "
          "Format Tag: " +
          std::to_string(tag);
      EXPECT_THAT(log.lines(),
                  ElementsAre("[INFO] Device format: " + facts,
                              kind == kMicrophone ? "[INFO] Configuring microphone stream"
                                                  : "[INFO] Configuring speaker stream",
                              "[INFO] Input audio subtype set to " + subtype,
                              "[INFO] Audio stream configured successfully. Stream index: 0, " + facts));
      auto types = stage_.types();
      types.erase(types.begin(), types.begin() + static_cast<std::ptrdiff_t>(before));
      EXPECT_THAT(
          types,
          ElementsAre("output 0: MF_MT_MAJOR_TYPE = MFMediaType_Audio, MF_MT_SUBTYPE = MFAudioFormat_AAC, "
                      "MF_MT_AUDIO_NUM_CHANNELS = 2, MF_MT_AUDIO_SAMPLES_PER_SECOND = 48000, "
                      "MF_MT_AUDIO_BITS_PER_SAMPLE = 16, MF_MT_AUDIO_AVG_BYTES_PER_SECOND = 16000",
                      "input 0: MF_MT_MAJOR_TYPE = MFMediaType_Audio, MF_MT_SUBTYPE = " + subtype +
                          ", MF_MT_AUDIO_NUM_CHANNELS = 2, MF_MT_AUDIO_SAMPLES_PER_SECOND = 48000, "
                          "MF_MT_AUDIO_BITS_PER_SAMPLE = 32, MF_MT_AUDIO_BLOCK_ALIGNMENT = 8, "
                          "MF_MT_AUDIO_AVG_BYTES_PER_SECOND = 384000"));
      encoder_.reset();
    }
  }
}

TEST_F(MFEncoderStreamsTest, SoundThatCannotBeTakenIsRefused) {
  MakeEncoder();
  WaveFormat format = FloatFormat();
  EXPECT_FALSE(encoder_->CreateAudioStream(kMicrophone, nullptr));
  EXPECT_FALSE(AddAudio(static_cast<AudioStreamKind>(3), format));
  format.formatTag = 2;
  EXPECT_FALSE(AddAudio(kMicrophone, format));
  format = FloatFormat();
  format.sampleRate = 0;
  EXPECT_FALSE(AddAudio(kSpeaker, format));
  format = FloatFormat();
  format.blockAlign = 0;
  EXPECT_FALSE(AddAudio(kSpeaker, format));
  const std::string uncounted = "Device format has no sample rate or block alignment";
  EXPECT_THAT(TakeErrors(), ElementsAre("Device format is null", "Invalid stream type: 3",
                                        "Unsupported audio format tag: 2", uncounted, uncounted));
  EXPECT_THAT(stage_.calls("AddStream"), IsEmpty());
}

TEST_F(MFEncoderStreamsTest, SoundOfAFormatThatAacDoesNotHaveIsEncodedInTheNearest) {
  MakeEncoder();
  WaveFormat format = FloatFormat();
  format.sampleRate = 96'000;
  format.averageBytesPerSecond = 768'000;
  EXPECT_TRUE(AddAudio(kSpeaker, format));
  EXPECT_THAT(stage_.types().front(), ::testing::EndsWith("MF_MT_AUDIO_NUM_CHANNELS = 2, "
                                                          "MF_MT_AUDIO_SAMPLES_PER_SECOND = 48000, "
                                                          "MF_MT_AUDIO_BITS_PER_SAMPLE = 16, "
                                                          "MF_MT_AUDIO_AVG_BYTES_PER_SECOND = 16000"));
  EXPECT_THAT(stage_.types().back(), ::testing::HasSubstr("MF_MT_AUDIO_SAMPLES_PER_SECOND = 96000"));
  EXPECT_TRUE(
      log_.has("[INFO] AAC does not come with 96000 Hz, 2 channels, 128000 bit/s; "
               "encoding with 48000 Hz, 2 channels, 128000 bit/s"));
}

TEST_F(MFEncoderStreamsTest, WhereTheSystemDoesNotSayWhatItHasItIsAskedForWhatIsWanted) {
  MakeEncoder();
  stage_.Fail("MFTranscodeGetAudioOutputAvailableTypes", kFailure);
  EXPECT_TRUE(AddAudio(kMicrophone, PcmFormat()));
  EXPECT_THAT(stage_.types().front(), ::testing::HasSubstr("MF_MT_AUDIO_SAMPLES_PER_SECOND = 16000"));
  EXPECT_THAT(TakeErrors(), IsEmpty());
}

// Its stream would stay in the sink writer without an input, and let nothing begin.
TEST_F(MFEncoderStreamsTest, ARefusedSoundLeavesTheRecordingWithoutThatSoundAndNothingElse) {
  MakeEncoder();
  EXPECT_TRUE(AddVideo());
  EXPECT_TRUE(AddAudio(kMicrophone, FloatFormat()));
  stage_.Fail("SetInputMediaType stream 2", kFailure);
  stage_.ForgetCalls();
  EXPECT_FALSE(AddAudio(kSpeaker, PcmFormat()));
  EXPECT_THAT(TakeErrors(), ElementsAre("Failed to set input media type: " + kFailureText));
  EXPECT_THAT(stage_.calls("Release the sink writer"), SizeIs(1));
  EXPECT_THAT(stage_.calls("SetInputMediaType"),
              ElementsAre("SetInputMediaType stream 2, the type, without attributes",
                          "SetInputMediaType stream 0, the type, with the attributes",
                          "SetInputMediaType stream 1, the type, without attributes"));
  const auto types = stage_.types();
  constexpr std::ptrdiff_t kOfBoth = 5;
  ASSERT_GE(types.size(), 2 * kOfBoth);
  EXPECT_TRUE(std::equal(types.begin(), types.begin() + kOfBoth, types.end() - kOfBoth)) << "the same again";
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(TakeErrors(), IsEmpty());
}

TEST_F(MFEncoderStreamsTest, EachStreamHasTheNextIndex) {
  MakeEncoder();
  EXPECT_TRUE(AddAudio(kSpeaker, FloatFormat()));
  EXPECT_TRUE(AddVideo());
  EXPECT_TRUE(AddAudio(kMicrophone, PcmFormat()));
  EXPECT_THAT(stage_.calls("SetInputMediaType"),
              ElementsAre(StartsWith("SetInputMediaType stream 0"), StartsWith("SetInputMediaType stream 1"),
                          StartsWith("SetInputMediaType stream 2")));
}

TEST_F(MFEncoderStreamsTest, AStreamIsAddedOnce) {
  MakeEncoder();
  EXPECT_TRUE(AddVideo());
  EXPECT_TRUE(AddAudio(kMicrophone, PcmFormat()));
  EXPECT_TRUE(AddAudio(kSpeaker, PcmFormat()));
  EXPECT_FALSE(AddVideo());
  EXPECT_FALSE(AddAudio(kMicrophone, PcmFormat()));
  EXPECT_FALSE(AddAudio(kSpeaker, PcmFormat()));
  EXPECT_THAT(TakeErrors(), ElementsAre("Failed to add video stream: there is one already",
                                        "Failed to add audio stream: there is one already",
                                        "Failed to add audio stream: there is one already"));
  EXPECT_EQ(stage_.calls("AddStream").size(), 3U);
}

TEST_F(MFEncoderStreamsTest, ThereAreNoStreamsAfterTheEnd) {
  MakeEncoder();
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_FALSE(AddVideo());
  EXPECT_FALSE(AddAudio(kMicrophone, PcmFormat()));
  EXPECT_FALSE(encoder_->Start());
  EXPECT_FALSE(encoder_->Initialize());
  EXPECT_THAT(TakeErrors(), ElementsAre("Sink Writer not initialized", "Sink Writer not initialized",
                                        "Sink Writer not initialized", "Sink Writer not initialized"));
}

}  // namespace
}  // namespace brisolte
