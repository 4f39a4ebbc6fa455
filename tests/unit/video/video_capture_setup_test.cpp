#include "fixture.h"

namespace brisolte::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

class VideoCaptureSetup : public VideoCaptureTest {
 protected:
  /// The ERROR lines of a construction that must fail; a system's message that ends in a line break stays on
  /// its line.
  void ExpectErrors(const std::vector<std::string>& starts) {
    const auto lines = FailedLines();
    std::vector<std::string> errors;
    std::ranges::copy_if(lines, std::back_inserter(errors),
                         [](const std::string& line) { return line.starts_with("[ERROR]"); });
    ASSERT_EQ(errors.size(), starts.size()) << ::testing::PrintToString(errors);
    for (std::size_t i = 0; i < starts.size(); ++i) {
      EXPECT_THAT(errors[i], StartsWith("[ERROR] " + starts[i]));
    }
  }
};

TEST_F(VideoCaptureSetup, RunsItsStepsInOrder) {
  const auto capture = Construct();
  EXPECT_TRUE(capture->initialized());
  EXPECT_THAT(calls(),
              ElementsAre("CreateDevice 1", "QueryVideoDevice", "QueryVideoContext", "WrapDevice",
                          "ObtainItemInterop", "Monitors", "MonitorFromPoint 960,540", "target 11",
                          "CreateItemForMonitor", "ItemSize", "2 buffers of 1920x1080", "CreateFramePool",
                          "SubscribeFrameArrived", "CreateSession", "frame begins at 0,0", "frame rate 30",
                          "CreateVideoProcessorEnumerator", "CreateVideoProcessor", "video stream 1920x1080",
                          "GetPixelFormat", "SetOutputFormat 103"));
  EXPECT_EQ(encoder_.device, reinterpret_cast<ID3D11Device*>(system_.get()));
}

TEST_F(VideoCaptureSetup, SaysWhatItDoes) {
  const CapturedLog log(LogLevel::kDebug);
  const auto capture = Construct();
  EXPECT_THAT(
      log.lines(),
      ElementsAre("[INFO] Attempting to create D3D11 device with driver type: 1",
                  "[INFO] D3D11 device created successfully with driver type: 1 and feature level: 45312",
                  "[INFO] Successfully created WinRT Direct3D device (ID: fake)",
                  "[INFO] Capture dimensions set to: 1920x1080",
                  "[INFO] Creating frame pool with resolution: 1920x1080pool size:2, frame rate: 30",
                  "[INFO] Frame pool and capture session initialized successfully",
                  "[DEBUG] ConvertFFmpegPixelFormatToDXGI: DXGI_FORMAT_NV12"));
}

TEST_F(VideoCaptureSetup, ConvertsToWhatTheEncoderWants) {
  encoder_.wantsNv12 = false;
  Construct();
  EXPECT_THAT(calls(), Contains("SetOutputFormat 87"));
}

TEST_F(VideoCaptureSetup, ChecksTheFrameRateFirst) {
  settings_.frameRate = 0;
  settings_.bitrate = 0;
  ExpectErrors({"Invalid frame rate", "VideoCapture: InitializeCaptureConfig failed"});
  settings_.frameRate = -1;
  ExpectErrors({"Invalid frame rate", "VideoCapture: InitializeCaptureConfig failed"});
  settings_.frameRate = 1;
  ExpectErrors({"Invalid bitrate", "VideoCapture: InitializeCaptureConfig failed"});
  EXPECT_THAT(calls(), Not(Contains("CreateDevice 1")));
}

TEST_F(VideoCaptureSetup, TriesDriverTypesInTurn) {
  system_->results = {{"CreateDevice 1", kFailure}, {"CreateDevice 5", kFailure}};
  const CapturedLog log(LogLevel::kInfo);
  EXPECT_TRUE(Construct()->initialized());
  EXPECT_THAT(calls(), IsSupersetOf({"CreateDevice 1", "CreateDevice 5", "CreateDevice 2"}));
  EXPECT_THAT(log.text(),
              HasSubstr("[ERROR] Failed to create D3D11 device with driver type 1: " + FailureText()));
  EXPECT_TRUE(log.has("[INFO] Attempting to create D3D11 device with driver type: 5"));
  EXPECT_TRUE(
      log.has("[INFO] D3D11 device created successfully with driver type: 2 and feature level: 45312"));
}

