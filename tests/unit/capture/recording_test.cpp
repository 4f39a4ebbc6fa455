#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "capture/capture_controller.h"
#include "fake_recording_parts.h"
#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::Contains;
using ::testing::ElementsAre;
using testing::FakeRecordingParts;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::Raises;
using testing::Refuses;
using testing::Stage;
using ::testing::StartsWith;

class RecordingTest : public ::testing::Test {
 protected:
  RecordingTest() { stage_.Take(); }

  /// Starts with a failure that leaves as the lock's error.
  void ExpectDeadlock() {
    try {
      controller_->startRecord();
      ADD_FAILURE() << "no exception";
    } catch (const std::system_error& error) {
      EXPECT_EQ(error.code(), std::errc::resource_deadlock_would_occur);
      EXPECT_STREQ(error.what(), "resource deadlock would occur");
    }
    EXPECT_FALSE(controller_->isCapturing());
  }

  /// Starts in vain; gives the ERROR lines.
  std::vector<std::string> FailedStart() {
    const CapturedLog log(LogLevel::kError);
    EXPECT_FALSE(controller_->startRecord());
    EXPECT_FALSE(controller_->isCapturing());
    return log.lines();
  }

  Stage stage_;
  std::unique_ptr<CaptureController> controller_ =
      std::make_unique<CaptureController>(std::make_unique<FakeRecordingParts>(stage_));
  CapturedLog log_{LogLevel::kDebug};
};

TEST_F(RecordingTest, BuildsAndStartsThenStopsAndDestroysInOrder) {
  controller_->setMicrophoneDevice("mic");
  EXPECT_TRUE(controller_->startRecord());
  EXPECT_TRUE(controller_->isCapturing());
  EXPECT_THAT(stage_.Take(), ElementsAre("create ffmpeg", "create video", "create audio", "start ffmpeg",
                                         "start video", "start audio"));
  EXPECT_TRUE(controller_->stopRecord());
  EXPECT_FALSE(controller_->isCapturing());
  EXPECT_THAT(stage_.Take(), ElementsAre("stop video", "stop audio", "stop ffmpeg", "destroy video",
                                         "destroy audio", "destroy ffmpeg"));
}

TEST_F(RecordingTest, IsPausedAndGoesOn) {
  controller_->setMicrophoneDevice("mic");
  EXPECT_FALSE(controller_->pauseRecord()) << "nothing is recorded";
  ASSERT_TRUE(controller_->startRecord());
  EXPECT_FALSE(controller_->resumeRecord()) << "it is not paused";
  stage_.Take();
  for (int pause = 0; pause < 2; ++pause) {
    EXPECT_TRUE(controller_->pauseRecord());
    EXPECT_FALSE(controller_->pauseRecord());
    EXPECT_TRUE(controller_->isCapturing());
    EXPECT_THAT(stage_.Take(), ElementsAre("pause video, clock goes", "pause audio, clock goes"));
    EXPECT_TRUE(stage_.clock->paused());
    EXPECT_TRUE(controller_->resumeRecord());
    EXPECT_FALSE(controller_->resumeRecord());
    EXPECT_THAT(stage_.Take(), ElementsAre("resume audio, clock goes", "resume video, clock goes"));
  }
}

TEST_F(RecordingTest, IsStoppedWhilePausedAndStartsAnewUnpaused) {
  ASSERT_TRUE(controller_->startRecord());
  EXPECT_TRUE(controller_->pauseRecord());
  EXPECT_TRUE(controller_->stopRecord());
  EXPECT_FALSE(controller_->resumeRecord());
  ASSERT_TRUE(controller_->startRecord());
  EXPECT_FALSE(stage_.clock->paused());
  EXPECT_TRUE(controller_->pauseRecord());
}

TEST_F(RecordingTest, GivesEachPartACopyOfTheSettings) {
  controller_->setSpeakerDevice("speaker");
  controller_->setFrameRate(7);
  ASSERT_TRUE(controller_->startRecord());
  ASSERT_EQ(stage_.settings.size(), 3U);
  for (const CaptureSettings& settings : stage_.settings) {
    EXPECT_EQ(settings.frameRate, 7);
    EXPECT_EQ(settings.speakerDeviceId, "speaker");
    EXPECT_EQ(settings.outputFilePath, controller_->getSaveFilePath());
  }
}

