#include <chrono>
#include <new>
#include <stdexcept>
#include <thread>
#include <utility>

#include "audio_capture_fixture.h"
#include "failing_memory.h"

namespace brisolte {
namespace {

using testing::AudioCaptureTest;
using ::testing::Contains;
using ::testing::ElementsAre;
using testing::FakePacket;
using ::testing::Pair;

class RunAudioCapture : public AudioCaptureTest {
 protected:
  // Frames of the microphone have two bytes.
  void QueueMicrophone(std::initializer_list<std::uint8_t> bytes) {
    service_.Queue("mic", {.bytes = bytes, .frames = static_cast<UINT32>(bytes.size() / 2)});
  }

  /// Waits until what is waiting now was polled.
  bool WaitForAnotherPoll(const std::string& id) {
    const std::string poll = id + ".capture.GetNextPacketSize";
    return service_.WaitFor(poll, service_.count(poll) + 2);
  }

  /// A worker that still ran would take what is queued now, within a millisecond or two.
  void ExpectNoMorePolls() {
    const auto polls = service_.count("mic.capture.GetNextPacketSize");
    QueueMicrophone({7, 8});
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(service_.count("mic.capture.GetNextPacketSize"), polls);
  }

  std::unique_ptr<CaptureSource> CreateStarted() {
    auto capture = Create();
    EXPECT_TRUE(capture->Start());
    return capture;
  }
};

TEST_F(RunAudioCapture, GathersWaitingPacketsIntoOneDelivery) {
  UseOnly("mic");
  QueueMicrophone({1, 2, 3, 4});
  QueueMicrophone({5, 6});
  const auto capture = CreateStarted();
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 6));
  capture->Stop();
  EXPECT_THAT(encoder_.delivered("microphone"), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(encoder_.deliveries("microphone"), 1);
  EXPECT_THAT(service_.released("mic.capture"), ElementsAre(Pair(2, 0), Pair(1, 0)));
}

TEST_F(RunAudioCapture, DeliversEachStreamAtItsVolumeAndTellsItsLevel) {
  UseOnly("mic");
  controls_->microphone.SetVolume(0.5);
  controls_->speaker.Mute(true);
  QueueMicrophone({0x00, 0x20});
  const auto capture = CreateStarted();
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 2));
  EXPECT_EQ(controls_->microphone.TakeLevel(), 0.125F);
  controls_->microphone.Mute(true);
  QueueMicrophone({0x00, 0x20, 0x00, 0x20});
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 6));
  capture->Stop();
  EXPECT_THAT(encoder_.delivered("microphone"), ElementsAre(0x00, 0x10, 0x00, 0x08, 0, 0));
}

TEST_F(RunAudioCapture, DeliversEachStreamUnderItsName) {
  QueueMicrophone({1, 2});
  service_.Queue("speaker", {.bytes = {1, 2, 3, 4, 5, 6, 7, 8}, .frames = 1});
  const auto capture = CreateStarted();
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 2));
  EXPECT_TRUE(encoder_.WaitForBytes("speaker", 8));
  EXPECT_TRUE(Logged("+++++++ Starting AudioCapture +++++++"));
}

TEST_F(RunAudioCapture, CallsTheClientsFromTheMultithreadedApartment) {
  QueueMicrophone({1, 2});
  const auto capture = CreateStarted();
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 2));
  EXPECT_TRUE(service_.WaitFor("speaker.render.ReleaseBuffer"));
  capture->Stop();
  EXPECT_FALSE(service_.CalledOutsideMultithreadedApartment("mic.capture.GetBuffer"));
  EXPECT_FALSE(service_.CalledOutsideMultithreadedApartment("speaker.render.ReleaseBuffer"));
}

TEST_F(RunAudioCapture, GivesBackNothingWhenAPacketCannotBeRead) {
  UseOnly("mic");
  QueueMicrophone({1, 2});
  service_.Fail("mic.capture.GetBuffer", AUDCLNT_E_OUT_OF_ORDER);
  const auto capture = CreateStarted();
  EXPECT_TRUE(service_.WaitFor("mic.capture.ReleaseBuffer"));
  EXPECT_THAT(service_.released("mic.capture"), Contains(Pair(0, 0)));
  EXPECT_EQ(encoder_.deliveries("microphone"), 0);
  service_.Fail("mic.capture.GetBuffer", S_OK);
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 2));
}

TEST_F(RunAudioCapture, DeliversWhatCameBeforeAnEmptyPacket) {
  UseOnly("mic");
  QueueMicrophone({1, 2});
  service_.Queue("mic", FakePacket{.bytes = {9, 9}, .frames = 0});
  QueueMicrophone({3, 4});
  service_.Queue("mic", FakePacket{.bytes = {}, .frames = 4});
  const auto capture = CreateStarted();
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 4));
  EXPECT_TRUE(WaitForAnotherPoll("mic"));
  capture->Stop();
  EXPECT_THAT(encoder_.delivered("microphone"), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(service_.released("mic.capture"), ElementsAre(Pair(1, 0), Pair(0, 0), Pair(1, 0), Pair(0, 0)));
}

