#pragma once

#include <span>
#include <string>

#include "encoder/ffmpeg/ffmpeg.h"

namespace brisolte {

/// The pixel formats that an encoder lists, in its order; empty when it lists none. FFmpeg's memory.
std::span<const AVPixelFormat> ListedPixelFormats(const AVCodec& codec);

/// FFmpeg's name of a format; empty for one it does not know.
std::string PixelFormatName(AVPixelFormat format);

/// The format frames are encoded in: NV12 wherever the encoder lists it, else the first one listed.
/// AV_PIX_FMT_NONE (-1), with an ERROR line, when it lists none.
AVPixelFormat SelectPixelFormat(const AVCodec& codec);

/// Whether a format is one of those whose name says that it uses the full range of values.
bool IsFullRangeFormat(AVPixelFormat format);

}  // namespace brisolte
