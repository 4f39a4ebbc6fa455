#include "fixture.h"

namespace brisolte::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

using VideoCaptureFrames = VideoCaptureTest;

TEST_F(VideoCaptureFrames, AreConvertedClosedEncodedAndReleased) {
  const auto capture = Running();
  system_->ArriveAtMs(5000);
  EXPECT_THAT(calls(), ElementsAre("convert 0 0", "close frame", "encode 0 0", "release frame"));
  EXPECT_THAT(encoder_.firstBytes, ElementsAre(7));
}

TEST_F(VideoCaptureFrames, AreTimedInWholeMilliseconds) {
  const auto capture = Running();
  const CapturedLog log(LogLevel::kInfo);
  system_->Arrive(50'009'999);
  system_->Arrive(50'500'000);
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] First Video frame arrived at: 5000"));
  EXPECT_THAT(calls(), Contains("encode 50 50"));
}

TEST_F(VideoCaptureFrames, ThatComeTooEarlyAreReleasedUnclosed) {
  const auto capture = Running();
  system_->ArriveAtMs(5000);
  system_->journal.Clear();
  system_->ArriveAtMs(5010);
  EXPECT_THAT(calls(), ElementsAre("release frame"));
}

TEST_F(VideoCaptureFrames, ThatCannotBeConvertedAreClosedAndSkipped) {
  const auto capture = Running();
  system_->converts = false;
  system_->ArriveAtMs(5000);
  EXPECT_THAT(calls(), ElementsAre("convert 0 0", "close frame", "release frame"));
  system_->converts = true;
  system_->ArriveAtMs(5040);
  EXPECT_THAT(calls(), Contains("encode 40 40"));
}

TEST_F(VideoCaptureFrames, OfAPauseAreKeptUntilItEnds) {
  const auto capture = Running();
  system_->ArriveAtMs(5000);
  capture->Pause();
  system_->journal.Clear();
  system_->ArriveAtMs(5100);
  EXPECT_THAT(calls(), IsEmpty());
  capture->Resume();
  EXPECT_THAT(calls(), ElementsAre("Perform the frame kept in a pause", StartsWith("convert 10"),
                                   "close frame", StartsWith("encode 10"), "release frame"));
}

TEST_F(VideoCaptureFrames, OfAPauseAreGivenBackWhereTheyMayBeUsed) {
  const auto capture = Running();
  capture->Pause();
  system_->ArriveAtMs(5000);
  capture->Stop();
  EXPECT_THAT(calls(), ElementsAre("Perform the frame kept in a pause", "release frame", "CloseSession",
                                   "ReleaseTarget"));
}

TEST_F(VideoCaptureFrames, ComeAgainWhenThatOfAPauseCannotBeHandedOn) {
  const auto capture = Running();
  capture->Pause();
  system_->results["Perform the frame kept in a pause"] = kFailure;
  capture->Resume();
  system_->ArriveAtMs(5000);
  EXPECT_THAT(calls(), Contains("encode 0 0"));
}

TEST_F(VideoCaptureFrames, MayBeMissing) {
  const auto capture = Running();
  const CapturedLog log;
  EXPECT_EQ(system_->CallHandler(), 0);
  EXPECT_THAT(log.lines(), ElementsAre("[WARNING] No frame available"));
}

TEST_F(VideoCaptureFrames, AreNotTakenBeforeTheStart) {
  const auto capture = Construct();
  system_->journal.Clear();
  const CapturedLog log;
  EXPECT_EQ(system_->ArriveAtMs(5000), 0);
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(VideoCaptureFrames, FailWithTheHResultOfTheService) {
  for (const char* call : {"TryGetNextFrame", "SystemRelativeTime", "CloseFrame"}) {
    const auto capture = Running();
    system_->raised = {{call, kFailure}};
    const CapturedLog log;
    EXPECT_EQ(system_->ArriveAtMs(5000), kFailure) << call;
    EXPECT_THAT(log.text(), ::testing::HasSubstr("[ERROR] Exception in OnFrameArrived: HRESULT: 0x80004005"));
    EXPECT_EQ(system_->openFrames, 0);
    system_->raised.clear();
    system_->frames.clear();
    system_->ArriveAtMs(5040);
    EXPECT_THAT(calls(), Contains(StartsWith("encode"))) << call;
  }
}

TEST_F(VideoCaptureFrames, FailWithoutAnExceptionWhenTheEncoderThrows) {
  const auto capture = Running();
  encoder_.throwsOnFrame = true;
  const CapturedLog log(LogLevel::kWarn);
  EXPECT_EQ(system_->ArriveAtMs(5000), kFailure);
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Exception in OnFrameArrived: encoder broke"));
  EXPECT_EQ(system_->openFrames, 0);
}

TEST_F(VideoCaptureFrames, StopWithTheEncoderDetached) {
  const auto capture = Running();
  system_->ArriveAtMs(5000);
  capture->DetachEncoder();
  system_->journal.Clear();
  system_->ArriveAtMs(5040);
  EXPECT_THAT(calls(), IsEmpty());
  capture->Stop();
  EXPECT_THAT(calls(), Contains("CloseSession"));
}

using VideoCaptureLifecycle = VideoCaptureTest;

TEST_F(VideoCaptureLifecycle, StartsTheSession) {
  const auto capture = Construct();
  system_->journal.Clear();
  const CapturedLog log;
  EXPECT_TRUE(capture->Start());
  EXPECT_THAT(calls(), ElementsAre("StartCapture"));
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] +++++++ Starting videoCapture +++++++"));
}

