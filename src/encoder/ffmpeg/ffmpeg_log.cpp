#include "encoder/ffmpeg/ffmpeg_log.h"

extern "C" {
#include <libavutil/log.h>
}

#include <cstdarg>

#include "common/logger.h"

namespace brisolte {
namespace {

struct ForeignLevels {
  int ffmpeg;
  const char* x265;
};

ForeignLevels WantedLevels() {
  switch (Logger::Level()) {
    case LogLevel::kTrace:
    case LogLevel::kDebug:
      return {AV_LOG_TRACE, "log-level=full"};
    case LogLevel::kInfo:
    case LogLevel::kWarn:
      return {AV_LOG_WARNING, "log-level=warning"};
    case LogLevel::kError:
      return {AV_LOG_ERROR, "log-level=error"};
    case LogLevel::kFatal:
      break;
  }
  return {AV_LOG_QUIET, "log-level=none"};
}

void WriteIfWanted(void* speaker, int level, const char* format, std::va_list arguments) {
  // Above its eight bits a level may carry the line's colour.
  constexpr int kLevelMask = 0xFF;
  if ((level < 0 ? level : level & kLevelMask) <= WantedLevels().ffmpeg) {
    av_log_default_callback(speaker, level, format, arguments);
  }
}

}  // namespace

void LetFFmpegFollowLogLevel() {
  static const bool follows = [] {
    // The library's own limit would come on top of ours.
    av_log_set_level(AV_LOG_TRACE);
    av_log_set_callback(WriteIfWanted);
    return true;
  }();
  static_cast<void>(follows);
}

void AddLogOption(const std::string& encoderName, OptionDictionary& options) {
  if (encoderName == "libx265") {
    options.Set("x265-params", WantedLevels().x265);
  }
}

}  // namespace brisolte