TEST_F(RunAudioCapture, DeliversWhatCameBeforeAFailureToLookFurther) {
  UseOnly("mic");
  QueueMicrophone({1, 2});
  QueueMicrophone({3, 4});
  service_.Fail("mic.capture.GetNextPacketSize again", E_UNEXPECTED);
  const auto capture = CreateStarted();
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 4));
  capture->Stop();
  EXPECT_EQ(encoder_.deliveries("microphone"), 2);
  EXPECT_THAT(service_.released("mic.capture"), ElementsAre(Pair(1, 0), Pair(1, 0)));
}

TEST_F(RunAudioCapture, GoesOnWithTheOtherStreamWhenADeviceDisappears) {
  QueueMicrophone({1, 2});
  const auto capture = CreateStarted();
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 2));
  for (const auto* call : {"mic.capture.GetNextPacketSize", "mic.capture.GetBuffer",
                           "mic.capture.ReleaseBuffer", "mic.client.Stop"}) {
    service_.Fail(call, AUDCLNT_E_DEVICE_INVALIDATED);
  }
  EXPECT_TRUE(WaitForAnotherPoll("mic"));
  service_.Queue("speaker", {.bytes = {1, 2, 3, 4, 5, 6, 7, 8}, .frames = 1});
  EXPECT_TRUE(encoder_.WaitForBytes("speaker", 8));
  capture->Stop();
  EXPECT_TRUE(Logged("Audio capture stopped successfully"));
  const std::string line = "Microphone device is gone, its sound ends here: HRESULT: 0x88890004";
  EXPECT_TRUE(Logged(line));
  EXPECT_EQ(log_.text().find(line), log_.text().rfind(line));
}

TEST_F(RunAudioCapture, TellsOnceThatAStreamIsGoneWhateverSaysSo) {
  for (const auto& [result, code] : {std::pair{AUDCLNT_E_DEVICE_INVALIDATED, "0x88890004"},
                                     {AUDCLNT_E_SERVICE_NOT_RUNNING, "0x88890010"},
                                     {AUDCLNT_E_RESOURCES_INVALIDATED, "0x88890026"}}) {
    service_.Fail("mic.capture.GetNextPacketSize", S_OK);
    const auto capture = CreateStarted();
    service_.Fail("mic.capture.GetNextPacketSize", result);
    EXPECT_TRUE(WaitForAnotherPoll("mic"));
    EXPECT_TRUE(WaitForAnotherPoll("mic"));
    capture->Stop();
    const std::string line = std::string("Microphone device is gone, its sound ends here: HRESULT: ") + code;
    EXPECT_TRUE(Logged(line)) << code;
    EXPECT_EQ(log_.text().find(line), log_.text().rfind(line));
  }
}

TEST_F(RunAudioCapture, SaysNothingOfAFailureThatPasses) {
  UseOnly("mic");
  service_.Fail("mic.capture.GetNextPacketSize", AUDCLNT_E_BUFFER_ERROR);
  const auto capture = CreateStarted();
  EXPECT_TRUE(WaitForAnotherPoll("mic"));
  capture->Stop();
  EXPECT_FALSE(Logged("device is gone"));
}

TEST_F(RunAudioCapture, StartsOnceThereIsMemoryForItsThread) {
  UseOnly("mic");
  const auto capture = Create();
  {
    const testing::FailingMemory none;
    EXPECT_THROW(capture->Start(), std::bad_alloc);
  }
  EXPECT_TRUE(capture->Start());
  EXPECT_FALSE(Logged("Audio processing thread already running"));
  QueueMicrophone({1, 2});
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 2));
}

TEST_F(RunAudioCapture, GoesOnWhenTheEncoderRefusesOrThrows) {
  UseOnly("mic");
  int deliveries = 0;
  encoder_.answer = [&](const std::string&) {
    if (deliveries++ == 0) {
      throw std::runtime_error("disk full");
    }
    return false;
  };
  QueueMicrophone({1, 2});
  const auto capture = CreateStarted();
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 2));
  QueueMicrophone({3, 4});
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 4));
  QueueMicrophone({5, 6});
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 6));
  capture->Stop();
  EXPECT_TRUE(Logged("Exception in audio thread: disk full"));
}

TEST_F(RunAudioCapture, ReachesNoEncoderOnceDetached) {
  UseOnly("mic");
  auto encoder = std::make_unique<testing::RecordingEncoder>();
  const auto capture = CreateAudioCapture(settings_, *encoder);
  EXPECT_TRUE(capture->Start());
  QueueMicrophone({1, 2});
  EXPECT_TRUE(encoder->WaitForBytes("microphone", 2));
  capture->DetachEncoder();
  encoder.reset();
  QueueMicrophone({3, 4});
  EXPECT_TRUE(WaitForAnotherPoll("mic"));
  capture->Stop();
}