TEST_F(VideoCaptureSetup, FailsWithoutADevice) {
  system_->results = {
      {"CreateDevice 1", kFailure}, {"CreateDevice 5", kFailure}, {"CreateDevice 2", kFailure}};
  ExpectErrors({"Failed to create D3D11 device with driver type 1: " + FailureText().substr(0, 19),
                "Failed to create D3D11 device with driver type 5: ",
                "Failed to create D3D11 device with driver type 2: ",
                "Failed to create D3D11 device with any driver type",
                "VideoCapture: InitializeD3D11 failed"});
}

TEST_F(VideoCaptureSetup, FailsWithoutVideoInterfaces) {
  system_->results = {{"QueryVideoDevice", kFailure}};
  ExpectErrors({"Failed to get video device: HRESULT: 0x80004005", "VideoCapture: InitializeD3D11 failed"});
  system_->results = {{"QueryVideoContext", kFailure}};
  ExpectErrors({"Failed to get video context: HRESULT: 0x80004005", "VideoCapture: InitializeD3D11 failed"});
}

TEST_F(VideoCaptureSetup, ConvertsOnTheCpuWhereThereIsNoVideoProcessor) {
  constexpr auto kNoInterface = static_cast<std::int32_t>(0x80004002);
  constexpr auto kNotImplemented = static_cast<std::int32_t>(0x80004001);
  constexpr auto kUnsupported = static_cast<std::int32_t>(0x887A0004);
  const std::vector<std::pair<std::string, std::int32_t>> answers{
      {"QueryVideoDevice", kNoInterface},
      {"QueryVideoContext", kNoInterface},
      {"CreateVideoProcessorEnumerator", kNotImplemented},
      {"CreateVideoProcessorEnumerator", kUnsupported},
      {"CreateVideoProcessor", kNotImplemented}};
  for (const auto& answer : answers) {
    system_->results = {answer};
    system_->journal.Clear();
    const CapturedLog log(LogLevel::kInfo);
    EXPECT_TRUE(Construct()->initialized()) << answer.first;
    EXPECT_THAT(calls(), IsSupersetOf({"ConvertOnCpu 1920x1080", "SetOutputFormat 103"})) << answer.first;
    EXPECT_THAT(log.text(), HasSubstr("[INFO] No video processor, frames are converted on the CPU: " +
                                      HResultText(answer.second)));
    EXPECT_THAT(log.text(), Not(HasSubstr("[ERROR]")));
  }
}

TEST_F(VideoCaptureSetup, RecordsARegionFromTheMonitorThatShowsIt) {
  system_->desktop.monitors.push_back({1, "second", 12, {1920, 0, 3840, 1080}, false});
  settings_.mode = CaptureMode::kRegion;
  settings_.region = {2020, 50, 640, 480};
  Construct();
  EXPECT_THAT(calls(), IsSupersetOf({"MonitorFromPoint 2880,540", "frame begins at 100,50"}));
}

// A laptop at 150 % with a monitor at 100 % left of it: places are in the pixels of both.
TEST_F(VideoCaptureSetup, FindsPlacesOnMonitorsOfAnyScaleAndOrigin) {
  system_->desktop.monitors = {{0, "laptop", 11, {0, 0, 2880, 1800}, true},
                               {1, "left", 12, {-1920, 180, 0, 1260}, false}};
  settings_.mode = CaptureMode::kRegion;
  settings_.region = {-1000, 300, 640, 360};
  Construct();
  EXPECT_THAT(calls(), IsSupersetOf({"MonitorFromPoint -960,720", "2 buffers of 1560x480",
                                     "frame begins at 920,120", "video stream 640x360"}));
  system_->journal.Clear();
  system_->itemSize = {2880, 1800};
  settings_.region = {-100, 300, 640, 360};
  Construct();
  EXPECT_THAT(calls(), IsSupersetOf({"MonitorFromPoint 1440,900", "frame begins at -100,300"}));
  system_->journal.Clear();
  settings_.region = {2240, 1440, 640, 360};
  Construct();
  EXPECT_THAT(calls(), IsSupersetOf({"2 buffers of 2880x1800", "frame begins at 2240,1440"}));
}

TEST_F(VideoCaptureSetup, FailsWithoutTheCaptureService) {
  const std::string step = "VideoCapture: InitializeWGCDevice failed";
  system_->missing = {{"DXGI device", true}};
  ExpectErrors({"Exception in InitializeWGCDevice: Failed to get DXGI device", step});
  system_->missing = {{"wrapped device", true}};
  ExpectErrors({"Failed to create WinRT Direct3D device", step});
  system_->missing = {{"interop", true}};
  ExpectErrors({"Failed to get GraphicsCaptureItemInterop interface", step});
}