TEST_F(RecordingTest, GivesTheEncoderAndTheVideoCaptureTheOptionsOfItsStart) {
  std::vector<RecordingEvent> heard;
  RecordingOptions options;
  options.report = [&heard](RecordingEvent event) { heard.push_back(event); };
  EXPECT_TRUE(controller_->setOptions(options));
  ASSERT_TRUE(controller_->startRecord());
  EXPECT_FALSE(controller_->setOptions({}));
  ASSERT_EQ(stage_.options.size(), 2U);
  stage_.options.front().report(RecordingEvent::kDiskFull);
  stage_.options.back().report(RecordingEvent::kCursorStays);
  EXPECT_THAT(heard, ElementsAre(RecordingEvent::kDiskFull, RecordingEvent::kCursorStays));
}

TEST_F(RecordingTest, LogsAndKeepsThePathOfTheFile) {
  ASSERT_TRUE(controller_->startRecord());
  const std::string path = controller_->getSaveFilePath();
  EXPECT_THAT(path, StartsWith("\\Qorvex-"));
  EXPECT_THAT(log_.lines(), ElementsAre("[INFO] Using MP4 container for encoder: libx264",
                                        "[INFO] Output file path: " + path));
  ASSERT_TRUE(controller_->stopRecord());
  EXPECT_EQ(controller_->getSaveFilePath(), path);
}

