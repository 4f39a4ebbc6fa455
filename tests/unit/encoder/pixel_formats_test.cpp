#include "encoder/ffmpeg/pixel_formats.h"

#include <gmock/gmock.h>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

const AVCodec& Encoder(const char* name) {
  const AVCodec* const codec = avcodec_find_encoder_by_name(name);
  EXPECT_NE(codec, nullptr) << name;
  return *codec;
}

TEST(SelectPixelFormat, PrefersNv12AfterOtherFormats) {
  const CapturedLog log;
  const AVCodec& codec = Encoder("libx264");
  ASSERT_NE(ListedPixelFormats(codec).front(), AV_PIX_FMT_NV12);
  EXPECT_EQ(SelectPixelFormat(codec), AV_PIX_FMT_NV12);
  ASSERT_THAT(log.lines(), SizeIs(1));
  EXPECT_THAT(log.lines()[0], StartsWith("[INFO] Encoder libx264 supported pixel formats: yuv420p, "));
  EXPECT_THAT(log.lines()[0], HasSubstr("nv12"));
}

TEST(SelectPixelFormat, TakesTheFirstWithoutNv12) {
  const CapturedLog log;
  EXPECT_EQ(SelectPixelFormat(Encoder("prores_ks")), AV_PIX_FMT_YUV422P10);
  EXPECT_TRUE(log.has("[INFO] Using first pixel format: yuv422p10le for encoder: prores_ks"));
  EXPECT_EQ(SelectPixelFormat(Encoder("mpeg4")), AV_PIX_FMT_YUV420P);
  EXPECT_TRUE(log.has("[INFO] Encoder mpeg4 supported pixel formats: yuv420p"));
  EXPECT_TRUE(log.has("[INFO] Using first pixel format: yuv420p for encoder: mpeg4"));
}

TEST(SelectPixelFormat, FailsWhenNoneIsListed) {
  const CapturedLog log;
  const AVCodec& codec = Encoder("libmp3lame");
  EXPECT_THAT(ListedPixelFormats(codec), IsEmpty());
  EXPECT_EQ(SelectPixelFormat(codec), -1);
  EXPECT_THAT(log.lines(), Contains("[ERROR] No supported pixel formats found for encoder: libmp3lame"));
}

}  // namespace
}  // namespace brisolte
