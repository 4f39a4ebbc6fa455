#include "capture/capture_controller.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "common/text.h"
#include "fake_recording_parts.h"
#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::FakeRecordingParts;
using ::testing::IsEmpty;
using testing::Stage;

MonitorEntry Monitor(std::int32_t index, const std::string& name) {
  MonitorEntry monitor;
  monitor.index = index;
  monitor.name = name;
  return monitor;
}

class CaptureControllerTest : public ::testing::Test {
 protected:
  Stage stage_;
  CaptureController controller_{std::make_unique<FakeRecordingParts>(stage_)};
};

TEST(CaptureController, CannotBeWithoutAGraphicsDevice) {
  Stage stage;
  stage.hasDevice = false;
  try {
    const CaptureController controller(std::make_unique<FakeRecordingParts>(stage));
    FAIL() << "constructed";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "Failed to initialize Direct3D11 device");
  }
}

TEST_F(CaptureControllerTest, StartsWithTheDefaults) {
  const CaptureSettings settings = controller_.settings();
  EXPECT_EQ(settings.mode, CaptureMode::kScreen);
  EXPECT_EQ(settings.useMediaFoundation, 0);
  EXPECT_EQ(settings.monitorIndex, 0);
  EXPECT_EQ(settings.windowHandle, 0);
  EXPECT_EQ(settings.region.left, 0);
  EXPECT_EQ(settings.region.top, 0);
  EXPECT_EQ(settings.region.width, 0);
  EXPECT_EQ(settings.region.height, 0);
  EXPECT_EQ(settings.encoderName, "libx264");
  EXPECT_EQ(settings.bitrate, 5000000);
  EXPECT_EQ(settings.frameRate, 30);
  EXPECT_TRUE(settings.captureCursor);
  EXPECT_FALSE(settings.borderHighlight);
  EXPECT_EQ(settings.outputFilePath, "");
  EXPECT_EQ(settings.outputDir, "");
  EXPECT_EQ(settings.microphoneDeviceId, "");
  EXPECT_EQ(settings.speakerDeviceId, "");
  EXPECT_EQ(settings.audioBitrate, 128000);
  EXPECT_EQ(settings.audioSampleRate, 44100);
  EXPECT_EQ(settings.audioChannels, 2);
  EXPECT_FALSE(controller_.isCapturing());
  EXPECT_EQ(controller_.getSaveFilePath(), "");
}

TEST_F(CaptureControllerTest, ATargetBringsItsMode) {
  EXPECT_TRUE(controller_.setRegion({.left = -1, .top = 2, .width = -3, .height = 4}));
  EXPECT_EQ(controller_.settings().mode, CaptureMode::kRegion);
  EXPECT_TRUE(controller_.setWindow(0x1234567890));
  EXPECT_EQ(controller_.settings().mode, CaptureMode::kWindow);
  EXPECT_TRUE(controller_.setMonitor(-7));
  EXPECT_EQ(controller_.settings().mode, CaptureMode::kScreen);
  EXPECT_EQ(controller_.settings().monitorIndex, -7);
  EXPECT_TRUE(controller_.setMode(CaptureMode::kNone));
  const CaptureSettings settings = controller_.settings();
  EXPECT_EQ(settings.mode, CaptureMode::kNone);
  EXPECT_EQ(settings.windowHandle, 0x1234567890);
  EXPECT_EQ(settings.region.left, -1);
  EXPECT_EQ(settings.region.top, 2);
  EXPECT_EQ(settings.region.width, -3);
  EXPECT_EQ(settings.region.height, 4);
}

TEST_F(CaptureControllerTest, StoresWhatItIsGiven) {
  const CapturedLog log;
  EXPECT_TRUE(controller_.setFrameRate(120));
  EXPECT_TRUE(controller_.setBitrate(100000));
  EXPECT_TRUE(controller_.setCursorCapture(false));
  EXPECT_TRUE(controller_.setBorderHighlight(true));
  EXPECT_TRUE(controller_.setMicrophoneDevice("mic"));
  EXPECT_TRUE(controller_.setSpeakerDevice("speaker"));
  EXPECT_TRUE(controller_.setAudioBitrate(1));
  const CaptureSettings settings = controller_.settings();
  EXPECT_EQ(settings.frameRate, 120);
  EXPECT_EQ(settings.bitrate, 100000);
  EXPECT_FALSE(settings.captureCursor);
  EXPECT_TRUE(settings.borderHighlight);
  EXPECT_EQ(settings.microphoneDeviceId, "mic");
  EXPECT_EQ(settings.speakerDeviceId, "speaker");
  EXPECT_EQ(settings.audioBitrate, 1);
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(CaptureControllerTest, ChoosesTheEngineByTheExactName) {
  const std::vector<std::pair<std::string, int>> engines = {
      {"mf_h264", 1},  {"libx264", 0}, {"mf_hevc", 1},
      {"MF_H264", 0},  {"mf_HEVC", 0}, {"mf_h26", 0},
      {"mf_h2645", 0}, {"", 0},        {std::string("mf_h264\0", 8), 0}};
  for (const auto& [name, useMediaFoundation] : engines) {
    EXPECT_TRUE(controller_.setEncoder(name));
    EXPECT_EQ(controller_.settings().useMediaFoundation, useMediaFoundation) << name;
    EXPECT_EQ(controller_.settings().encoderName, name);
  }
}

TEST_F(CaptureControllerTest, TakesPositiveAudioBitratesOnly) {
  const CapturedLog log;
  EXPECT_FALSE(controller_.setAudioBitrate(0));
  EXPECT_FALSE(controller_.setAudioBitrate(-5));
  EXPECT_TRUE(controller_.setAudioBitrate(2147483647));
  EXPECT_FALSE(controller_.setAudioBitrate(0));
  EXPECT_EQ(controller_.settings().audioBitrate, 2147483647);
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Invalid audio bitrate", "[ERROR] Invalid audio bitrate",
                                       "[ERROR] Invalid audio bitrate"));
}

