#include "encoder/ffmpeg/ffmpeg_log.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/log.h>
}

#include <string>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;

/// What FFmpeg writes of a line of each kind while the process has this level.
std::string Written(LogLevel level) {
  LetFFmpegFollowLogLevel();
  const CapturedLog log(level);
  ::testing::internal::CaptureStderr();
  av_log(nullptr, AV_LOG_ERROR, "error\n");
  av_log(nullptr, AV_LOG_WARNING, "warning\n");
  av_log(nullptr, AV_LOG_INFO, "information\n");
  av_log(nullptr, AV_LOG_TRACE, "trace\n");
  av_log(nullptr, AV_LOG_PANIC, "panic\n");
  return ::testing::internal::GetCapturedStderr();
}

TEST(FFmpegLog, FollowsTheLevelOfTheProcess) {
  EXPECT_EQ(Written(LogLevel::kFatal), "");
  EXPECT_EQ(Written(LogLevel::kError), "error\npanic\n");
  EXPECT_EQ(Written(LogLevel::kWarn), "error\nwarning\npanic\n");
  EXPECT_EQ(Written(LogLevel::kInfo), "error\nwarning\npanic\n");
  EXPECT_EQ(Written(LogLevel::kDebug), "error\nwarning\ninformation\ntrace\npanic\n");
  EXPECT_EQ(Written(LogLevel::kTrace), "error\nwarning\ninformation\ntrace\npanic\n");
}

}  // namespace
}  // namespace brisolte
