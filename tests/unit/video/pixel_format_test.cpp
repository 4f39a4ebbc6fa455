#include "video/pixel_format.h"

#include <gmock/gmock.h>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;

TEST(PixelFormat, FollowsTheEncodersWishAndSaysSo) {
  const CapturedLog log(LogLevel::kDebug);
  EXPECT_EQ(ConvertFFmpegPixelFormatToDXGI(1), DxgiFormat::kNv12);
  EXPECT_EQ(ConvertFFmpegPixelFormatToDXGI(4), DxgiFormat::kYuy2);
  EXPECT_EQ(ConvertFFmpegPixelFormatToDXGI(0), DxgiFormat::kB8G8R8A8Unorm);
  EXPECT_THAT(log.lines(), ElementsAre("[DEBUG] ConvertFFmpegPixelFormatToDXGI: DXGI_FORMAT_NV12",
                                       "[DEBUG] ConvertFFmpegPixelFormatToDXGI: DXGI_FORMAT_YUY2",
                                       "[DEBUG] ConvertFFmpegPixelFormatToDXGI: DXGI_FORMAT_B8G8R8A8_UNORM"));
}

TEST(PixelFormat, IsPackedForAnythingElse) {
  EXPECT_EQ(ConvertFFmpegPixelFormatToDXGI(-1), DxgiFormat::kB8G8R8A8Unorm);
  EXPECT_EQ(ConvertFFmpegPixelFormatToDXGI(2), DxgiFormat::kB8G8R8A8Unorm);
}

}  // namespace
}  // namespace brisolte
