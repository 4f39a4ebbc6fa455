#include "capture/screenshot.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <future>
#include <string>
#include <vector>

#include "common/com_apartment.h"
#include "common/hresult_error.h"
#include "support/apartment_state.h"
#include "support/capture_standin.h"
#include "support/captured_log.h"
#include "support/decoded_png.h"
#include "support/painted_window.h"
#include "support/standin_fault.h"
#include "support/temporary_directory.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using testing::DecodedPng;
using testing::DecodePng;
using testing::PaintedWindow;
using testing::ServiceBecomesEmpty;
using testing::StandinFault;
using testing::TemporaryDirectory;

/// Screenshots of a real window through the capture service.
class Screenshot : public ::testing::Test {
 protected:
  Screenshot() {
    settings_.mode = CaptureMode::kWindow;
    settings_.windowHandle = window_.number();
    D3D_FEATURE_LEVEL level{};
    EXPECT_EQ(CreateGraphicsDevice(DriverType::kHardware, direct3d_, level), S_OK);
  }
  void TearDown() override { EXPECT_EQ(testing::ComLetGoCount(), 0); }

  bool TakeOnce() const { return TakeScreenshot(settings_, *desktop_, direct3d_, path_); }

  /// Takes one that shows something: a busy machine may not have a frame within the service's time.
  bool Take() {
    for (int i = 0; i < 100; ++i) {
      const CapturedLog log;
      const bool taken = TakeOnce();
      said_ = log.text();
      if (taken || !log.has("[ERROR] Failed to get frame")) {
        return taken;
      }
    }
    return false;
  }

  const PaintedWindow window_{{100, 80, 301, 203}};
  std::string said_;  // by the log of the last screenshot
  Direct3D direct3d_;
  const std::unique_ptr<Desktop> desktop_ = CreateWindowsDesktop();
  const TemporaryDirectory directory_;
  const std::string path_ = directory_ / "picture.png";
  CaptureSettings settings_;
};

void ExpectQuarters(const DecodedPng& png) {
  ASSERT_EQ(png.width, 201U);
  ASSERT_EQ(png.height, 123U);
  EXPECT_EQ(png.At(0, 0), 0xFFFF0000);
  EXPECT_EQ(png.At(99, 60), 0xFFFF0000);
  EXPECT_EQ(png.At(100, 60), 0xFF00FF00);
  EXPECT_EQ(png.At(99, 61), 0xFF0000FF);
  EXPECT_EQ(png.At(200, 122), 0xFFFFFFFF);
}

TEST_F(Screenshot, ShowsTheWindowAndLeavesNothingBehind) {
  ASSERT_TRUE(Take());
  ExpectQuarters(DecodePng(path_));
  EXPECT_TRUE(ServiceBecomesEmpty());
}

TEST_F(Screenshot, IsTakenInEveryKindOfApartmentAndChangesNone) {
  const auto takeIn = [this](DWORD model) {
    const ComApartment com(model);
    return SUCCEEDED(com.result()) && Take();
  };
  EXPECT_TRUE(std::async(std::launch::async, takeIn, COINIT_APARTMENTTHREADED).get());
  EXPECT_TRUE(std::async(std::launch::async, takeIn, COINIT_MULTITHREADED).get());
  const auto takeWithout = [this] {
    const testing::ApartmentState before;
    return Take() && testing::ApartmentState() == before;
  };
  EXPECT_TRUE(std::async(std::launch::async, takeWithout).get());
}

TEST_F(Screenshot, LeavesNothingBehindWhateverFails) {
  const std::vector<std::string> calls = {"GetItemInterop",
                                          "CreateForWindow",
                                          "get_Size",
                                          "QueryDxgiDevice",
                                          "CreateFreeThreaded",
                                          "CreateCaptureSession",
                                          "StartCapture",
                                          "TryGetNextFrame",
                                          "get_Surface",
                                          "GetInterfaceAccess",
                                          "GetTexture2D",
                                          "CreateStagingTexture",
                                          "Map",
                                          "CloseFrame",
                                          "CloseSession",
                                          "ClosePool",
                                          "Close"};
  for (const std::string& call : calls) {
    {
      const StandinFault fault(call + " 0x80004005");
      const CapturedLog log;
      try {
        TakeOnce();
      } catch (const HResultError& error) {
        EXPECT_EQ(error.hresult(), E_FAIL) << call;
      }
    }
    EXPECT_TRUE(ServiceBecomesEmpty()) << call;
  }
  ASSERT_TRUE(Take());
  ExpectQuarters(DecodePng(path_));
}

TEST_F(Screenshot, IsThereThoughTheServiceDoesNotEndItsCapture) {
  {
    const StandinFault fault("CloseSession hang");
    EXPECT_TRUE(Take());
    EXPECT_THAT(said_, ::testing::HasSubstr("[ERROR] Capture service does not answer, left behind: Close"));
    ExpectQuarters(DecodePng(path_));
  }
  EXPECT_TRUE(ServiceBecomesEmpty()) << "when it answers after all";
}

TEST_F(Screenshot, FailsWithATextWhenTheServiceDoesNotAnswer) {
  {
    const StandinFault fault("CreateForWindow hang");
    const CapturedLog log;
    EXPECT_FALSE(TakeOnce());
    EXPECT_TRUE(log.has("[ERROR] Capture service does not answer, left behind: CreateForWindow"));
    EXPECT_THAT(log.text(),
                ::testing::HasSubstr("[ERROR] Failed to create capture item: HRESULT: 0x800705b4"));
  }
  EXPECT_TRUE(ServiceBecomesEmpty()) << "when it answers after all";
  EXPECT_TRUE(Take());
}

}  // namespace
}  // namespace brisolte
