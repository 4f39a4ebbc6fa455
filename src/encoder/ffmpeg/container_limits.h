#pragma once

#include <string>

#include "encoder/ffmpeg/ffmpeg.h"

namespace brisolte {

/// Why the container cannot hold the streams of a file, and what to do about it, in a sentence for the user.
/// Empty when the streams themselves give no reason.
std::string WhyContainerRefuses(const AVFormatContext& format);

/// Whether the container is MP4 or MOV, which cannot be played without an index.
bool IsQuickTimeLike(const AVOutputFormat& container);

}  // namespace brisolte
