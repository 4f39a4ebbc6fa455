#include <gmock/gmock.h>
#include <objbase.h>

#include <future>
#include <stdexcept>
#include <thread>

#include "common/com_apartment.h"
#include "common/hresult_error.h"
#include "keeping_encoder.h"
#include "support/capture_standin.h"
#include "support/captured_log.h"
#include "support/painted_window.h"
#include "support/standin_fault.h"
#include "support/test_window.h"
#include "video/create_video_capture.h"

namespace brisolte::testing {
namespace {

using ::testing::HasSubstr;

constexpr std::uint32_t kRed = 0xFF0000;
constexpr std::uint32_t kGreen = 0x00FF00;
constexpr std::uint32_t kBlue = 0x0000FF;
constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr std::uint32_t kBlack = 0x000000;

// BT.709 of limited range.
constexpr Yuv kRedYuv{63, 102, 240};
constexpr Yuv kGreenYuv{173, 42, 26};
constexpr Yuv kBlueYuv{32, 240, 118};
constexpr Yuv kWhiteYuv{235, 128, 128};
constexpr Yuv kBlackYuv{16, 128, 128};

MATCHER_P(Near, colour, "") {
  *result_listener << arg.y << "," << arg.u << "," << arg.v;
  return std::abs(arg.y - colour.y) <= 2 && std::abs(arg.u - colour.u) <= 2 &&
         std::abs(arg.v - colour.v) <= 2;
}

/// Recordings of real windows through the capture service.
class WindowsCapture : public ::testing::Test {
 public:
  WindowsCapture(const WindowsCapture&) = delete;
  WindowsCapture& operator=(const WindowsCapture&) = delete;

 protected:
  WindowsCapture() {
    Logger::SetLevel(LogLevel::kWarn);
    // Takes every frame: the last change of a picture is no frame's that may be dropped.
    settings_.frameRate = 1000;
  }
  ~WindowsCapture() override { Logger::SetLevel(LogLevel::kInfo); }
  void TearDown() override { EXPECT_EQ(ComLetGoCount(), 0); }

  const std::shared_ptr<PausableClock> clock_ = std::make_shared<PausableClock>();

  /// A capture of `settings_` that runs.
  std::unique_ptr<CaptureSource> Running(KeepingEncoder& encoder) {
    auto capture = CreateVideoCapture(settings_, encoder, *desktop_, clock_);
    if (!capture->initialized() || !capture->Start()) {
      throw std::runtime_error("the capture does not start");
    }
    return capture;
  }

  void AimAt(const PaintedWindow& window) {
    settings_.mode = CaptureMode::kWindow;
    settings_.windowHandle = window.number();
  }

  void AimAt(const CaptureRegion& region) {
    settings_.mode = CaptureMode::kRegion;
    settings_.region = region;
  }