TEST_F(VideoCaptureSetup, RefusesAMonitorThatIsNotThere) {
  const std::string step = "VideoCapture: CreateCaptureItem failed";
  settings_.monitorIndex = 1;
  ExpectErrors({"Invalid monitor index: 1", step});
  settings_.monitorIndex = -1;
  ExpectErrors({"Invalid monitor index: -1", step});
  settings_.monitorIndex = 0;
  system_->desktop.nearestMonitor = 0;
  ExpectErrors({"Failed to get monitor handle", step});
}

TEST_F(VideoCaptureSetup, ChoosesTheMonitorByItsCentre) {
  system_->desktop.monitors.push_back({1, "second", 12, {-1279, -1024, 0, 0}, false});
  system_->desktop.nearestMonitor = 12;
  settings_.monitorIndex = 1;
  Construct();
  EXPECT_THAT(calls(), IsSupersetOf({"MonitorFromPoint -640,-512", "target 12"}));
}

TEST_F(VideoCaptureSetup, FailsWithoutAnItem) {
  const std::string step = "VideoCapture: CreateCaptureItem failed";
  system_->missing = {{"item", true}};
  ExpectErrors({"Capture item is null after creation", step});
  system_->results = {{"CreateItemForMonitor", kFailure}, {"CreateItemForWindow", kFailure}};
  ExpectErrors({"Failed to create monitor videoCapture item: HRESULT: 0x80004005", step});
  settings_.mode = CaptureMode::kWindow;
  settings_.windowHandle = 5;
  ExpectErrors({"Failed to create window videoCapture item: HRESULT: 0x80004005", step});
}

TEST_F(VideoCaptureSetup, FailsQuietlyWithoutATarget) {
  settings_.mode = CaptureMode::kNone;
  ExpectErrors({"VideoCapture: CreateCaptureItem failed"});
  settings_.mode = static_cast<CaptureMode>(7);
  ExpectErrors({"VideoCapture: CreateCaptureItem failed"});
}

TEST_F(VideoCaptureSetup, CapturesAWindow) {
  settings_.mode = CaptureMode::kWindow;
  settings_.windowHandle = 5;
  system_->itemSize = {641, 479};
  Construct();
  EXPECT_THAT(calls(), IsSupersetOf({"target 5", "CreateItemForWindow", "video stream 642x480"}));
  EXPECT_THAT(calls(), Not(Contains(StartsWith("RestoreWindow"))));
}

TEST_F(VideoCaptureSetup, RefusesWhatIsNoWindow) {
  settings_.mode = CaptureMode::kWindow;
  ExpectErrors({"Invalid window handle", "VideoCapture: CreateCaptureItem failed"});
  settings_.windowHandle = 5;
  system_->desktop.isWindow = false;
  ExpectErrors({"Invalid window handle", "VideoCapture: CreateCaptureItem failed"});
}

TEST_F(VideoCaptureSetup, ShowsAHiddenAndMinimisedWindowStepByStep) {
  settings_.mode = CaptureMode::kWindow;
  settings_.windowHandle = 5;
  system_->desktop.windowVisible = {false, true};
  system_->desktop.windowIconic = {true, false};
  const CapturedLog log(LogLevel::kWarn);
  EXPECT_TRUE(Construct()->initialized());
  EXPECT_THAT(log.lines(), ElementsAre("[WARNING] Warning: Target window is not visible",
                                       "[WARNING] Warning: Target window is minimized"));
  const auto all = calls();
  const auto from = std::ranges::find(all, "ObtainItemInterop") + 1;
  EXPECT_THAT(std::vector<std::string>(from, from + 12),
              ElementsAre("IsWindow 5", "IsWindowVisible 5", "IsIconic 5", "RestoreWindow 5",
                          "BringWindowToTop 5", "UpdateWindow 5", "Sleep 100", "IsWindowVisible 5",
                          "RestoreWindow 5", "Sleep 100", "IsIconic 5", "target 5"));
}

TEST_F(VideoCaptureSetup, GivesUpOnAWindowThatStaysHiddenOrMinimised) {
  settings_.mode = CaptureMode::kWindow;
  settings_.windowHandle = 5;
  system_->desktop.windowVisible = {false};
  ExpectErrors(
      {"Window still not visible after attempting to restore", "VideoCapture: CreateCaptureItem failed"});
  system_->desktop.windowVisible = {true};
  system_->desktop.windowIconic = {true};
  ExpectErrors(
      {"Window still minimized after attempting to restore", "VideoCapture: CreateCaptureItem failed"});
}

