#pragma once

#include <string>

#include "encoder/ffmpeg/ffmpeg_types.h"

namespace brisolte {

/// Lets FFmpeg write its own lines, to standard error, as far as the log level of the process wants them: at
/// level 5 none, at 4 errors, at 3 and 2 warnings too, at 1 and 0 all. Each line follows the level of its
/// moment. To be called before FFmpeg is used; any thread, any number of times.
void LetFFmpegFollowLogLevel();

/// Adds what an encoder that writes past FFmpeg is to be opened with, so that it follows the level of this
/// moment.
void AddLogOption(const std::string& encoderName, OptionDictionary& options);

}  // namespace brisolte