  const std::unique_ptr<Desktop> desktop_ = CreateWindowsDesktop();
  CaptureSettings settings_;
};

TEST_F(WindowsCapture, ShowsTheScreenInBt709) {
  const PaintedWindow window({100, 80, 300, 200});
  KeepingEncoder encoder(true);
  const auto capture = Running(encoder);
  const Picture picture = encoder.WaitFor([](const Picture& frame) { return frame.At(290, 190).y == 235; });
  ASSERT_EQ(picture.width, GetSystemMetrics(SM_CXSCREEN));
  ASSERT_EQ(picture.height, GetSystemMetrics(SM_CYSCREEN));
  EXPECT_THAT(picture.At(150, 100), Near(kRedYuv));
  EXPECT_THAT(picture.At(250, 100), Near(kGreenYuv));
  EXPECT_THAT(picture.At(150, 180), Near(kBlueYuv));
  EXPECT_THAT(picture.At(250, 180), Near(kWhiteYuv));
  EXPECT_TRUE(encoder.textureFits());
}

TEST_F(WindowsCapture, ShowsTheScreenPacked) {
  const PaintedWindow window({100, 80, 300, 200});
  KeepingEncoder encoder(false);
  const auto capture = Running(encoder);
  const Picture picture = encoder.WaitFor([](const Picture& frame) { return frame.Rgb(290, 190) == kWhite; });
  ASSERT_EQ(picture.width, GetSystemMetrics(SM_CXSCREEN));
  EXPECT_EQ(picture.Rgb(101, 81), kRed);
  EXPECT_EQ(picture.Rgb(299, 81), kGreen);
  EXPECT_EQ(picture.Rgb(101, 199), kBlue);
  EXPECT_TRUE(encoder.textureFits());
}

TEST_F(WindowsCapture, ShowsAWindowOfOddSizeWithABlackEdge) {
  const PaintedWindow window({100, 80, 301, 201});
  AimAt(window);
  for (const bool nv12 : {true, false}) {
    KeepingEncoder encoder(nv12);
    const auto capture = Running(encoder);
    const Picture picture = encoder.WaitForFrame();
    ASSERT_EQ(picture.width, 202);
    ASSERT_EQ(picture.height, 122);
    if (nv12) {
      EXPECT_THAT(picture.At(0, 0), Near(kRedYuv));
      EXPECT_THAT(picture.At(198, 118), Near(kWhiteYuv));
      EXPECT_EQ(picture.At(200, 120).y, 235);
      EXPECT_EQ(picture.At(201, 60).y, 16);
      EXPECT_EQ(picture.At(60, 121).y, 16);
    } else {
      EXPECT_EQ(picture.Rgb(200, 120), kWhite);
      EXPECT_EQ(picture.Rgb(201, 60), kBlack);
      EXPECT_EQ(picture.Rgb(60, 121), kBlack);
    }
  }
}

TEST_F(WindowsCapture, ShowsARegionFromItsPlace) {
  const PaintedWindow window({100, 80, 300, 200});
  AimAt(CaptureRegion{111, 91, 151, 71});
  for (const bool nv12 : {true, false}) {
    KeepingEncoder encoder(nv12);
    const auto capture = Running(encoder);
    const Picture picture = encoder.WaitForFrame();
    ASSERT_EQ(picture.width, 152);
    ASSERT_EQ(picture.height, 72);
    if (nv12) {
      EXPECT_THAT(picture.At(0, 0), Near(kRedYuv));
      EXPECT_THAT(picture.At(150, 0), Near(kGreenYuv));
      EXPECT_THAT(picture.At(0, 70), Near(kBlueYuv));
      EXPECT_THAT(picture.At(150, 70), Near(kWhiteYuv));
    } else {
      EXPECT_EQ(picture.Rgb(88, 48), kRed);
      EXPECT_EQ(picture.Rgb(89, 48), kGreen);
      EXPECT_EQ(picture.Rgb(88, 49), kBlue);
      EXPECT_EQ(picture.Rgb(89, 49), kWhite);
    }
  }
}

TEST_F(WindowsCapture, ShowsBlackWhereARegionLeavesTheMonitor) {
  const int right = GetSystemMetrics(SM_CXSCREEN);
  const int bottom = GetSystemMetrics(SM_CYSCREEN);
  const PaintedWindow first({0, 0, 400, 400});
  const PaintedWindow last({right - 400, bottom - 400, right, bottom});
  for (const bool nv12 : {true, false}) {
    KeepingEncoder topLeft(nv12);
    AimAt(CaptureRegion{-51, -31, 200, 100});
    auto capture = Running(topLeft);
    Picture picture = topLeft.WaitForFrame();
    ASSERT_EQ(picture.width, 200);
    if (nv12) {
      EXPECT_THAT(picture.At(20, 50), Near(kBlackYuv));
      EXPECT_THAT(picture.At(100, 20), Near(kBlackYuv));
      EXPECT_EQ(picture.At(50, 31).y, 16);
      EXPECT_THAT(picture.At(52, 32), Near(kRedYuv));
      EXPECT_THAT(picture.At(199, 99), Near(kRedYuv));
    } else {
      EXPECT_EQ(picture.Rgb(50, 31), kBlack);
      EXPECT_EQ(picture.Rgb(51, 30), kBlack);
      EXPECT_EQ(picture.Rgb(51, 31), kRed);
    }
    KeepingEncoder bottomRight(nv12);
    AimAt(CaptureRegion{right - 50, bottom - 30, 200, 100});
    capture = Running(bottomRight);
    picture = bottomRight.WaitForFrame();
    ASSERT_EQ(picture.height, 100);
    if (nv12) {
      EXPECT_THAT(picture.At(49, 29), Near(kWhiteYuv));
      EXPECT_THAT(picture.At(50, 29), Near(kBlackYuv));
      EXPECT_THAT(picture.At(49, 30), Near(kBlackYuv));
    } else {
      EXPECT_EQ(picture.Rgb(49, 29), kWhite);
      EXPECT_EQ(picture.Rgb(50, 29), kBlack);
      EXPECT_EQ(picture.Rgb(49, 30), kBlack);
    }
  }
}

TEST_F(WindowsCapture, FollowsWhatChanges) {
  PaintedWindow window({100, 80, 300, 200});
  AimAt(window);
  KeepingEncoder encoder(false);
  const auto capture = Running(encoder);
  EXPECT_EQ(encoder.WaitForFrame().timestamp, 0);
  std::int64_t before = 0;
  for (const COLORREF colour : {RGB(1, 2, 3), RGB(40, 50, 60), RGB(200, 100, 50)}) {
    window.Paint(colour);
    const std::uint32_t shown = static_cast<std::uint32_t>(GetRValue(colour)) << 16 |
                                static_cast<std::uint32_t>(GetGValue(colour)) << 8 | GetBValue(colour);
    const Picture picture = encoder.WaitFor(
        [shown](const Picture& frame) { return frame.Rgb(10, 10) == shown && frame.Rgb(190, 110) == shown; });
    ASSERT_EQ(picture.width, 200);
    EXPECT_GT(picture.timestamp, before);
    EXPECT_LE(picture.duration, picture.timestamp);
    before = picture.timestamp;
  }
}

TEST_F(WindowsCapture, ShowsTheSameWithoutAVideoProcessor) {
  const PaintedWindow window({100, 80, 300, 200});
  AimAt(CaptureRegion{111, 91, 151, 71});
  const StandinFault fault("CreateVideoProcessorEnumerator 0x80004001");
  KeepingEncoder encoder(true);
  const auto capture = Running(encoder);
  const Picture picture = encoder.WaitForFrame();
  ASSERT_EQ(picture.width, 152);
  EXPECT_THAT(picture.At(0, 0), Near(kRedYuv));
  EXPECT_THAT(picture.At(150, 0), Near(kGreenYuv));
  EXPECT_THAT(picture.At(0, 70), Near(kBlueYuv));
  EXPECT_THAT(picture.At(150, 70), Near(kWhiteYuv));
}

TEST_F(WindowsCapture, NeedsNoTextureThatCanBeShared) {
  const PaintedWindow window({100, 80, 300, 200});
  AimAt(window);
  const StandinFault fault("CreateSharedTexture 0x80070057");
  KeepingEncoder encoder(true);
  const CapturedLog log(LogLevel::kWarn);
  const auto capture = Running(encoder);
  EXPECT_THAT(encoder.WaitForFrame().At(0, 0), Near(kRedYuv));
  EXPECT_THAT(log.lines(), ::testing::IsEmpty());
}

TEST_F(WindowsCapture, KeepsItsSizeWhenTheWindowChangesIts) {
  for (const bool nv12 : {true, false}) {
    PaintedWindow window({100, 80, 300, 200});
    AimAt(window);
    KeepingEncoder encoder(nv12);
    const auto capture = Running(encoder);
    const auto isBlack = [nv12](const Picture& frame, int x, int y) {
      return nv12 ? frame.At(x, y).y == 16 : frame.Rgb(x, y) == kBlack;
    };
    encoder.WaitForFrame();
    window.Resize(100, 60);
    const Picture smaller = encoder.WaitFor(
        [&](const Picture& frame) { return isBlack(frame, 150, 30) && isBlack(frame, 50, 100); });
    ASSERT_EQ(smaller.width, 200);
    EXPECT_FALSE(isBlack(smaller, 99, 59));
    window.Resize(500, 400);
    const Picture larger = encoder.WaitFor([&](const Picture& frame) { return !isBlack(frame, 199, 119); });
    EXPECT_EQ(larger.width, 200);
    EXPECT_EQ(larger.height, 120);
  }
}

TEST_F(WindowsCapture, ShowsAHiddenWindowAgain) {
  PaintedWindow window({100, 80, 300, 200});
  window.Hide();
  AimAt(window);
  KeepingEncoder encoder(false);
  const auto capture = Running(encoder);
  EXPECT_EQ(encoder.WaitForFrame().width, 200);
}

TEST_F(WindowsCapture, WorksOnThreadsOfAnyApartment) {
  for (const DWORD apartment : {DWORD{COINIT_APARTMENTTHREADED}, DWORD{COINIT_MULTITHREADED}}) {
    const auto run = [&] {
      CoInitializeEx(nullptr, apartment);
      KeepingEncoder encoder(true);
      int width = 0;
      {
        const auto capture = Running(encoder);
        width = encoder.WaitForFrame().width;
      }
      CoUninitialize();
      return width;
    };
    EXPECT_EQ(std::async(std::launch::async, run).get(), GetSystemMetrics(SM_CXSCREEN));
  }
}

TEST_F(WindowsCapture, WorksOnAThreadThatChangesItsApartment) {
  const auto run = [&] {
    KeepingEncoder encoder(true);
    const auto capture = CreateVideoCapture(settings_, encoder, *desktop_, clock_);
    // What the recording of sound does between the making of a session and its start.
    const ComApartment sound(COINIT_APARTMENTTHREADED);
    EXPECT_TRUE(SUCCEEDED(sound.result()));
    EXPECT_TRUE(capture->initialized() && capture->Start());
    const int width = encoder.WaitForFrame().width;
    capture->Stop();
    return width;
  };
  EXPECT_EQ(std::async(std::launch::async, run).get(), GetSystemMetrics(SM_CXSCREEN));
}

TEST_F(WindowsCapture, ShowsAWindowOfItsOwnThread) {
  // The service asks it for its title, which this thread has to answer while it waits for the service.
  const TestWindow window(L"own", {100, 80, 300, 200});
  settings_.mode = CaptureMode::kWindow;
  settings_.windowHandle = window.number();
  KeepingEncoder encoder(true);
  const CapturedLog log(LogLevel::kWarn);
  EXPECT_TRUE(CreateVideoCapture(settings_, encoder, *desktop_, clock_)->initialized()) << log.text();
}

TEST_F(WindowsCapture, ShowsAfterAPauseWhatChangedInIt) {
  PaintedWindow window({100, 80, 300, 200});
  AimAt(window);
  KeepingEncoder encoder(false);
  const auto capture = Running(encoder);
  const Picture before = encoder.WaitFor([](const Picture& frame) { return frame.Rgb(60, 40) == kRed; });
  ASSERT_EQ(before.width, 200);
  capture->Pause();
  clock_->Pause();
  window.Paint(RGB(0, 0, 255));
  KeepingEncoder beside(false);
  const auto witness = Running(beside);
  ASSERT_EQ(beside.WaitFor([](const Picture& frame) { return frame.Rgb(60, 40) == kBlue; }).width, 200);
  EXPECT_EQ(encoder.WaitForFrame().Rgb(60, 40), kRed);
  clock_->Resume();
  capture->Resume();
  EXPECT_EQ(encoder.WaitFor([](const Picture& frame) { return frame.Rgb(60, 40) == kBlue; }).width, 200);
}

TEST_F(WindowsCapture, LeavesNothingBehind) {
  KeepingEncoder encoder(true);
  auto capture = Running(encoder);
  encoder.WaitForFrame();
  capture->Stop();
  capture.reset();
  EXPECT_TRUE(ServiceBecomesEmpty());
  EXPECT_EQ(encoder.DropDevice(), 0U);
}

TEST_F(WindowsCapture, RefusesARegionOutside) {
  AimAt(CaptureRegion{GetSystemMetrics(SM_CXSCREEN), 0, 100, 100});
  KeepingEncoder encoder(true);
  const CapturedLog log(LogLevel::kWarn);
  EXPECT_FALSE(CreateVideoCapture(settings_, encoder, *desktop_, clock_)->initialized());
  EXPECT_TRUE(log.has("[ERROR] Region lies outside the monitor"));
}

/// Recordings by a service that draws a pointer and a border.
class WindowsCaptureMarks : public WindowsCapture {
 protected:
  /// What a recording of a green window shows in its middle and at its edge.
  std::pair<std::uint32_t, std::uint32_t> Shown(const std::string& rules = "") {
    const StandinFault faults("DrawCursor 1\nDrawBorder 1\n" + rules);
    PaintedWindow window({100, 80, 300, 200});
    window.Paint(RGB(0, 255, 0));
    AimAt(window);
    KeepingEncoder encoder(false);
    options_.report = [this](RecordingEvent event) { heard_.push_back(event); };
    const auto capture = CreateVideoCapture(settings_, encoder, *desktop_, clock_, options_);
    EXPECT_TRUE(capture->initialized() && capture->Start());
    const Picture picture = encoder.WaitFor([](const Picture& frame) { return frame.Rgb(30, 30) == kGreen; });
    capture->Stop();
    return picture.width == 0 ? std::pair(kBlack, kBlack)
                              : std::pair(picture.Rgb(100, 60), picture.Rgb(2, 60));
  }

