#include <gmock/gmock.h>

#include <tuple>

#include "audio/wave_format_bytes.h"
#include "audio/wave_format_report.h"
#include "device_formats.h"

namespace brisolte {
namespace {

using ::testing::Combine;
using testing::ExtensibleFormat;
using testing::kFloatSubFormat;
using testing::kPcmSubFormat;
using ::testing::Optional;
using testing::PlainFormat;
using ::testing::TestWithParam;
using ::testing::Values;

TEST(ReadWaveFormat, KeepsEveryFieldOfThePlatformsDescription) {
  const auto format = ReadWaveFormat(ExtensibleFormat(kFloatSubFormat, 32, 2, 44'100));
  ASSERT_TRUE(format);
  EXPECT_EQ(format->formatTag, 0xFFFE);
  EXPECT_EQ(format->channels, 2);
  EXPECT_EQ(format->sampleRate, 44'100U);
  EXPECT_EQ(format->averageBytesPerSecond, 352'800U);
  EXPECT_EQ(format->blockAlign, 8);
  EXPECT_EQ(format->bitsPerSample, 32);
  EXPECT_EQ(format->extraSize, 22);
  EXPECT_TRUE(format->floatingPoint);
}

TEST(ReadWaveFormat, TakesAnExtensibleFormatOfAnotherSubFormatForInteger) {
  EXPECT_FALSE(ReadWaveFormat(ExtensibleFormat(kPcmSubFormat, 32, 2, 48'000))->floatingPoint);
}

TEST(ReadWaveFormat, DoesNotReadASubFormatThatTheDescriptionDoesNotHold) {
  auto bytes = ExtensibleFormat(kFloatSubFormat, 32, 2, 48'000);
  bytes[16] = 21;
  EXPECT_FALSE(ReadWaveFormat(bytes)->floatingPoint);

  auto cut = ExtensibleFormat(kFloatSubFormat, 32, 2, 48'000);
  cut.pop_back();
  EXPECT_FALSE(ReadWaveFormat(cut)->floatingPoint);
}

TEST(ReadWaveFormat, NeedsTheWholeBasicFormat) {
  auto bytes = PlainFormat(1, 16, 2, 48'000);
  EXPECT_TRUE(ReadWaveFormat(bytes));
  bytes.pop_back();
  EXPECT_FALSE(ReadWaveFormat(bytes));
  EXPECT_FALSE(ReadWaveFormat({}));
}

class DeviceFormats : public TestWithParam<std::tuple<std::uint16_t, std::uint32_t>> {
 protected:
  static void Expect(std::uint16_t bits, bool floatingPoint, SampleType type) {
    const auto [channels, rate] = GetParam();
    const auto plain = ReadWaveFormat(PlainFormat(floatingPoint ? 3 : 1, bits, channels, rate));
    const auto extensible = ReadWaveFormat(
        ExtensibleFormat(floatingPoint ? kFloatSubFormat : kPcmSubFormat, bits, channels, rate));
    for (const auto& format : {plain, extensible}) {
      ASSERT_TRUE(format);
      EXPECT_THAT(SampleTypeOf(*format), Optional(type));
      EXPECT_EQ(format->channels, channels);
      EXPECT_EQ(format->sampleRate, rate);
      EXPECT_EQ(format->blockAlign, bits / 8 * channels);
    }
  }
};

TEST_P(DeviceFormats, AreAllUnderstood) {
  Expect(8, false, SampleType::kUnsigned8);
  Expect(16, false, SampleType::kSigned16);
  Expect(24, false, SampleType::kSigned24Packed);
  Expect(32, false, SampleType::kSigned32);
  Expect(32, true, SampleType::kFloat32);
}

INSTANTIATE_TEST_SUITE_P(Layouts, DeviceFormats,
                         Combine(Values(std::uint16_t{1}, std::uint16_t{2}, std::uint16_t{6},
                                        std::uint16_t{8}),
                                 Values(8'000U, 44'100U, 192'000U)));

TEST(SampleTypeOf, KnowsNoOtherWidths) {
  EXPECT_FALSE(SampleTypeOf(*ReadWaveFormat(PlainFormat(3, 64, 2, 48'000))));
  EXPECT_FALSE(SampleTypeOf(*ReadWaveFormat(PlainFormat(1, 12, 2, 48'000))));
  EXPECT_FALSE(SampleTypeOf(WaveFormat{}));
}

TEST(WaveFormatReport, IsOneLineOfDecimalNumbers) {
  const auto format = ReadWaveFormat(ExtensibleFormat(kFloatSubFormat, 32, 2, 48'000));
  EXPECT_EQ(WaveFormatReport("Speaker", &*format),
            "Speaker audio format: Format Tag: 65534, Channels: 2, Sample Rate: 48000, Bits Per Sample: 32, "
            "Block Align: 8, Avg Bytes Per Sec: 384000, Extra Size: 22");
}

TEST(WaveFormatReport, SaysWhenThereIsNoFormat) {
  EXPECT_EQ(WaveFormatReport("Microphone", nullptr), "format is null");
}

}  // namespace
}  // namespace brisolte
