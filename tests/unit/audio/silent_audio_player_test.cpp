#include "audio/silent_audio_player.h"

#include <wrl/client.h>

#include "audio_capture_fixture.h"
#include "failing_memory.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;
using testing::AudioCaptureTest;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::kFailure;
using testing::kFailureText;
using ::testing::Pair;
using ::testing::SizeIs;

class SilentPlayer : public AudioCaptureTest {
 protected:
  /// The player's client is the second of its device, as it is in a recording.
  HRESULT Initialize() {
    ComPtr<IMMDeviceEnumerator> enumerator;
    EXPECT_EQ(CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, IID_PPV_ARGS(&enumerator)),
              S_OK);
    ComPtr<IMMDevice> device;
    EXPECT_EQ(enumerator->GetDevice(L"speaker", &device), S_OK);
    ComPtr<IAudioClient> first;
    EXPECT_EQ(device->Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, &first), S_OK);
    return player_.InitializeSilentAudioPlayer(device.Get());
  }

  void Play() {
    EXPECT_EQ(Initialize(), S_OK);
    player_.StartSilentPlayback();
  }

  SilentAudioPlayer player_;
};

TEST_F(SilentPlayer, FillsWhatIsFreeAndDoesNotFlagItSilent) {
  service_.bufferFrames = 3;
  service_.SetPadding(1);
  Play();
  EXPECT_TRUE(service_.WaitFor("speaker.render.ReleaseBuffer", 3));
  player_.StopSilentPlayback();
  EXPECT_THAT(service_.released("speaker.render"), Each(Pair(2, 0)));
  EXPECT_THAT(service_.played(), ElementsAre(0xAC, 0xC5, 0x27, 0x37, 0xAC, 0xC5, 0x27, 0x37,  //
                                             0xAC, 0xC5, 0x27, 0x37, 0xAC, 0xC5, 0x27, 0x37));
}

TEST_F(SilentPlayer, LeavesPackedSamplesAsTheEngineGaveThem) {
  speaker().mixFormat = testing::ExtensibleFormat(testing::kPcmSubFormat, 24, 2, 48'000);
  service_.bufferFrames = 2;
  Play();
  EXPECT_TRUE(service_.WaitFor("speaker.render.ReleaseBuffer"));
  player_.StopSilentPlayback();
  EXPECT_THAT(service_.played(), ::testing::AllOf(SizeIs(12), Each(0xEE)));
}

TEST_F(SilentPlayer, WritesNothingIntoAFullBuffer) {
  service_.SetPadding(service_.bufferFrames);
  Play();
  EXPECT_TRUE(service_.WaitFor("speaker.player.GetCurrentPadding", 3));
  player_.StopSilentPlayback();
  EXPECT_EQ(service_.count("speaker.render.GetBuffer"), 0);
}

TEST_F(SilentPlayer, WritesNothingWhenMoreIsWaitingThanTheBufferHolds) {
  service_.SetPadding(service_.bufferFrames + 1);
  Play();
  EXPECT_TRUE(service_.WaitFor("speaker.player.GetCurrentPadding", 3));
  player_.StopSilentPlayback();
  EXPECT_EQ(service_.count("speaker.render.GetBuffer"), 0);
}

TEST_F(SilentPlayer, NeedsADevice) {
  EXPECT_EQ(player_.InitializeSilentAudioPlayer(nullptr), E_FAIL);
  EXPECT_TRUE(log_.has("[INFO] Initializing silent audio player"));
}

TEST_F(SilentPlayer, OnlyWarnsWhenItIsStartedWithoutAClient) {
  player_.StartSilentPlayback();
  EXPECT_THAT(log_.lines(),
              ElementsAre("[WARNING] Cannot start silent audio playback: client not initialized"));
}

TEST_F(SilentPlayer, DoesAndLogsNothingWhenItIsStoppedWithoutPlaying) {
  player_.StopSilentPlayback();
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(SilentPlayer, EndsItsThreadWhenItIsStopped) {
  Play();
  EXPECT_TRUE(service_.WaitFor("speaker.render.ReleaseBuffer"));
  player_.StopSilentPlayback();
  EXPECT_EQ(service_.count("speaker.player.Stop"), 1);
  EXPECT_TRUE(Logged("Silent audio playback thread started"));
  EXPECT_TRUE(Logged("Silent audio playback thread stopped"));
  EXPECT_TRUE(Logged("Stopping silent audio playback"));
  EXPECT_TRUE(Logged("Silent audio playback stopped"));
}

TEST_F(SilentPlayer, DoesWithoutItsThreadWhenThereIsNoMemoryForOne) {
  EXPECT_EQ(Initialize(), S_OK);
  {
    // Of the lines that are left out only the texts take memory: the allocation after the first is the
    // thread's.
    const testing::CapturedLog errors(LogLevel::kError);
    const testing::FailingMemory failing(1);
    player_.StartSilentPlayback();
    EXPECT_THAT(errors.lines(), ElementsAre("[ERROR] Failed to start silent audio thread: std::bad_alloc"));
  }
  const testing::CapturedLog log(LogLevel::kInfo);
  player_.StopSilentPlayback();
  EXPECT_THAT(log.lines(), IsEmpty()) << "nothing plays";
}

TEST_F(SilentPlayer, PlaysAgainWhenItIsStartedWhilePlaying) {
  Play();
  EXPECT_TRUE(service_.WaitFor("speaker.player.Start"));
  player_.StartSilentPlayback();
  EXPECT_EQ(service_.count("speaker.player.Stop"), 1);
  EXPECT_TRUE(service_.WaitFor("speaker.player.Start", 2));
}

TEST_F(SilentPlayer, EndsWhenItsClientDoesNotStart) {
  service_.Fail("speaker.player.Start", kFailure);
  Play();
  EXPECT_TRUE(service_.WaitFor("speaker.player.Start"));
  player_.StopSilentPlayback();
  EXPECT_TRUE(Logged("Failed to start silent audio client: " + kFailureText));
  EXPECT_EQ(service_.count("speaker.player.GetCurrentPadding"), 0);
  EXPECT_EQ(service_.count("speaker.player.Stop"), 0);
}

TEST_F(SilentPlayer, EndsWhenItsEndpointFails) {
  for (const auto& [call, text] :
       {std::pair{"speaker.player.GetCurrentPadding", "Failed to get silent audio padding: "},
        {"speaker.render.GetBuffer", "Failed to get silent audio buffer: "},
        {"speaker.render.ReleaseBuffer", "Failed to release silent audio buffer: "}}) {
    const auto stops = service_.count("speaker.player.Stop");
    service_.Fail(call, kFailure);
    Play();
    EXPECT_TRUE(service_.WaitFor("speaker.player.Stop", stops + 1));
    player_.StopSilentPlayback();
    EXPECT_TRUE(Logged(text + kFailureText));
    service_.Fail(call, S_OK);
  }
}

}  // namespace
}  // namespace brisolte
