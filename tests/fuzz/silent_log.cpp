// Millions of inputs that are refused would each log why.

#include "common/logger.h"
#include "encoder/ffmpeg/ffmpeg.h"

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*words*/) {
  brisolte::Logger::SetLevel(brisolte::LogLevel::kFatal);
  av_log_set_level(AV_LOG_QUIET);
  return 0;
}
