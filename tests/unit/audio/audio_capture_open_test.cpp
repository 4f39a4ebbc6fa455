#include <mmdeviceapi.h>

#include <thread>

#include "audio/endpoint_stream.h"
#include "audio_capture_fixture.h"

namespace brisolte {
namespace {

using ::testing::AllOf;
using testing::AudioCaptureTest;
using testing::CapturedLog;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::kFailure;
using testing::kFailureText;
using ::testing::Not;
using ::testing::SizeIs;

class OpenAudioCapture : public AudioCaptureTest {};

TEST_F(OpenAudioCapture, OpensAMicrophoneStepByStep) {
  UseOnly("mic");
  const auto capture = Create();
  EXPECT_TRUE(capture->initialized());
  EXPECT_THAT(service_.calls(),
              ElementsAre("factory.CreateInstance", "enumerator.GetDevice", "mic.GetState", "mic.Activate",
                          "mic.client.GetMixFormat", "mic.client.Initialize", "mic.client.GetService",
                          "mic.client.Start"));
  EXPECT_THAT(log_.lines(),
              ElementsAre("[INFO] AudioCapture: Constructor", "[INFO] Initializing FFMPEG audio",
                          "[INFO] Initializing microphone with device ID: mic",
                          "[INFO] Using specified microphone device ID: mic",
                          "[INFO] Microphone audio format: Format Tag: 1, Channels: 1, Sample Rate: 16000, "
                          "Bits Per Sample: 16, Block Align: 2, Avg Bytes Per Sec: 32000, Extra Size: 0",
                          "[INFO] Microphone initialization completed successfully",
                          "[INFO] Microphone audio stream created successfully",
                          "[INFO] AudioCapture: Successfully initialized"));
}

TEST_F(OpenAudioCapture, LetsTheEngineChooseTheMicrophonesBuffer) {
  UseOnly("mic");
  const auto capture = Create();
  ASSERT_THAT(service_.initializeCalls(), SizeIs(1));
  const auto& call = service_.initializeCalls()[0];
  EXPECT_EQ(call.client, "mic.client");
  EXPECT_EQ(call.mode, AUDCLNT_SHAREMODE_SHARED);
  EXPECT_EQ(call.flags, 0U);
  EXPECT_EQ(call.duration, 0);
  EXPECT_EQ(call.periodicity, 0);
  EXPECT_EQ(call.format, microphone().mixFormat);
  EXPECT_FALSE(call.hasSession);
}

TEST_F(OpenAudioCapture, OpensASpeakersLoopbackWithAPlayer) {
  UseOnly("speaker");
  bool playing = false;
  service_.During("speaker.client.Start", [&] { playing = Logged("Silent audio playback started"); });
  const auto capture = Create();
  EXPECT_TRUE(capture->initialized());
  EXPECT_TRUE(playing);
  auto calls = service_.calls();
  // The player's thread is at work already; what opened the two clients came before it.
  calls.resize(12);
  EXPECT_THAT(calls, ElementsAre("factory.CreateInstance", "enumerator.GetDevice", "speaker.GetState",
                                 "speaker.Activate", "speaker.client.GetMixFormat", "speaker.Activate player",
                                 "speaker.player.GetMixFormat", "speaker.player.Initialize",
                                 "speaker.player.GetBufferSize", "speaker.player.GetService",
                                 "speaker.client.Initialize", "speaker.client.GetService"));
  EXPECT_TRUE(Logged("Silent audio player initialized successfully"));
  EXPECT_TRUE(Logged("Speaker initialization completed successfully"));
  EXPECT_TRUE(Logged("Speaker audio stream created successfully"));
}

TEST_F(OpenAudioCapture, AsksForALoopbackAndGivesThePlayerTenMilliseconds) {
  UseOnly("speaker");
  const auto capture = Create();
  ASSERT_THAT(service_.initializeCalls(), SizeIs(2));
  const auto& player = service_.initializeCalls()[0];
  EXPECT_EQ(player.client, "speaker.player");
  EXPECT_EQ(player.mode, AUDCLNT_SHAREMODE_SHARED);
  EXPECT_EQ(player.flags, 0U);
  EXPECT_EQ(player.duration, 100'000);
  EXPECT_EQ(player.periodicity, 0);
  EXPECT_EQ(player.format, speaker().mixFormat);
  EXPECT_FALSE(player.hasSession);
  const auto& client = service_.initializeCalls()[1];
  EXPECT_EQ(client.client, "speaker.client");
  EXPECT_EQ(client.mode, AUDCLNT_SHAREMODE_SHARED);
  EXPECT_EQ(client.flags, 0x20000U);
  EXPECT_EQ(client.duration, 0);
  EXPECT_EQ(client.periodicity, 0);
  EXPECT_EQ(client.format, speaker().mixFormat);
  EXPECT_FALSE(client.hasSession);
}

TEST_F(OpenAudioCapture, TellsTheEncoderOfTheMicrophoneAndThenTheSpeaker) {
  const auto capture = Create();
  ASSERT_THAT(encoder_.streams(), SizeIs(2));
  const auto& [first, microphoneFormat] = encoder_.streams()[0];
  EXPECT_EQ(first, AudioStreamKind::kMicrophone);
  EXPECT_EQ(microphoneFormat->sampleRate, 16'000U);
  EXPECT_EQ(SampleTypeOf(*microphoneFormat), SampleType::kSigned16);
  const auto& [second, speakerFormat] = encoder_.streams()[1];
  EXPECT_EQ(second, AudioStreamKind::kSpeaker);
  EXPECT_EQ(speakerFormat->channels, 2);
  EXPECT_EQ(SampleTypeOf(*speakerFormat), SampleType::kFloat32);
}

TEST_F(OpenAudioCapture, OfNoEndpointTouchesNone) {
  UseOnly("neither");
  const auto capture = Create();
  EXPECT_FALSE(capture->initialized());
  EXPECT_THAT(service_.calls(), ElementsAre("factory.CreateInstance"));
  EXPECT_THAT(encoder_.streams(), IsEmpty());
  EXPECT_TRUE(log_.has("[ERROR] Failed to initialize both microphone and speaker streams"));
  EXPECT_TRUE(log_.has("[ERROR] AudioCapture: Failed to initialize audio"));
}

struct FailingStep {
  std::string call;
  std::string text;
};

void PrintTo(const FailingStep& step, std::ostream* out) {
  *out << step.call;
}

class MicrophoneStep : public AudioCaptureTest, public ::testing::WithParamInterface<FailingStep> {};

TEST_P(MicrophoneStep, ThatFailsLeavesTheMicrophoneOutAndNothingOpen) {
  UseOnly("mic");
  service_.Fail(GetParam().call, kFailure);
  const auto capture = Create();
  EXPECT_FALSE(capture->initialized());
  EXPECT_TRUE(log_.has("[ERROR] " + GetParam().text + kFailureText)) << log_.text();
  EXPECT_TRUE(log_.has("[ERROR] Failed to initialize microphone"));
  EXPECT_TRUE(log_.has("[ERROR] AudioCapture: Failed to initialize audio"));
  EXPECT_THAT(encoder_.streams(), IsEmpty());
}

TEST_P(MicrophoneStep, ThatFailsLeavesTheSpeakerToRecord) {
  service_.Fail(GetParam().call == "enumerator.GetDevice" ? "nothing" : GetParam().call, kFailure);
  if (GetParam().call == "enumerator.GetDevice") {
    settings_.microphoneDeviceId = "unknown";
  }
  const auto capture = Create();
  EXPECT_TRUE(capture->initialized());
  ASSERT_THAT(encoder_.streams(), SizeIs(1));
  EXPECT_EQ(encoder_.streams()[0].first, AudioStreamKind::kSpeaker);
}

INSTANTIATE_TEST_SUITE_P(
    Each, MicrophoneStep,
    ::testing::Values(FailingStep{"enumerator.GetDevice", "Failed to get microphone device by ID: "},
                      FailingStep{"mic.GetState", "Failed to get microphone device state: "},
                      FailingStep{"mic.Activate", "Failed to activate microphone device: "},
                      FailingStep{"mic.client.GetMixFormat", "Failed to get microphone mix format: "},
                      FailingStep{"mic.client.Initialize", "Failed to initialize microphone audio client: "},
                      FailingStep{"mic.client.GetService", "Failed to get microphone capture client: "},
                      FailingStep{"mic.client.Start", "Failed to start microphone audio client: "}));

class SpeakerStep : public AudioCaptureTest, public ::testing::WithParamInterface<FailingStep> {};

TEST_P(SpeakerStep, ThatFailsLeavesTheSpeakerOutAndNothingOpen) {
  UseOnly("speaker");
  service_.Fail(GetParam().call, kFailure);
  const auto capture = Create();
  EXPECT_FALSE(capture->initialized());
  EXPECT_TRUE(Logged(GetParam().text + kFailureText)) << log_.text();
  EXPECT_TRUE(Logged("Failed to initialize speaker\n"));
  EXPECT_THAT(encoder_.streams(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Each, SpeakerStep,
    ::testing::Values(FailingStep{"enumerator.GetDevice", "Failed to get speaker device by ID: "},
                      FailingStep{"speaker.GetState", "Failed to get speaker device state: "},
                      FailingStep{"speaker.Activate", "Failed to activate speaker device: "},
                      FailingStep{"speaker.client.GetMixFormat", "Failed to get speaker mix format: "},
                      FailingStep{"speaker.client.Initialize", "Failed to initialize speaker audio client: "},
                      FailingStep{"speaker.client.GetService", "Failed to get speaker capture client: "},
                      FailingStep{"speaker.client.Start", "Failed to start speaker audio client: "}));

class PlayerStep : public AudioCaptureTest, public ::testing::WithParamInterface<FailingStep> {};

TEST_P(PlayerStep, ThatFailsNeverPreventsTheLoopback) {
  UseOnly("speaker");
  service_.Fail(GetParam().call, kFailure);
  const auto capture = Create();
  EXPECT_TRUE(capture->initialized());
  EXPECT_TRUE(log_.has("[ERROR] " + GetParam().text + kFailureText)) << log_.text();
  EXPECT_TRUE(log_.has("[ERROR] Failed to initialize silent audio player: " + kFailureText));
  EXPECT_TRUE(
      log_.has("[WARNING] Continuing with speaker capture initialization without silent audio player"));
  EXPECT_TRUE(log_.has("[WARNING] Cannot start silent audio playback: client not initialized"));
  EXPECT_EQ(service_.count("speaker.player.Start"), 0);
  EXPECT_EQ(service_.count("speaker.client.Start"), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Each, PlayerStep,
    ::testing::Values(FailingStep{"speaker.Activate player", "Failed to activate silent audio client: "},
                      FailingStep{"speaker.player.GetMixFormat", "Failed to get silent audio mix format: "},
                      FailingStep{"speaker.player.Initialize", "Failed to initialize silent audio client: "},
                      FailingStep{"speaker.player.GetBufferSize", "Failed to get silent audio buffer size: "},
                      FailingStep{"speaker.player.GetService",
                                  "Failed to get silent audio render client: "}));

TEST_F(OpenAudioCapture, NamesTheStateOfAnEndpointThatIsNotActive) {
  for (const DWORD state : {2U, 4U, 8U}) {
    const CapturedLog log;
    microphone().state = state;
    const auto capture = Create();
    EXPECT_TRUE(capture->initialized());
    EXPECT_TRUE(log.has("[ERROR] Microphone device is not active, current state: " + std::to_string(state)));
  }
  speaker().state = DEVICE_STATE_UNPLUGGED;
  EXPECT_FALSE(Create()->initialized());
  EXPECT_TRUE(log_.has("[ERROR] Speaker device is not active, current state: 8"));
}

TEST_F(OpenAudioCapture, LeavesOutAStreamThatTheEncoderRefuses) {
  encoder_.acceptsStream[AudioStreamKind::kMicrophone] = false;
  const auto capture = Create();
  EXPECT_TRUE(capture->initialized());
  EXPECT_TRUE(log_.has("[ERROR] Failed to create microphone audio stream"));
  service_.Queue("mic", {.bytes = {1, 2}, .frames = 1});
  service_.Queue("speaker", {.bytes = {1, 2, 3, 4, 5, 6, 7, 8}, .frames = 1});
  EXPECT_TRUE(capture->Start());
  EXPECT_TRUE(encoder_.WaitForBytes("speaker", 8));
  capture->Stop();
  EXPECT_THAT(service_.calls(), Not(Contains("mic.capture.GetNextPacketSize")));
}

TEST_F(OpenAudioCapture, ThatNoEncoderStreamCameOfLetsEverythingGo) {
  encoder_.acceptsStream = {};
  const auto capture = Create();
  EXPECT_FALSE(capture->initialized());
  EXPECT_TRUE(Logged("Failed to create speaker audio stream"));
  EXPECT_THAT(service_.calls(), AllOf(Contains("mic.client.Stop"), Contains("speaker.client.Stop")));
  // The factory is what is left: the registration holds it.
  EXPECT_EQ(service_.liveObjects(), 1);
}

TEST_F(OpenAudioCapture, ReportsAMissingFormatAndGivesTheEncoderNone) {
  UseOnly("mic");
  microphone().mixFormat.clear();
  const auto capture = Create();
  EXPECT_TRUE(log_.has("[INFO] format is null"));
  ASSERT_THAT(encoder_.streams(), SizeIs(1));
  EXPECT_FALSE(encoder_.streams()[0].second);
  service_.Queue("mic", {.bytes = {1, 2}, .frames = 1});
  EXPECT_TRUE(capture->Start());
  capture->Stop();
  EXPECT_EQ(encoder_.deliveries("microphone"), 0);
}

TEST_F(OpenAudioCapture, WithoutAnEnumeratorIsNotInitialized) {
  service_.Fail("factory.CreateInstance", kFailure);
  const auto capture = Create();
  EXPECT_FALSE(capture->initialized());
  EXPECT_THAT(log_.lines(),
              ElementsAre("[INFO] AudioCapture: Constructor",
                          "[ERROR] AudioCapture: Failed to create device enumerator: " + kFailureText));
  EXPECT_FALSE(capture->Start());
}

TEST_F(OpenAudioCapture, CleansUpAnOpenStreamBeforeItIsOpenedAgain) {
  Microsoft::WRL::ComPtr<IMMDeviceEnumerator> enumerator;
  ASSERT_EQ(CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, IID_PPV_ARGS(&enumerator)),
            S_OK);
  EncoderLink link(encoder_);
  SoundControl control;
  EndpointStream stream(MicrophoneRole(), link, control);
  EXPECT_TRUE(stream.Open(*enumerator.Get(), "mic"));
  EXPECT_EQ(log_.count("[INFO] Microphone resources cleaned up"), 0);
  EXPECT_TRUE(stream.Open(*enumerator.Get(), "mic"));
  EXPECT_EQ(log_.count("[INFO] Microphone resources cleaned up"), 1);
  EXPECT_EQ(service_.count("mic.client.Stop"), 1);
  EXPECT_FALSE(stream.Open(*enumerator.Get(), ""));
  EXPECT_TRUE(log_.has("[INFO] Microphone device ID is empty"));
  EXPECT_EQ(stream.format(), nullptr);
}

CaptureSettings WithMicrophone(const std::string& id) {
  CaptureSettings settings;
  settings.microphoneDeviceId = id;
  return settings;
}

TEST(AudioCaptureThread, MustNotBeInTheMultithreadedApartment) {
  const CapturedLog log;
  testing::RecordingEncoder encoder;
  std::jthread([&] {
    const ComApartment com(COINIT_MULTITHREADED);
    const auto capture = CreateAudioCapture(WithMicrophone("mic"), encoder);
    EXPECT_FALSE(capture->initialized());
    EXPECT_FALSE(capture->Start());
  }).join();
  EXPECT_THAT(log.text(), HasSubstr("[ERROR] AudioCapture: Failed to initialize COM: HRESULT: 0x80010106"));
  EXPECT_THAT(log.text(), HasSubstr(" (HRESULT: 0x80010106)\n"));
  EXPECT_THAT(encoder.streams(), IsEmpty());
}

TEST(AudioCaptureThread, IsOutOfItsApartmentOnceACaptureFailedToOpen) {
  const CapturedLog log;
  testing::RecordingEncoder encoder;
  std::jthread([&] {
    const auto capture = CreateAudioCapture(WithMicrophone("no such device"), encoder);
    EXPECT_FALSE(capture->initialized());
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    EXPECT_EQ(CoGetApartmentType(&type, &qualifier), CO_E_NOTINITIALIZED);
  }).join();
}

}  // namespace
}  // namespace brisolte
