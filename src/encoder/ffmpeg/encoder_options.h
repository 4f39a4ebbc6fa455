#pragma once

#include <string>

#include "encoder/ffmpeg/ffmpeg_types.h"

namespace brisolte {

/// Sets up a context that is not open yet for recording a screen with one encoder, as far as the encoder's
/// name decides: some fields of the context, and options for opening it. `frameRate` is in frames per second.
/// Options that an encoder does not know are ignored when it is opened.
void ApplyEncoderOptions(const std::string& encoderName, int frameRate, AVCodecContext& context,
                         OptionDictionary& options);

}  // namespace brisolte