TEST_F(RecordingTest, StopWithoutARecordingTouchesNothing) {
  EXPECT_FALSE(controller_->stopRecord());
  EXPECT_THAT(stage_.Take(), IsEmpty());
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(RecordingTest, ASecondStartLeavesTheRecordingAlone) {
  ASSERT_TRUE(controller_->startRecord());
  const std::string path = controller_->getSaveFilePath();
  stage_.Take();
  const CapturedLog log;
  EXPECT_FALSE(controller_->startRecord());
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Recording is already in progress"));
  EXPECT_THAT(stage_.Take(), IsEmpty());
  EXPECT_TRUE(controller_->isCapturing());
  EXPECT_EQ(controller_->getSaveFilePath(), path);
}

TEST_F(RecordingTest, WithoutPictureAndSoundOnlyTheEncoderRuns) {
  controller_->setMode(CaptureMode::kNone);
  EXPECT_TRUE(controller_->startRecord());
  EXPECT_THAT(stage_.Take(), ElementsAre("create ffmpeg", "start ffmpeg"));
  EXPECT_TRUE(controller_->stopRecord());
  EXPECT_THAT(stage_.Take(), ElementsAre("stop ffmpeg", "destroy ffmpeg"));
}

TEST_F(RecordingTest, WithoutPictureOnlySoundIsRecorded) {
  controller_->setMode(CaptureMode::kNone);
  controller_->setMicrophoneDevice("mic");
  EXPECT_TRUE(controller_->startRecord());
  EXPECT_THAT(stage_.Take(), ElementsAre("create ffmpeg", "create audio", "start ffmpeg", "start audio"));
}

TEST_F(RecordingTest, TheEncoderNameChoosesTheEngine) {
  for (const std::string name : {"mf_h264", "mf_hevc"}) {
    controller_->setEncoder(name);
    ASSERT_TRUE(controller_->startRecord());
    EXPECT_THAT(stage_.Take(), Contains("create mf")) << name;
    ASSERT_TRUE(controller_->stopRecord());
    EXPECT_THAT(stage_.Take(), Contains("destroy mf")) << name;
  }
  controller_->setEncoder("no such encoder");
  ASSERT_TRUE(controller_->startRecord());
  EXPECT_THAT(stage_.Take(), Contains("create ffmpeg"));
}

TEST_F(RecordingTest, NamesTheEngineThatGivesNoEncoder) {
  stage_.hasEncoder = false;
  EXPECT_THAT(FailedStart(),
              ElementsAre("[ERROR] Failed to create FFmpeg encoder", "[ERROR] Failed to initialize encoder"));
  controller_->setEncoder("mf_h264");
  EXPECT_THAT(FailedStart(), ElementsAre("[ERROR] Failed to create Media Foundation encoder",
                                         "[ERROR] Failed to initialize encoder"));
  EXPECT_THAT(controller_->getSaveFilePath(), StartsWith("\\Qorvex-"));
  EXPECT_THAT(stage_.Take(), IsEmpty());
}

TEST_F(RecordingTest, AnExceptionOfTheEncodersConstructionReachesTheCaller) {
  ASSERT_TRUE(controller_->startRecord());
  ASSERT_TRUE(controller_->stopRecord());
  stage_.createEncoder = Raises("no directory");
  stage_.Take();
  EXPECT_THROW(controller_->startRecord(), std::runtime_error);
  EXPECT_FALSE(controller_->isCapturing());
  EXPECT_FALSE(controller_->stopRecord());
  stage_.createEncoder = [] { return true; };
  EXPECT_TRUE(controller_->startRecord());
}

TEST_F(RecordingTest, ACaptureThatIsNotInitializedIsNotStarted) {
  stage_.videoInitialized = false;
  EXPECT_THAT(FailedStart(), ElementsAre("[ERROR] Failed to create video capture"));
  EXPECT_THAT(stage_.Take(), ElementsAre("create ffmpeg", "create video"));
  stage_.videoInitialized = true;
  stage_.audioInitialized = false;
  controller_->setSpeakerDevice("speaker");
  EXPECT_THAT(FailedStart(), ElementsAre("[ERROR] Failed to create video capture"));
  EXPECT_THAT(stage_.Take(), ElementsAre("detach video", "destroy ffmpeg", "create ffmpeg", "destroy video",
                                         "create video", "create audio"));
}

TEST_F(RecordingTest, ACaptureThatIsMissingFailsLikeOneThatIsNotInitialized) {
  stage_.hasVideo = false;
  EXPECT_THAT(FailedStart(), ElementsAre("[ERROR] Failed to create video capture"));
  stage_.hasVideo = true;
  stage_.hasAudio = false;
  controller_->setMicrophoneDevice("mic");
  EXPECT_THAT(FailedStart(), ElementsAre("[ERROR] Failed to create video capture"));
}

TEST_F(RecordingTest, AnExceptionOfTheVideosConstructionReachesTheCaller) {
  stage_.createVideo = Raises("no device");
  EXPECT_THROW(controller_->startRecord(), std::runtime_error);
  EXPECT_FALSE(controller_->isCapturing());
  stage_.createVideo = [] { return true; };
  EXPECT_TRUE(controller_->startRecord());
}

TEST_F(RecordingTest, AStageThatWillNotStartLeavesAsTheLocksError) {
  controller_->setMicrophoneDevice("mic");
  const std::vector<std::pair<Stage::Step Stage::*, std::string>> stages = {
      {&Stage::startEncoder, "encoder"},
      {&Stage::startVideo, "video capture"},
      {&Stage::startAudio, "audio capture"}};
  for (const auto& [step, name] : stages) {
    const CapturedLog log(LogLevel::kError);
    stage_.*step = Refuses;
    ExpectDeadlock();
    EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Failed to start " + name));
    EXPECT_FALSE(controller_->stopRecord());
    stage_.*step = [] { return true; };
  }
  EXPECT_TRUE(controller_->startRecord());
  EXPECT_TRUE(controller_->stopRecord());
}

TEST_F(RecordingTest, WhatAFailedStartBuiltStaysUntilItIsReplaced) {
  controller_->setMicrophoneDevice("mic");
  stage_.startAudio = Refuses;
  ExpectDeadlock();
  EXPECT_THAT(stage_.Take(), ElementsAre("create ffmpeg", "create video", "create audio", "start ffmpeg",
                                         "start video", "start audio"));
  EXPECT_FALSE(controller_->stopRecord());
  EXPECT_THAT(stage_.Take(), IsEmpty());
  stage_.startAudio = [] { return true; };
  EXPECT_TRUE(controller_->startRecord());
  EXPECT_THAT(stage_.Take(), ElementsAre("detach video", "detach audio", "destroy ffmpeg", "create ffmpeg",
                                         "destroy video", "destroy audio", "create video", "create audio",
                                         "start ffmpeg", "start video", "start audio"));
}

TEST_F(RecordingTest, TheEncoderOfAFailedStartGoesBeforeOneOfTheOtherEngine) {
  // Both may be about to write the same file: its name holds whole seconds.
  controller_->setEncoder("mf_h264");
  stage_.videoInitialized = false;
  FailedStart();
  stage_.Take();
  stage_.videoInitialized = true;
  controller_->setEncoder("libx264");
  EXPECT_TRUE(controller_->startRecord());
  EXPECT_THAT(stage_.Take(), ElementsAre("detach video", "destroy mf", "create ffmpeg", "destroy video",
                                         "create video", "start ffmpeg", "start video"));
}

TEST_F(RecordingTest, ACaptureOfAFailedStartIsNotPartOfARecordingWithoutIt) {
  controller_->setMicrophoneDevice("mic");
  stage_.startAudio = Refuses;
  ExpectDeadlock();
  stage_.Take();
  controller_->setMicrophoneDevice("");
  controller_->setMode(CaptureMode::kNone);
  EXPECT_TRUE(controller_->startRecord());
  EXPECT_THAT(stage_.Take(), ElementsAre("detach video", "detach audio", "destroy ffmpeg", "create ffmpeg",
                                         "destroy video", "destroy audio", "start ffmpeg"));
}

TEST_F(RecordingTest, AnExceptionOfAStartReachesTheCaller) {
  stage_.startVideo = Raises("HRESULT: 0x80004005");
  EXPECT_THROW(controller_->startRecord(), std::runtime_error);
  EXPECT_FALSE(controller_->isCapturing());
  EXPECT_TRUE(controller_->setFrameRate(5));
  stage_.startVideo = [] { return true; };
  EXPECT_TRUE(controller_->startRecord());
}

TEST_F(RecordingTest, AnExceptionWhileStoppingSkipsTheOtherStagesAndStillDestroysEverything) {
  const std::vector<std::pair<Stage::Step Stage::*, std::vector<std::string>>> stages = {
      {&Stage::stopVideo, {"stop video"}},
      {&Stage::stopAudio, {"stop video", "stop audio"}},
      {&Stage::stopEncoder, {"stop video", "stop audio", "stop ffmpeg"}}};
  controller_->setMicrophoneDevice("mic");
  for (const auto& [step, stops] : stages) {
    ASSERT_TRUE(controller_->startRecord());
    stage_.Take();
    stage_.*step = Raises("gone");
    const CapturedLog log;
    EXPECT_TRUE(controller_->stopRecord());
    EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Error during audio cleanup: gone"));
    std::vector<std::string> expected = stops;
    expected.insert(expected.end(), {"destroy video", "destroy audio", "destroy ffmpeg"});
    EXPECT_EQ(stage_.Take(), expected);
    EXPECT_FALSE(controller_->isCapturing());
    stage_.*step = [] { return true; };
  }
}

TEST_F(RecordingTest, SurvivesAnExceptionWithoutText) {
  ASSERT_TRUE(controller_->startRecord());
  stage_.stopVideo = []() -> bool { throw 5; };
  EXPECT_TRUE(controller_->stopRecord());
  EXPECT_FALSE(controller_->isCapturing());
}

TEST_F(RecordingTest, AnEncoderThatWillNotStopEndsTheRecordingAllTheSame) {
  ASSERT_TRUE(controller_->startRecord());
  stage_.stopEncoder = Refuses;
  const CapturedLog log;
  EXPECT_TRUE(controller_->stopRecord());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RecordingTest, RecordsAgainAndAgain) {
  for (int i = 0; i < 50; ++i) {
    ASSERT_TRUE(controller_->startRecord());
    ASSERT_TRUE(controller_->stopRecord());
  }
  EXPECT_FALSE(controller_->stopRecord());
}

TEST_F(RecordingTest, DestructionWhileRecordingClosesTheWayToTheEncoderFirst) {
  controller_->setMicrophoneDevice("mic");
  ASSERT_TRUE(controller_->startRecord());
  stage_.Take();
  controller_.reset();
  EXPECT_THAT(stage_.Take(), ElementsAre("detach video", "detach audio", "destroy device", "destroy ffmpeg",
                                         "destroy audio", "destroy video"));
}

TEST_F(RecordingTest, DestructionWithoutARecordingReleasesTheDevice) {
  controller_.reset();
  EXPECT_THAT(stage_.Take(), ElementsAre("destroy device"));
}

TEST_F(RecordingTest, DestructionAfterAFailedStartReleasesWhatItLeft) {
  stage_.startVideo = Refuses;
  ExpectDeadlock();
  stage_.Take();
  controller_.reset();
  EXPECT_THAT(stage_.Take(),
              ElementsAre("detach video", "destroy device", "destroy ffmpeg", "destroy video"));
}

TEST_F(RecordingTest, ACallFromWithinACallRaisesTheLocksError) {
  stage_.createVideo = [this] { return controller_->setFrameRate(9); };
  ExpectDeadlock();
  stage_.createVideo = [] { return true; };
  EXPECT_TRUE(controller_->startRecord());
  EXPECT_THAT(stage_.Take(), Not(IsEmpty()));
}

}  // namespace
}  // namespace brisolte