  static constexpr std::uint32_t kCursorColour = 0xFF00FF;
  static constexpr std::uint32_t kBorderColour = 0xFFFF00;
  RecordingOptions options_;
  std::vector<RecordingEvent> heard_;
};

TEST_F(WindowsCaptureMarks, AreShownUnlessTheyShallBeLeftOut) {
  EXPECT_EQ(Shown(), std::pair(kCursorColour, kBorderColour));
  options_.showsCursor = false;
  EXPECT_EQ(Shown(), std::pair(kGreen, kBorderColour));
  options_.showsBorder = false;
  EXPECT_EQ(Shown(), std::pair(kGreen, kGreen));
  options_.showsCursor = true;
  EXPECT_EQ(Shown(), std::pair(kCursorColour, kGreen));
  EXPECT_TRUE(heard_.empty());
  EXPECT_TRUE(ServiceBecomesEmpty());
}

TEST_F(WindowsCaptureMarks, StayWhereTheSystemHasNoWayOrRefuses) {
  const CapturedLog log(LogLevel::kError);
  options_.showsCursor = false;
  options_.showsBorder = false;
  const std::vector<std::string> refusals{
      "QuerySession2 0x80004002\nQuerySession3 0x80004002",
      "QuerySession2 0\nQuerySession3 0",
      "put_IsCursorCaptureEnabled 0x80070005\nput_IsBorderRequired 0x80070005",
      "put_IsCursorCaptureEnabled 0\nput_IsBorderRequired 0",
  };
  for (const std::string& refusal : refusals) {
    heard_.clear();
    EXPECT_EQ(Shown(refusal), std::pair(kCursorColour, kBorderColour)) << refusal;
    EXPECT_THAT(heard_, ::testing::ElementsAre(RecordingEvent::kCursorStays, RecordingEvent::kBorderStays))
        << refusal;
  }
  EXPECT_TRUE(log.lines().empty()) << log.text();
  EXPECT_TRUE(ServiceBecomesEmpty());
}

TEST_F(WindowsCaptureMarks, AreNotAskedAboutOtherwise) {
  EXPECT_EQ(Shown("QuerySession2 hang\nQuerySession3 hang"), std::pair(kCursorColour, kBorderColour));
  EXPECT_TRUE(heard_.empty());
}

class WindowsCaptureFaults : public WindowsCapture {};

TEST_F(WindowsCaptureFaults, OfAServiceThatDoesNotEndTheSessionEndTheCaptureAllTheSame) {
  const std::string left =
      "[ERROR] Capture service does not answer, left behind: GraphicsCaptureSession.Close";
  KeepingEncoder encoder(true);
  {
    auto capture = Running(encoder);
    encoder.WaitForFrame();
    const StandinFault fault("CloseSession hang times 1");
    const CapturedLog log;
    capture->Stop();
    EXPECT_TRUE(log.has(left));
    EXPECT_THAT(log.text(), HasSubstr("[INFO] Video Capture stopped,trigger count "));
    capture.reset();
    KeepingEncoder next(true);
    capture = Running(next);
    EXPECT_EQ(next.WaitForFrame().width, GetSystemMetrics(SM_CXSCREEN));
    capture->Stop();
    EXPECT_EQ(log.count(left), 1);
  }
  EXPECT_TRUE(ServiceBecomesEmpty()) << "when it answers after all";
}

TEST_F(WindowsCaptureFaults, OfAServiceThatDoesNotAnswerAreNamed) {
  {
    const StandinFault fault("CreateForMonitor hang");
    KeepingEncoder encoder(true);
    const CapturedLog log(LogLevel::kWarn);
    EXPECT_FALSE(CreateVideoCapture(settings_, encoder, *desktop_, clock_)->initialized());
    EXPECT_TRUE(log.has("[ERROR] Capture service does not answer, left behind: CreateForMonitor"));
    EXPECT_THAT(log.text(), HasSubstr("Failed to create monitor videoCapture item: HRESULT: 0x800705b4"));
  }
  {
    KeepingEncoder encoder(true);
    const auto capture = CreateVideoCapture(settings_, encoder, *desktop_, clock_);
    const StandinFault fault("StartCapture hang");
    const CapturedLog log(LogLevel::kWarn);
    EXPECT_THROW(capture->Start(), HResultError);
    EXPECT_TRUE(log.has("[ERROR] Capture service does not answer, left behind: StartCapture"));
  }
  {
    KeepingEncoder encoder(true);
    RecordingOptions options;
    options.showsCursor = false;
    const auto capture = CreateVideoCapture(settings_, encoder, *desktop_, clock_, options);
    const StandinFault fault("put_IsCursorCaptureEnabled hang");
    const CapturedLog log(LogLevel::kWarn);
    EXPECT_THROW(capture->Start(), HResultError);
    EXPECT_TRUE(log.has("[ERROR] Capture service does not answer, left behind: IsCursorCaptureEnabled"));
  }
  EXPECT_TRUE(ServiceBecomesEmpty()) << "when it answers after all";
}

TEST_F(WindowsCaptureFaults, OfConstructionAreNamed) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"D3D11CreateDevice", "Failed to create D3D11 device with driver type 1: HRESULT: 0x80004005"},
      {"D3D11CreateDevice", "VideoCapture: InitializeD3D11 failed"},
      {"QueryVideoDevice", "Failed to get video device: HRESULT: 0x80004005"},
      {"QueryVideoContext", "Failed to get video context: HRESULT: 0x80004005"},
      {"QueryDxgiDevice", "Failed to get DXGI device"},
      {"CreateDirect3D11DeviceFromDXGIDevice", "Failed to create WinRT Direct3D device"},
      {"GetItemInterop", "Failed to get GraphicsCaptureItemInterop interface"},
      {"CreateForMonitor", "Failed to create monitor videoCapture item: HRESULT: 0x80004005"},
      {"CreateFreeThreaded", "Failed to create frame pool object"},
      {"CreateCaptureSession", "Failed to create videoCapture from frame pool"},
      {"CreateVideoProcessorEnumerator", "Failed to create video processor enumerator: HRESULT: 0x80004005"},
      {"CreateVideoProcessor", "Failed to create video processor: HRESULT: 0x80004005"},
  };
  for (const auto& [call, text] : cases) {
    const StandinFault fault(call + " 0x80004005");
    KeepingEncoder encoder(true);
    const CapturedLog log(LogLevel::kWarn);
    EXPECT_FALSE(CreateVideoCapture(settings_, encoder, *desktop_, clock_)->initialized()) << call;
    EXPECT_THAT(log.text(), HasSubstr(text)) << call;
  }
}

