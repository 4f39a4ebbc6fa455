#pragma once

#include <string>

#include "encoder/ffmpeg/ffmpeg.h"

namespace brisolte {

/// Why the container cannot hold the streams of a file, and what to do about it, in a sentence for the user.
/// Empty when the streams themselves give no reason.
std::string WhyContainerRefuses(const AVFormatContext& format);

}  // namespace brisolte