TEST_F(VideoCaptureSetup, SizesAnItemAndARegionUpToEven) {
  system_->itemSize = {1366, 767};
  Construct();
  EXPECT_THAT(calls(), IsSupersetOf({"2 buffers of 1366x768", "video stream 1366x768"}));
  system_->journal.Clear();
  settings_.mode = CaptureMode::kRegion;
  settings_.region = {30, 20, 101, 51};
  const CapturedLog log(LogLevel::kInfo);
  Construct();
  EXPECT_THAT(calls(), IsSupersetOf({"2 buffers of 132x72", "frame begins at 30,20", "video stream 102x52"}));
  EXPECT_TRUE(log.has("[INFO] Capture dimensions set to: 102x52"));
}

TEST_F(VideoCaptureSetup, RecordsTheWholeMonitorForARegionWithoutSize) {
  settings_.mode = CaptureMode::kRegion;
  settings_.region = {30, 20, 0, 50};
  Construct();
  EXPECT_THAT(calls(),
              IsSupersetOf({"2 buffers of 1920x1080", "frame begins at 0,0", "video stream 1920x1080"}));
}

TEST_F(VideoCaptureSetup, RefusesARegionThatNothingCanShow) {
  settings_.mode = CaptureMode::kRegion;
  settings_.region = {1920, 0, 100, 100};
  ExpectErrors({"Region lies outside the monitor", "VideoCapture: CreateCaptureItem failed"});
  settings_.region = {0, 0, 1 << 30, 1 << 30};
  ExpectErrors(
      {"Capture size is not supported: 1073741824x1073741824", "VideoCapture: CreateCaptureItem failed"});
}

TEST_F(VideoCaptureSetup, FailsWithoutWhatThePoolNeeds) {
  const std::string step = "VideoCapture: CreateFramePool failed";
  system_->missing = {{"wrapped device for the pool", true}};
  ExpectErrors({"WinRT Direct3D device is null", step});
  system_->missing = {{"item for the pool", true}};
  ExpectErrors({"Capture item is null after creating frame pool", step});
  system_->missing = {{"frame pool", true}};
  ExpectErrors({"Failed to create frame pool object", step});
}

TEST_F(VideoCaptureSetup, FailsWithoutASession) {
  const std::string step = "VideoCapture: CreateFramePool failed";
  system_->missing = {{"session", true}};
  ExpectErrors({"Frame pool is null after creating capture session", step});
  system_->results = {{"CreateSession", kFailure}};
  ExpectErrors({"Failed to create videoCapture from frame pool", step});
}

TEST_F(VideoCaptureSetup, FailsWithoutAVideoProcessor) {
  const std::string step = "VideoCapture: CreateFramePool failed";
  system_->results = {{"CreateVideoProcessorEnumerator", kFailure}};
  ExpectErrors({"Failed to create video processor enumerator: HRESULT: 0x80004005", step});
  system_->results = {{"CreateVideoProcessor", kFailure}};
  ExpectErrors({"Failed to create video processor: HRESULT: 0x80004005", step});
}

TEST_F(VideoCaptureSetup, FailsWithoutAVideoStream) {
  encoder_.acceptsStream = false;
  ExpectErrors({"VideoCapture: ConfigureVideoStream failed"});
  EXPECT_THAT(calls(), Not(Contains("GetPixelFormat")));
}

TEST_F(VideoCaptureSetup, RaisesFailuresThatNoStepAnswersFor) {
  for (const char* call : {"ItemSize", "CreateFramePool", "SubscribeFrameArrived"}) {
    system_->raised = {{call, kFailure}};
    try {
      Construct();
      ADD_FAILURE() << call;
    } catch (const HResultError& error) {
      EXPECT_EQ(error.hresult(), kFailure);
    }
    EXPECT_EQ(calls().back(), "platform gone");
  }
}

TEST_F(VideoCaptureSetup, LetsNoCallThroughAfterAFailedConstruction) {
  encoder_.acceptsStream = false;
  Construct();
  const CapturedLog log;
  EXPECT_EQ(system_->Arrive(1), 0);
  EXPECT_THAT(log.lines(), ::testing::IsEmpty());
}

}  // namespace
}  // namespace brisolte::testing