TEST_F(WindowsCaptureFaults, OfConstructionWithoutATextAreRaised) {
  for (const char* call : {"get_Size", "GetFramePoolStatics", "add_FrameArrived"}) {
    const StandinFault fault(std::string(call) + " 0x80004005");
    KeepingEncoder encoder(true);
    EXPECT_THROW(CreateVideoCapture(settings_, encoder, *desktop_, clock_), HResultError) << call;
  }
}

TEST_F(WindowsCaptureFaults, OfTheStartAreRaised) {
  const StandinFault fault("StartCapture 0x80004005");
  KeepingEncoder encoder(true);
  const auto capture = CreateVideoCapture(settings_, encoder, *desktop_, clock_);
  EXPECT_THROW(capture->Start(), HResultError);
}

TEST_F(WindowsCaptureFaults, OfAFrameCostThatFrameOnly) {
  const std::string size =
      std::to_string(GetSystemMetrics(SM_CXSCREEN)) + "x" + std::to_string(GetSystemMetrics(SM_CYSCREEN));
  const std::vector<std::pair<std::string, std::string>> cases{
      {"TryGetNextFrame", "Exception in OnFrameArrived: HRESULT: 0x80004005"},
      {"get_SystemRelativeTime", "Exception in OnFrameArrived: HRESULT: 0x80004005"},
      {"CloseFrame", "Exception in OnFrameArrived: HRESULT: 0x80004005"},
      {"get_Surface", "WinRT error in SurfaceFromFrame: HRESULT: 0x80004005"},
      {"get_ContentSize", "WinRT error in SurfaceFromFrame: HRESULT: 0x80004005"},
      {"GetInterfaceAccess", "Failed to get IDirect3DDxgiInterfaceAccess interface"},
      {"GetInterface", "Failed to get DXGI surface: HRESULT: 0x80004005"},
      {"CreateTexture2D", "Failed to create shared texture: HRESULT: 0x80004005"},
      {"CreateTexture2D", "(dimensions: " + size + ")"},
      {"CreateInputView", "Exception in ProcessVideoFormat: HRESULT: 0x80004005"},
      {"CreateOutputView", "Exception in ProcessVideoFormat: HRESULT: 0x80004005"},
      {"VideoProcessorBlt", "Exception in ProcessVideoFormat: HRESULT: 0x80004005"},
      {"Map", "Failed to map staging texture: HRESULT: 0x80004005"},
  };
  for (const auto& [call, text] : cases) {
    PaintedWindow window({100, 80, 300, 200});
    KeepingEncoder encoder(true);
    const CapturedLog log(LogLevel::kWarn);
    auto capture = CreateVideoCapture(settings_, encoder, *desktop_, clock_);
    ASSERT_TRUE(capture->initialized()) << call;
    const StandinFault fault(call + " 0x80004005 times 1");
    capture->Start();
    std::atomic<bool> painting{true};
    const std::jthread painter([&] {
      for (BYTE i = 0; painting; ++i) {
        window.Paint(RGB(i, i, i));
      }
    });
    EXPECT_GT(encoder.WaitForFrame().width, 0) << call;
    painting = false;
    capture.reset();
    EXPECT_THAT(log.text(), HasSubstr(text)) << call;
  }
}

}  // namespace
}  // namespace brisolte::testing