TEST_F(RunAudioCapture, EndsWhenADeviceNeverRunsDry) {
  UseOnly("mic");
  service_.During("mic.capture.GetBuffer", [this] { QueueMicrophone({1, 2}); });
  QueueMicrophone({1, 2});
  const auto capture = CreateStarted();
  EXPECT_TRUE(service_.WaitFor("mic.capture.GetBuffer", 10));
  capture->Stop();
}

TEST_F(RunAudioCapture, StartsOnceAndStopsOnce) {
  UseOnly("mic");
  const auto capture = Create();
  capture->Stop();
  EXPECT_EQ(log_.count("[INFO] Audio processing is not running"), 1);
  EXPECT_TRUE(capture->Start());
  EXPECT_TRUE(capture->Start());
  EXPECT_TRUE(Logged("Audio processing thread already running"));
  capture->Stop();
  EXPECT_TRUE(Logged("Stopping audio capture..."));
  EXPECT_EQ(log_.count("[INFO] Audio capture stopped successfully"), 1);
  EXPECT_EQ(service_.count("mic.client.Stop"), 1);
  const auto polls = service_.count("mic.capture.GetNextPacketSize");
  capture->Stop();
  EXPECT_EQ(log_.count("[INFO] Audio processing is not running"), 2);
  EXPECT_EQ(service_.count("mic.capture.GetNextPacketSize"), polls);
}

TEST_F(RunAudioCapture, StartsAgainAfterItStopped) {
  UseOnly("mic");
  const auto capture = CreateStarted();
  capture->Stop();
  QueueMicrophone({1, 2});
  EXPECT_TRUE(capture->Start());
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", 2));
}

TEST_F(RunAudioCapture, RefusesToStartWhenNothingIsOpen) {
  UseOnly("neither");
  const auto capture = Create();
  EXPECT_FALSE(capture->Start());
  EXPECT_TRUE(log_.has("[ERROR] Cannot start audio processing: AudioCapture not initialized"));
}

TEST_F(RunAudioCapture, IsStoppedWhenItIsDestroyedWhileItRuns) {
  {
    const auto capture = CreateStarted();
    EXPECT_TRUE(WaitForAnotherPoll("mic"));
  }
  EXPECT_TRUE(Logged("Audio capture stopped successfully"));
  EXPECT_TRUE(Logged("Microphone resources cleaned up"));
  EXPECT_TRUE(Logged("Speaker resources cleaned up"));
  EXPECT_EQ(service_.liveObjects(), 1);
}

TEST_F(RunAudioCapture, ThatNeverRanIsCleanedUpWithItsPlayer) {
  Create();
  EXPECT_TRUE(Logged("Silent audio playback stopped"));
  EXPECT_EQ(log_.count("[INFO] Microphone resources cleaned up"), 1);
  EXPECT_EQ(log_.count("[INFO] Speaker resources cleaned up"), 1);
  EXPECT_FALSE(Logged("Audio processing is not running"));
}

TEST_F(RunAudioCapture, EndsItsThreadsWhenStoppingAClientThrows) {
  const auto capture = CreateStarted();
  service_.During("mic.client.Stop", [] { throw std::runtime_error("device lost"); });
  capture->Stop();
  EXPECT_TRUE(log_.has("[ERROR] Exception during audio capture stop: device lost"));
  ExpectNoMorePolls();
  service_.During("mic.client.Stop", [] { throw 1; });
  EXPECT_TRUE(capture->Start());
  EXPECT_TRUE(WaitForAnotherPoll("mic"));
  capture->Stop();
  EXPECT_TRUE(log_.has("[ERROR] Unknown exception during audio capture stop"));
  ExpectNoMorePolls();
  service_.During("mic.client.Stop", [] {});
}

TEST_F(RunAudioCapture, CleansUpTheSpeakerWhenTheMicrophoneThrows) {
  auto capture = Create();
  service_.During("mic.client.Stop", [] { throw std::runtime_error("device lost"); });
  capture.reset();
  EXPECT_TRUE(log_.has("[ERROR] Exception in CleanupMicrophone: device lost"));
  EXPECT_TRUE(log_.has("[INFO] Speaker resources cleaned up"));
}

TEST_F(RunAudioCapture, CleansUpWhateverIsThrown) {
  UseOnly("speaker");
  auto capture = Create();
  service_.During("speaker.client.Stop", [] { throw 1; });
  capture.reset();
  EXPECT_TRUE(log_.has("[INFO] Microphone resources cleaned up"));
  EXPECT_TRUE(log_.has("[ERROR] Unknown exception in CleanupSpeaker"));
}

}  // namespace
}  // namespace brisolte
