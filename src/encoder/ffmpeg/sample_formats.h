#pragma once

#include <span>
#include <string>

#include "encoder/ffmpeg/ffmpeg.h"

namespace brisolte {

/// The sample formats that an encoder lists, in its order; empty when it lists none. FFmpeg's memory.
std::span<const AVSampleFormat> ListedSampleFormats(const AVCodec& codec);

/// FFmpeg's name of a format; empty for one it does not know.
std::string SampleFormatName(AVSampleFormat format);

}  // namespace brisolte
