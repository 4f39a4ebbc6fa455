#include <objbase.h>

#include <thread>

#include "mf/mf_encoder_fixture.h"

namespace brisolte {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::kFailure;
using testing::kFailureText;
using testing::MakeCaptureDevice;
using ::testing::SizeIs;
using ::testing::StartsWith;

class MFEncoderSetupTest : public testing::MFEncoderTest {
 protected:
  std::vector<std::string> CallTexts() const { return stage_.calls(""); }
};

TEST_F(MFEncoderSetupTest, ConstructionMakesWriterDeviceAndManager) {
  MakeEncoder();
  EXPECT_THAT(
      CallTexts(),
      ElementsAre("MFStartup", "MFCreateAttributes for 1",
                  "SetGUID MF_TRANSCODE_CONTAINERTYPE = MFTranscodeContainerType_MPEG4",
                  "MFCreateSinkWriterFromURL C:\\folder\\file.mp4, "
                  "MF_TRANSCODE_CONTAINERTYPE = MFTranscodeContainerType_MPEG4",
                  "D3D11CreateDevice hardware, flags 0x820, feature levels 0xb100 0xb000 0xa100 0xa000",
                  "MFCreateDXGIDeviceManager", "ResetDevice its own device, multithread-protected"));
  const auto lines = log_.lines();
  ASSERT_EQ(lines.size(), 6U);
  EXPECT_EQ(lines[0], "[INFO] Initializing MFEncoder writer...");
  EXPECT_EQ(lines[1], "[INFO] MFEncoder writer initialized successfully");
  EXPECT_EQ(lines[2], "[INFO] Creating DXGI device manager...");
  EXPECT_THAT(lines[3], StartsWith("[INFO] DXGI device manager created with reset token: "));
  EXPECT_EQ(lines[4], "[INFO] Resetting device with token: " + lines[3].substr(lines[3].rfind(' ') + 1));
  EXPECT_EQ(lines[5], "[INFO] Device reset successful");
  EXPECT_TRUE(encoder_->GetPixelFormat());
}

TEST_F(MFEncoderSetupTest, InitializingAgainChangesNothing) {
  MakeEncoder();
  stage_.ForgetCalls();
  EXPECT_TRUE(encoder_->Initialize());
  EXPECT_THAT(CallTexts(), IsEmpty());
}

TEST_F(MFEncoderSetupTest, TheContainerIsMp4WhateverThePathEndsIn) {
  settings_.outputFilePath = "C:\\\xC3\xBC\xE6\xBC\xA2\\file.webm";
  MakeEncoder();
  EXPECT_THAT(stage_.calls("MFCreateSinkWriterFromURL"),
              ElementsAre("MFCreateSinkWriterFromURL " + settings_.outputFilePath +
                          ", MF_TRANSCODE_CONTAINERTYPE = MFTranscodeContainerType_MPEG4"));
}

struct SetupFailure {
  const char* call;
  std::vector<std::string> errors;
};

TEST_F(MFEncoderSetupTest, EachFailureHasItsTextsAndLeavesNothingBehind) {
  const std::string writer = "Failed to initialize writer";
  const std::string device = "Failed to initialize D3D11Device";
  const std::string all = "Failed to initialize Sink Writer";
  const std::vector<SetupFailure> failures{
      {"MFCreateAttributes", {"Failed to create attributes: " + kFailureText, writer, all}},
      {"SetGUID MF_TRANSCODE_CONTAINERTYPE", {"Failed to set container type: " + kFailureText, writer, all}},
      {"MFCreateSinkWriterFromURL", {"Failed to create sink writer: " + kFailureText, writer, all}},
      {"D3D11CreateDevice", {"Failed to create D3D11 device: " + kFailureText, device, all}},
      {"MFCreateDXGIDeviceManager", {"Failed to create DXGI device manager: " + kFailureText, device, all}},
      {"ResetDevice", {"Failed to reset device: " + kFailureText, device, all}},
  };
  for (const auto& [call, errors] : failures) {
    SCOPED_TRACE(call);
    stage_.ForgetCalls();
    stage_.Fail(call, kFailure);
    MakeEncoder();
    EXPECT_EQ(TakeErrors(), errors);
    EXPECT_EQ(stage_.calls("Release the sink writer").size(),
              stage_.calls("MFCreateDXGIDeviceManager").size() + (call == std::string("D3D11CreateDevice")));
    EXPECT_FALSE(encoder_->Start());
    EXPECT_FALSE(encoder_->InitializeVideoEncoder(2, 2, nullptr));
    EXPECT_FALSE(encoder_->CreateAudioStream(AudioStreamKind::kSpeaker, nullptr));
    EXPECT_THAT(TakeErrors(), ElementsAre("MFEncoder not initialized", "MFEncoder not initialized",
                                          "MFEncoder not initialized"));
    EXPECT_TRUE(encoder_->Stop());
    encoder_.reset();
    EXPECT_THAT(stage_.calls("MFStartup"), SizeIs(1));
    EXPECT_EQ(CallTexts().back(), "MFShutdown");
    EXPECT_THAT(stage_.calls("Finalize"), IsEmpty());
    stage_.FailNothing();
  }
}

TEST_F(MFEncoderSetupTest, ADriverWithoutVideoSupportGivesAPlainDevice) {
  stage_.Fail("D3D11CreateDevice hardware, flags 0x820", kFailure);
  MakeEncoder();
  EXPECT_TRUE(encoder_->initialized());
  EXPECT_THAT(
      stage_.calls("D3D11CreateDevice"),
      ElementsAre(StartsWith("D3D11CreateDevice hardware, flags 0x820"),
                  "D3D11CreateDevice hardware, flags 0x20, feature levels 0xb100 0xb000 0xa100 0xa000"));
  EXPECT_THAT(TakeErrors(), IsEmpty());
}

TEST_F(MFEncoderSetupTest, SoundAloneNeedsNoDevice) {
  settings_.mode = CaptureMode::kNone;
  stage_.Fail("D3D11CreateDevice", kFailure);
  MakeEncoder();
  const WaveFormat format = testing::FloatFormat();
  EXPECT_TRUE(encoder_->CreateAudioStream(AudioStreamKind::kSpeaker, &format));
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(stage_.calls("Finalize"), SizeIs(1));
}

TEST_F(MFEncoderSetupTest, AFailedInitializationCanBeTriedAgain) {
  stage_.Fail("D3D11CreateDevice", kFailure);
  MakeEncoder();
  EXPECT_FALSE(encoder_->Initialize());
  stage_.FailNothing();
  EXPECT_TRUE(encoder_->Initialize());
  EXPECT_TRUE(encoder_->Start());
  EXPECT_TRUE(encoder_->Stop());
  EXPECT_THAT(stage_.calls("Release the sink writer"), SizeIs(3));
}

TEST_F(MFEncoderSetupTest, MediaFoundationThatDoesNotStartIsNotShutDown) {
  stage_.Fail("MFStartup", kFailure);
  MakeEncoder();
  EXPECT_THAT(TakeErrors(), ElementsAre("Failed to initialize Media Foundation: " + kFailureText));
  EXPECT_FALSE(encoder_->Initialize());
  encoder_.reset();
  EXPECT_THAT(CallTexts(), ElementsAre("MFStartup"));
}

/// Which kind of apartment a thread without COM can still enter.
HRESULT EnterAndLeave(DWORD model) {
  const HRESULT result = CoInitializeEx(nullptr, model);
  if (SUCCEEDED(result)) {
    CoUninitialize();
  }
  return result;
}

TEST_F(MFEncoderSetupTest, ComIsStartedAndEndedInPairs) {
  for (const char* failing : {"nothing", "MFStartup", "MFCreateSinkWriterFromURL", "ResetDevice"}) {
    SCOPED_TRACE(failing);
    stage_.Fail(failing, kFailure);
    std::jthread([this] {
      MakeEncoder();
      EXPECT_EQ(EnterAndLeave(COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
      encoder_->Stop();
      encoder_.reset();
      EXPECT_EQ(EnterAndLeave(COINIT_MULTITHREADED), S_OK);
    }).join();
    stage_.FailNothing();
  }
}

TEST_F(MFEncoderSetupTest, AMultithreadedApartmentIsRefusedAndLeftAlone) {
  std::jthread([this] {
    const ComApartment apartment(COINIT_MULTITHREADED);
    MakeEncoder();
    const auto errors = TakeErrors();
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_THAT(errors[0], StartsWith("Failed to initialize COM: HRESULT: 0x80010106"));
    EXPECT_FALSE(encoder_->Initialize());
    EXPECT_FALSE(encoder_->Start());
    encoder_.reset();
    EXPECT_EQ(EnterAndLeave(COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
  }).join();
  EXPECT_THAT(CallTexts(), IsEmpty());
}

TEST_F(MFEncoderSetupTest, TheDeviceManagerIsGivenTheCapturesDevice) {
  MakeEncoder();
  stage_.ForgetCalls();
  const auto device = MakeCaptureDevice();
  EXPECT_TRUE(encoder_->InitializeVideoEncoder(kWidth, kHeight, device.Get()));
  EXPECT_EQ(CallTexts().front(), "ResetDevice the capture's device, multithread-protected");
}

TEST_F(MFEncoderSetupTest, ADeviceThatCannotBeGivenEndsTheStream) {
  MakeEncoder();
  stage_.ForgetCalls();
  stage_.Fail("ResetDevice", kFailure);
  const auto device = MakeCaptureDevice();
  EXPECT_FALSE(encoder_->InitializeVideoEncoder(kWidth, kHeight, device.Get()));
  EXPECT_THAT(TakeErrors(), ElementsAre("Failed to reset device: " + kFailureText));
  EXPECT_THAT(stage_.calls("AddStream"), IsEmpty());
  stage_.FailNothing();
  EXPECT_TRUE(encoder_->InitializeVideoEncoder(kWidth, kHeight, nullptr));
}

TEST(SystemMFPlatform, TakesTheSinkWriterOfTheSystem) {
  const testing::CapturedLog log(LogLevel::kError);
  const auto platform = SystemMFPlatform();
  const ComApartment apartment(COINIT_APARTMENTTHREADED);
  ASSERT_EQ(platform->Startup(), S_OK);
  {
    Microsoft::WRL::ComPtr<IMFSinkWriter> writer;
    EXPECT_LT(platform->CreateSinkWriterFromURL(L"", nullptr, writer.GetAddressOf()), 0);
    EXPECT_EQ(writer, nullptr);
  }
  EXPECT_EQ(platform->Shutdown(), S_OK);
}

}  // namespace
}  // namespace brisolte
