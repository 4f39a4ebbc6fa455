#include "audio/audio_devices.h"

#include <gmock/gmock.h>

#include <thread>

#include "fake_audio_service.h"
#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::FakeAudioService;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

// One that the system has no text for, so that its line is known byte for byte.
constexpr auto kFailure = static_cast<HRESULT>(0xA1234567);
const std::string kFailureText = "HRESULT: 0xa1234567 (HRESULT: 0xa1234567)";

class AudioDevices : public ::testing::Test {
 protected:
  AudioDevices() {
    service_.endpoints = {{.id = "first", .name = L"Headset \u00FC"}, {.id = "second", .name = L"Camera"}};
    service_.defaultId = "second";
  }

  static std::vector<std::string> Names(AudioDataFlow flow = AudioDataFlow::kCapture) {
    std::vector<std::string> names;
    for (const auto& device : EnumerateAudioDevices(flow)) {
      names.push_back(device.name);
    }
    return names;
  }

  FakeAudioService service_;
  CapturedLog log_{LogLevel::kInfo};
};

TEST_F(AudioDevices, AreListedInThePlatformsOrderWithTheirDefault) {
  const auto list = EnumerateAudioDevices(AudioDataFlow::kCapture);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].id, "first");
  EXPECT_EQ(list[0].name, "Headset \xC3\xBC");
  EXPECT_FALSE(list[0].isDefault);
  EXPECT_TRUE(list[0].isActive);
  EXPECT_EQ(list[0].dataFlow, AudioDataFlow::kCapture);
  EXPECT_EQ(list[1].id, "second");
  EXPECT_TRUE(list[1].isDefault);
  EXPECT_THAT(log_.lines(), ElementsAre("[INFO] Enumerated 2 microphone devices"));
}

TEST_F(AudioDevices, OfMicrophonesAreTheActiveOnesWithTheCommunicationsDefault) {
  EnumerateAudioDevices(AudioDataFlow::kCapture);
  EXPECT_THAT(service_.calls(), IsSupersetOf({"enumerator.EnumAudioEndpoints(1, 1)",
                                              "enumerator.GetDefaultAudioEndpoint(1, 2)"}));
}

TEST_F(AudioDevices, OfSpeakersAreTheActiveOnesWithTheConsolesDefault) {
  const auto list = EnumerateAudioDevices(AudioDataFlow::kRender);
  EXPECT_EQ(list.at(0).dataFlow, AudioDataFlow::kRender);
  EXPECT_THAT(service_.calls(), IsSupersetOf({"enumerator.EnumAudioEndpoints(0, 1)",
                                              "enumerator.GetDefaultAudioEndpoint(0, 0)"}));
  EXPECT_THAT(log_.lines(), ElementsAre("[INFO] Enumerated 2 speaker devices"));
}

TEST_F(AudioDevices, MayBeNone) {
  service_.endpoints.clear();
  service_.defaultId.clear();
  EXPECT_THAT(Names(), IsEmpty());
  EXPECT_THAT(log_.lines(), ElementsAre("[INFO] Enumerated 0 microphone devices"));
}

TEST_F(AudioDevices, WithoutADefaultHaveNone) {
  service_.defaultId.clear();
  for (const auto& device : EnumerateAudioDevices(AudioDataFlow::kCapture)) {
    EXPECT_FALSE(device.isDefault);
  }
  EXPECT_THAT(log_.lines(), ElementsAre("[INFO] Enumerated 2 microphone devices"));
}

TEST_F(AudioDevices, WithoutAReadableNameAreUnknown) {
  service_.endpoints[0].nameType = VT_EMPTY;
  service_.Fail("second.properties.GetValue", kFailure);
  EXPECT_THAT(Names(), ElementsAre("Unknown", "Unknown"));
  EXPECT_THAT(log_.lines(), ElementsAre("[INFO] Enumerated 2 microphone devices"));
}

TEST_F(AudioDevices, ThatCannotBeReachedAreSkipped) {
  service_.Fail("collection.Item(0)", kFailure);
  EXPECT_THAT(Names(), ElementsAre("Camera"));
  EXPECT_THAT(log_.lines(), ElementsAre("[ERROR] Failed to get device at index 0: " + kFailureText,
                                        "[INFO] Enumerated 1 microphone devices"));
}

TEST_F(AudioDevices, WithoutAnIdAreSkipped) {
  service_.Fail("first.GetId", kFailure);
  EXPECT_THAT(Names(), ElementsAre("Camera"));
  EXPECT_TRUE(log_.has("[ERROR] Failed to get device ID for device at index 0: " + kFailureText));
}

TEST_F(AudioDevices, WithoutPropertiesAreSkipped) {
  service_.Fail("second.OpenPropertyStore", kFailure);
  EXPECT_THAT(Names(), ElementsAre("Headset \xC3\xBC"));
  EXPECT_TRUE(log_.has("[WARNING] Failed to open property store for device at index 1: " + kFailureText));
}

TEST_F(AudioDevices, AreNoneWhenThePlatformDoesNotListThem) {
  for (const auto& [call, text] :
       {std::pair{"factory.CreateInstance", "Failed to create device enumerator for EnumerateAudioDevices: "},
        {"enumerator.EnumAudioEndpoints(1, 1)", "Failed to enumerate audio endpoints: "},
        {"collection.GetCount", "Failed to get device count: "}}) {
    const CapturedLog log;
    service_.Fail(call, kFailure);
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre("[ERROR] " + (text + kFailureText)));
    service_.Fail(call, S_OK);
  }
}

TEST_F(AudioDevices, FailWithTheSystemsTextWhereItHasOne) {
  service_.Fail("collection.GetCount", E_ACCESSDENIED);
  EXPECT_THAT(Names(), IsEmpty());
  EXPECT_THAT(log_.text(), ::testing::ContainsRegex("Failed to get device count: HRESULT: 0x80070005 - "));
  EXPECT_THAT(log_.text(), HasSubstr("\r\n (HRESULT: 0x80070005)\n"));
}

TEST(AudioDevicesThread, MustNotBeInTheMultithreadedApartment) {
  const CapturedLog log;
  std::jthread([] {
    const ComApartment com(COINIT_MULTITHREADED);
    EXPECT_THAT(EnumerateAudioDevices(AudioDataFlow::kRender), IsEmpty());
  }).join();
  EXPECT_THAT(log.text(), HasSubstr("[ERROR] COM library initialization failed for EnumerateAudioDevices: "
                                    "HRESULT: 0x80010106"));
  EXPECT_THAT(log.text(), HasSubstr(" (HRESULT: 0x80010106)\n"));
}

TEST(AudioDevicesThread, LeavesItAsItWas) {
  const CapturedLog log;
  std::jthread([] {
    EnumerateAudioDevices(AudioDataFlow::kRender);
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    EXPECT_EQ(CoGetApartmentType(&type, &qualifier), CO_E_NOTINITIALIZED);
  }).join();
}

}  // namespace
}  // namespace brisolte