TEST_F(CaptureControllerTest, FindsAMonitorByItsExactName) {
  stage_.desktop.monitors = {Monitor(0, R"(\\.\DISPLAY1)"), Monitor(1, R"(\\.\DISPLAY2)"),
                             Monitor(2, R"(\\.\DISPLAY2)")};
  controller_.setWindow(5);
  for (const std::string name : {R"(\\.\Display2)", R"(\\.\DISPLAY)", R"(\\.\DISPLAY2 )", ""}) {
    EXPECT_FALSE(controller_.setMonitorByName(name)) << name;
  }
  EXPECT_EQ(controller_.settings().mode, CaptureMode::kWindow);
  EXPECT_EQ(controller_.settings().monitorIndex, 0);
  EXPECT_TRUE(controller_.setMonitorByName(R"(\\.\DISPLAY2)"));
  EXPECT_EQ(controller_.settings().mode, CaptureMode::kScreen);
  EXPECT_EQ(controller_.settings().monitorIndex, 1);
}

TEST_F(CaptureControllerTest, RefusesEverySettingWhileItRecords) {
  stage_.desktop.monitors = {Monitor(0, "one")};
  controller_.setMode(CaptureMode::kNone);
  ASSERT_TRUE(controller_.startRecord());
  const CapturedLog log;
  EXPECT_FALSE(controller_.setMode(CaptureMode::kScreen));
  EXPECT_FALSE(controller_.setMonitor(1));
  EXPECT_FALSE(controller_.setMonitorByName("one"));
  EXPECT_FALSE(controller_.setWindow(1));
  EXPECT_FALSE(controller_.setRegion({1, 1, 1, 1}));
  EXPECT_FALSE(controller_.setFrameRate(1));
  EXPECT_FALSE(controller_.setBitrate(100001));
  EXPECT_FALSE(controller_.setEncoder("mf_h264"));
  EXPECT_FALSE(controller_.setCursorCapture(false));
  EXPECT_FALSE(controller_.setBorderHighlight(true));
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_FALSE(controller_.setMicrophoneDevice("m"));
  EXPECT_FALSE(controller_.setSpeakerDevice("s"));
  EXPECT_FALSE(controller_.setAudioBitrate(1));
  EXPECT_FALSE(controller_.setAudioBitrate(0));
  EXPECT_FALSE(controller_.setOutputDir("/"));
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Cannot set microphone device while capturing",
                                       "[ERROR] Cannot set speaker device while capturing",
                                       "[ERROR] Cannot set audio bitrate while capturing",
                                       "[ERROR] Cannot set audio bitrate while capturing",
                                       "[ERROR] Cannot set output directory while capturing"));
  const CaptureSettings settings = controller_.settings();
  EXPECT_EQ(settings.mode, CaptureMode::kNone);
  EXPECT_EQ(settings.useMediaFoundation, 0);
  EXPECT_EQ(settings.monitorIndex, 0);
  EXPECT_EQ(settings.windowHandle, 0);
  EXPECT_EQ(settings.region.width, 0);
  EXPECT_EQ(settings.encoderName, "libx264");
  EXPECT_EQ(settings.bitrate, 5000000);
  EXPECT_EQ(settings.frameRate, 30);
  EXPECT_TRUE(settings.captureCursor);
  EXPECT_FALSE(settings.borderHighlight);
  EXPECT_EQ(settings.outputDir, "");
  EXPECT_EQ(settings.microphoneDeviceId, "");
  EXPECT_EQ(settings.speakerDeviceId, "");
  EXPECT_EQ(settings.audioBitrate, 128000);
  EXPECT_TRUE(controller_.stopRecord());
  EXPECT_TRUE(controller_.setMode(CaptureMode::kScreen));
}

