#include <mferror.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>

#include "mf/mf_encoder_fixture.h"

namespace brisolte {
namespace {

using ::testing::ElementsAre;
using testing::FloatFormat;
using ::testing::IsEmpty;
using testing::kFailure;
using testing::kFailureText;
using testing::MediaCall;
using testing::PcmFormat;
using ::testing::SizeIs;

class MFEncoderLifecycleTest : public testing::MFEncoderTest {
 protected:
  bool ProcessAudio(const std::string& name, std::size_t bytes) {
    return encoder_->ProcessAudioFrame(std::vector<std::uint8_t>(bytes), name);
  }
};

TEST_F(MFEncoderLifecycleTest, StopFinalizesOnceAndLetsGoOfEverything) {
  MakeWithVideo();
  EXPECT_TRUE(encoder_->Start());
  EXPECT_THAT(stage_.calls("BeginWriting"), SizeIs(1));
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(stage_.calls("Finalize"), SizeIs(1));
  EXPECT_THAT(stage_.calls("Release the sink writer"), SizeIs(1));
  EXPECT_THAT(stage_.calls("MFShutdown"), IsEmpty());
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_TRUE(encoder_->Finalize());
  encoder_.reset();
  EXPECT_THAT(stage_.calls("Finalize"), SizeIs(1));
  EXPECT_THAT(stage_.calls("Shutdown of the media sink"), IsEmpty())
      << "a complete file is left to the sink writer";
  EXPECT_EQ(stage_.calls().back().name, "MFShutdown");
  EXPECT_THAT(TakeErrors(), IsEmpty());
}

TEST_F(MFEncoderLifecycleTest, DestructionCompletesTheFile) {
  MakeWithVideo();
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(ProcessFrame(0));
  stage_.AwaitSamples(1);
  encoder_.reset();
  EXPECT_THAT(stage_.calls("Finalize"), SizeIs(1));
  EXPECT_THAT(stage_.calls("MFShutdown"), SizeIs(1));
}

TEST_F(MFEncoderLifecycleTest, WithoutAStartNothingIsFinalized) {
  MakeWithVideo();
  EXPECT_TRUE(encoder_->Stop());
  encoder_.reset();
  EXPECT_THAT(stage_.calls("Finalize"), IsEmpty());
  EXPECT_THAT(stage_.calls("Shutdown of the media sink"), SizeIs(1)) << "nothing else closes the file";
  EXPECT_THAT(stage_.calls("Release the sink writer"), SizeIs(1));
}

TEST_F(MFEncoderLifecycleTest, AFileThatCannotBeClosedIsReported) {
  MakeEncoder();
  stage_.Fail("Shutdown of the media sink", kFailure);
  encoder_.reset();
  EXPECT_THAT(TakeErrors(), ElementsAre("Failed to shut down media sink: " + kFailureText));
}

TEST_F(MFEncoderLifecycleTest, AWriterThatHasNoMediaSinkYetIsLetGoOf) {
  MakeEncoder();
  stage_.Fail("GetServiceForStream", kFailure);
  encoder_.reset();
  EXPECT_THAT(TakeErrors(), IsEmpty());
  EXPECT_THAT(stage_.calls("Release the sink writer"), SizeIs(1));
}

TEST_F(MFEncoderLifecycleTest, FinalizeEndsAWriterThatRuns) {
  MakeWithVideo();
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(ProcessFrame(0));
  EXPECT_TRUE(encoder_->Finalize());
  EXPECT_FALSE(ProcessFrame(1));
  EXPECT_THAT(stage_.calls("Finalize"), SizeIs(1));
}

TEST_F(MFEncoderLifecycleTest, AStartThatFailsWritesNothing) {
  MakeWithVideo();
  stage_.Fail("BeginWriting", kFailure);
  EXPECT_FALSE(encoder_->Start());
  EXPECT_THAT(TakeErrors(), ElementsAre("Failed to begin writing: " + kFailureText));
  EXPECT_FALSE(ProcessFrame(0));
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(stage_.calls("Finalize"), IsEmpty());
  stage_.FailNothing();
  EXPECT_TRUE(encoder_->Start());
}

TEST_F(MFEncoderLifecycleTest, ASecondStartChangesNothing) {
  MakeWithVideo();
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(encoder_->Start());
  EXPECT_THAT(stage_.calls("BeginWriting"), SizeIs(1));
}

TEST_F(MFEncoderLifecycleTest, AFileThatCannotBeCompletedIsReported) {
  MakeWithVideo();
  EXPECT_TRUE(encoder_->Start());
  stage_.Fail("Finalize", kFailure);
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(TakeErrors(), ElementsAre("Failed to finalize sink writer: " + kFailureText));
  EXPECT_THAT(stage_.calls("Shutdown of the media sink"), SizeIs(1));
  EXPECT_THAT(stage_.calls("Release the sink writer"), SizeIs(1));
}

TEST_F(MFEncoderLifecycleTest, ASinkThatIsShutDownAlreadyIsNoFailure) {
  MakeWithVideo();
  EXPECT_TRUE(encoder_->Start());
  stage_.Fail("Finalize", kFailure);
  stage_.Fail("Shutdown of the media sink", MF_E_SHUTDOWN);
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(TakeErrors(), ElementsAre("Failed to finalize sink writer: " + kFailureText));
}

TEST_F(MFEncoderLifecycleTest, AWriterWithoutStreamsIsNotBegun) {
  MakeEncoder();
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(stage_.calls("BeginWriting"), IsEmpty());
  EXPECT_THAT(stage_.calls("Finalize"), IsEmpty());
  EXPECT_THAT(TakeErrors(), IsEmpty());
}

TEST_F(MFEncoderLifecycleTest, StopEndsAWriteThatDoesNotReturn) {
  MakeWithVideo();
  EXPECT_TRUE(encoder_->Start());
  stage_.HoldWrites(true);
  EXPECT_TRUE(ProcessFrame(0));
  stage_.AwaitSamples(1);
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(stage_.calls("Shutdown of the media sink"), ::testing::Not(IsEmpty()));
  EXPECT_THAT(stage_.calls("Finalize"), IsEmpty());
  EXPECT_THAT(TakeErrors(), ElementsAre("The sink writer does not return: its file is closed without an end "
                                        "and cannot be played"));
}

TEST_F(MFEncoderLifecycleTest, AWriterThatHasFailedForGoodIsNotTriedForEver) {
  MakeWithVideo();
  EXPECT_TRUE(encoder_->Start());
  stage_.Fail("WriteSample", kFailure);
  for (int time = 0; time < 30; ++time) {
    EXPECT_TRUE(ProcessFrame(time));
  }
  EXPECT_TRUE(stage_.AwaitCalls("WriteSample", 10));
  const std::string last = "The sink writer takes nothing more: what follows is not recorded";
  EXPECT_TRUE(AwaitError(last));
  for (int time = 30; time < 60; ++time) {
    ProcessFrame(time);
  }
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(stage_.calls("WriteSample"), SizeIs(10));
  const auto errors = TakeErrors();
  EXPECT_EQ(std::ranges::count(errors, "Failed to write sample: " + kFailureText), 10);
  EXPECT_EQ(std::ranges::count(errors, last), 1);
}

TEST_F(MFEncoderLifecycleTest, ASilentSoundGetsTicksWhileThePictureGoesOn) {
  MakeWithVideo();
  const WaveFormat format = FloatFormat();
  ASSERT_TRUE(encoder_->CreateAudioStream(AudioStreamKind::kSpeaker, &format));
  EXPECT_TRUE(encoder_->Start());
  for (int time = 0; time <= 3000; time += 40) {
    EXPECT_TRUE(ProcessFrame(time));
  }
  ASSERT_TRUE(stage_.AwaitCalls("SendStreamTick stream 1", 12));
  EXPECT_THAT(stage_.calls("SendStreamTick stream 1").front(), "SendStreamTick stream 1, 0");
  EXPECT_THAT(stage_.calls("SendStreamTick stream 0"), IsEmpty());
}

TEST_F(MFEncoderLifecycleTest, AStillPictureGetsATickForEachFrameWhileSoundGoesOn) {
  MakeWithVideo();
  const WaveFormat format = FloatFormat();
  ASSERT_TRUE(encoder_->CreateAudioStream(AudioStreamKind::kSpeaker, &format));
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(ProcessFrame(0));
  stage_.AwaitSamples(1);
  EXPECT_TRUE(ProcessAudio("speaker", 2 * 384'000));
  // Two seconds less the half for which a picture may be late: 25 frames a second.
  ASSERT_TRUE(stage_.AwaitCalls("SendStreamTick stream 0", 35));
  EXPECT_EQ(stage_.calls("SendStreamTick stream 0")[0], "SendStreamTick stream 0, 400000");
}

TEST_F(MFEncoderLifecycleTest, ATickThatFailsIsReported) {
  MakeWithVideo();
  const WaveFormat format = FloatFormat();
  ASSERT_TRUE(encoder_->CreateAudioStream(AudioStreamKind::kSpeaker, &format));
  EXPECT_TRUE(encoder_->Start());
  stage_.Fail("SendStreamTick", kFailure);
  EXPECT_TRUE(ProcessFrame(1000));
  EXPECT_TRUE(AwaitError());
  EXPECT_EQ(TakeErrors().front(), "Failed to send stream tick: " + kFailureText);
}

TEST_F(MFEncoderLifecycleTest, StopDoesNotWaitForWhatIsQueued) {
  MakeWithVideo();
  EXPECT_TRUE(encoder_->Start());
  stage_.HoldWrites(true);
  for (int i = 0; i < 50; ++i) {
    EXPECT_TRUE(ProcessFrame(i));
  }
  stage_.AwaitSamples(1);
  // Lets the write that is under way go once nothing more is taken: then the worker knows that it is to end.
  const std::jthread releasing([this] {
    while (ProcessAudio("speaker", 1)) {
      std::this_thread::yield();
    }
    stage_.HoldWrites(false);
  });
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(stage_.samples(), SizeIs(1));
  EXPECT_THAT(stage_.calls("Finalize"), SizeIs(1));
}

TEST_F(MFEncoderLifecycleTest, FramesAndSoundMayComeWhileItEnds) {
  MakeWithVideo();
  const WaveFormat format = PcmFormat();
  ASSERT_TRUE(encoder_->CreateAudioStream(AudioStreamKind::kMicrophone, &format));
  ASSERT_TRUE(encoder_->Start());
  testing::Paint(*texture_.Get(), 1);
  std::atomic<bool> stopped = false;
  {
    const std::jthread video([&] {
      while (!stopped) {
        ProcessTexture(texture_.Get());
      }
    });
    const std::jthread sound([&] {
      while (!stopped) {
        ProcessAudio("microphone", 640);
      }
    });
    stage_.AwaitSamples(20);
    EXPECT_TRUE(encoder_->Stop());
    stopped = true;
  }
  EXPECT_THAT(stage_.calls("Finalize"), SizeIs(1));
}

/// Prints the table in docs/media-foundation-calls.md, past the captured log.
void PrintTable(const std::vector<MediaCall>& calls) {
  std::string table = "| call | with |\n|---|---|\n";
  for (const MediaCall& call : calls) {
    table.append("| `").append(call.name).append("` | ").append(call.arguments).append(" |\n");
  }
  std::fputs(table.c_str(), stdout);
  std::fflush(stdout);
}

TEST_F(MFEncoderLifecycleTest, AWholeRecordingCallByCall) {
  MakeWithVideo();
  const WaveFormat microphone = PcmFormat();
  const WaveFormat speaker = FloatFormat();
  ASSERT_TRUE(encoder_->CreateAudioStream(AudioStreamKind::kMicrophone, &microphone));
  ASSERT_TRUE(encoder_->CreateAudioStream(AudioStreamKind::kSpeaker, &speaker));
  ASSERT_TRUE(encoder_->Start());
  EXPECT_TRUE(ProcessFrame(0, 0));
  stage_.AwaitSamples(1);
  EXPECT_TRUE(ProcessAudio("microphone", 15'360));
  stage_.AwaitSamples(2);
  EXPECT_TRUE(ProcessAudio("speaker", 15'360));
  stage_.AwaitSamples(3);
  EXPECT_TRUE(ProcessFrame(40, 40));
  stage_.AwaitSamples(4);
  EXPECT_TRUE(encoder_->Stop());
  encoder_.reset();
  PrintTable(stage_.calls());

  std::vector<std::string> names;
  for (const MediaCall& call : stage_.calls()) {
    if (!call.name.starts_with("Set") || call.name == "SetInputMediaType") {
      names.push_back(call.name);
    }
  }
  const std::vector<std::string> frame{"MFCreateDXGISurfaceBuffer", "IMFDXGIBuffer::SetUnknown",
                                       "MFCreateSample", "AddBuffer", "WriteSample"};
  const std::vector<std::string> sound{"MFCreateMemoryBuffer", "Lock",      "Unlock",
                                       "MFCreateSample",       "AddBuffer", "WriteSample"};
  const std::vector<std::string> audioStream{"MFCreateMediaType", "MFTranscodeGetAudioOutputAvailableTypes",
                                             "MFCreateMediaType", "AddStream", "SetInputMediaType"};
  std::vector<std::string> expected{
      "MFStartup",         "MFCreateAttributes",        "MFCreateSinkWriterFromURL",
      "D3D11CreateDevice", "MFCreateDXGIDeviceManager", "ResetDevice",
      "ResetDevice",       "MFCreateMediaType",         "AddStream",
      "MFCreateMediaType", "MFCreateAttributes",        "SetInputMediaType"};
  const auto append = [&](const std::vector<std::string>& more) {
    expected.insert(expected.end(), more.begin(), more.end());
  };
  append(audioStream);
  append(audioStream);
  append({"BeginWriting", "GetServiceForStream"});
  append(frame);
  append(sound);
  append(sound);
  append(frame);
  append({"Finalize", "Release the sink writer", "MFShutdown"});
  EXPECT_EQ(names, expected);
}

}  // namespace
}  // namespace brisolte