TEST_F(VideoCaptureLifecycle, LeavesOutWhatShallNotBeShownBeforeItStarts) {
  std::vector<RecordingEvent> heard;
  options_.report = [&heard](RecordingEvent event) { heard.push_back(event); };
  options_.showsCursor = false;
  options_.showsBorder = false;
  const auto capture = Construct();
  system_->journal.Clear();
  const CapturedLog log(LogLevel::kWarn);
  EXPECT_TRUE(capture->Start());
  EXPECT_THAT(calls(), ElementsAre("LeaveOutCursor", "LeaveOutBorder", "StartCapture"));
  EXPECT_THAT(heard, IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(VideoCaptureLifecycle, TellsWhatCannotBeLeftOutAndStarts) {
  std::vector<RecordingEvent> heard;
  options_.report = [&heard](RecordingEvent event) { heard.push_back(event); };
  options_.showsCursor = false;
  options_.showsBorder = false;
  system_->results = {{"LeaveOutCursor", kFailure}, {"LeaveOutBorder", kFailure}};
  const auto capture = Construct();
  const CapturedLog log(LogLevel::kWarn);
  EXPECT_TRUE(capture->Start());
  EXPECT_THAT(calls().back(), "StartCapture");
  EXPECT_THAT(heard, ElementsAre(RecordingEvent::kCursorStays, RecordingEvent::kBorderStays));
  EXPECT_THAT(log.text(), HasSubstr("[WARNING] The cursor cannot be left out: " + FailureText()));
  EXPECT_THAT(log.text(), HasSubstr("[WARNING] The border cannot be left out: " + FailureText()));
}

TEST_F(VideoCaptureLifecycle, DoesNotStartTwice) {
  const auto capture = Running();
  const CapturedLog log;
  EXPECT_FALSE(capture->Start());
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Capture session is already running"));
}

TEST_F(VideoCaptureLifecycle, RaisesAStartThatFails) {
  system_->raised = {{"StartCapture", kFailure}};
  auto capture = Construct();
  EXPECT_THROW(capture->Start(), HResultError);
  capture.reset();
  EXPECT_THAT(calls(), Contains("CloseSession"));
}

TEST_F(VideoCaptureLifecycle, StopsAndCounts) {
  const auto capture = Construct();
  system_->ArriveAtMs(4000);
  system_->frames.clear();
  capture->Start();
  system_->ArriveAtMs(5000);
  system_->ArriveAtMs(5001);
  system_->ArriveAtMs(5040);
  system_->journal.Clear();
  const CapturedLog log;
  capture->Stop();
  EXPECT_THAT(calls(), ElementsAre("CloseSession", "ReleaseTarget"));
  EXPECT_THAT(log.lines(),
              ElementsAre("[INFO] Video Capture stopped,trigger count 3 , total frames processed: 2"));
}

TEST_F(VideoCaptureLifecycle, TakesNoFrameAfterTheStop) {
  const auto capture = Running();
  capture->Stop();
  system_->journal.Clear();
  system_->ArriveAtMs(5000);
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(VideoCaptureLifecycle, StopsOnce) {
  const auto capture = Construct();
  const CapturedLog log;
  capture->Stop();
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Capture session is not running"));
  capture->Start();
  capture->Stop();
  system_->journal.Clear();
  capture->Stop();
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_EQ(log.count("[INFO] Capture session is not running"), 2);
}

TEST_F(VideoCaptureLifecycle, RaisesAStopThatFailsButNotFromItsDestructor) {
  system_->raised = {{"CloseSession", kFailure}};
  EXPECT_THROW(Running()->Stop(), HResultError);
  const CapturedLog log;
  Running().reset();
  EXPECT_THAT(log.text(), ::testing::HasSubstr("[ERROR] Exception in ~VideoCapture: HRESULT: 0x80004005"));
  EXPECT_EQ(calls().back(), "platform gone");
}

TEST_F(VideoCaptureLifecycle, StopsWhenDestroyedAndTakesNoCallAfterwards) {
  Running().reset();
  EXPECT_THAT(calls(), ElementsAre("CloseSession", "ReleaseTarget", "platform gone"));
  system_->journal.Clear();
  EXPECT_EQ(system_->ArriveAtMs(5000), 0);
  EXPECT_THAT(calls(), IsEmpty());
}

}  // namespace
}  // namespace brisolte::testing