TEST_F(CaptureControllerTest, ListsTheDevices) {
  ASSERT_EQ(controller_.getMicrophones().size(), 1U);
  EXPECT_EQ(controller_.getMicrophones()[0].id, "m");
  ASSERT_EQ(controller_.getSpeakers().size(), 1U);
  EXPECT_EQ(controller_.getSpeakers()[0].id, "s");
}

TEST_F(CaptureControllerTest, CountsTheAudioDevicesInTheLog) {
  const CapturedLog log(LogLevel::kInfo);
  controller_.getMicrophones();
  controller_.getSpeakers();
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Starting microphone enumeration...",
                                       "[INFO] Microphone enumeration completed, found 1 microphone devices",
                                       "[INFO] Starting speaker enumeration...",
                                       "[INFO] Speaker enumeration completed, found 1 speaker devices"));
}

TEST_F(CaptureControllerTest, TakesAScreenshotOfTheCurrentTarget) {
  controller_.setWindow(77);
  stage_.Take();
  EXPECT_TRUE(controller_.captureScreenshot("C:\\a.png"));
  EXPECT_THAT(stage_.Take(), ElementsAre("screenshot C:\\a.png"));
  EXPECT_EQ(stage_.settings.back().windowHandle, 77);
}

class OutputDirTest : public CaptureControllerTest {
 public:
  OutputDirTest(const OutputDirTest&) = delete;
  OutputDirTest& operator=(const OutputDirTest&) = delete;

 protected:
  OutputDirTest() { std::filesystem::create_directories(folder_); }
  ~OutputDirTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  void ExpectRefused(const std::string& directory) {
    const CapturedLog log;
    EXPECT_FALSE(controller_.setOutputDir(directory)) << directory;
    EXPECT_EQ(controller_.settings().outputDir, "");
    EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Invalid or non-existent output directory: " + directory));
  }

  void ExpectTaken(const std::string& directory) {
    const CapturedLog log;
    EXPECT_TRUE(controller_.setOutputDir(directory));
    EXPECT_EQ(controller_.settings().outputDir, directory);
    EXPECT_THAT(log.lines(), ElementsAre("[INFO] Output directory set to: " + directory));
  }

  const std::filesystem::path folder_ = std::filesystem::temp_directory_path() / "brisolte-output-dir-test";
};

TEST_F(OutputDirTest, TakesAnExistingDirectoryAsItIsWritten) {
  const std::string text = PathToUtf8(folder_);
  ExpectTaken(text);
  ExpectTaken(text + "/");
  ExpectTaken(text + "/../" + PathToUtf8(folder_.filename()));
  ExpectTaken(".");
}

TEST_F(OutputDirTest, TakesADirectoryInAnyScript) {
  const std::filesystem::path inner =
      folder_ / PathFromUtf8("\xC3\xBC \xE6\xBC\xA2\xE5\xAD\x97 \xF0\x9F\x8E\xA5");
  std::filesystem::create_directories(inner);
  ExpectTaken(PathToUtf8(inner));
}

#ifdef _WIN32
TEST_F(OutputDirTest, TakesADriveWithoutAPath) {
  ExpectTaken("C:");
  ExpectTaken("C:\\");
}
#endif

TEST_F(OutputDirTest, RefusesWhatIsNoDirectory) {
  const std::filesystem::path file = folder_ / "file";
  std::ofstream(file) << "text";
  ExpectRefused("");
  ExpectRefused(PathToUtf8(folder_ / "missing"));
  ExpectRefused(PathToUtf8(folder_ / "missing" / "deeper"));
  ExpectRefused(PathToUtf8(file));
  ExpectRefused(PathToUtf8(file / "deeper"));
}

TEST_F(OutputDirTest, RefusesTextBehindANul) {
  std::string text = PathToUtf8(folder_);
  text.push_back('\0');
  ExpectRefused(text);
  ExpectRefused(text + "more");
}

#ifdef _WIN32
TEST_F(OutputDirTest, TakesAPathBehindAMark) {
  ExpectTaken(R"(\\?\)" + PathToUtf8(folder_));
  ExpectTaken(R"(\\?\C:\)");
}
#else
// The Windows programs have this test beside the functions that ask the system.
TEST_F(OutputDirTest, RaisesAStatusThatCannotBeRead) {
  const std::string tooLong = PathToUtf8(folder_) + "/" + std::string(70000, 'a');
  EXPECT_THROW(controller_.setOutputDir(tooLong), std::filesystem::filesystem_error);
  EXPECT_EQ(controller_.settings().outputDir, "");
  ExpectTaken(PathToUtf8(folder_));
}
#endif

TEST_F(OutputDirTest, KeepsTheDirectoryWhenAnotherIsRefused) {
  ExpectTaken(PathToUtf8(folder_));
  EXPECT_FALSE(controller_.setOutputDir(""));
  EXPECT_EQ(controller_.settings().outputDir, PathToUtf8(folder_));
}

}  // namespace
}  // namespace brisolte
