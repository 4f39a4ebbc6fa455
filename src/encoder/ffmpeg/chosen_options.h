#pragma once

#include <string>
#include <vector>

#include "capture/recording_options.h"
#include "encoder/ffmpeg/ffmpeg_types.h"

namespace brisolte {

/// The options that a caller may choose for a video encoder: its own, and some of FFmpeg's for all of them.
std::vector<std::string> ChoosableOptions(const AVCodec& codec);

/// Adds what a caller chose for the encoder to the options that it is opened with, in place of those of the
/// same names. False, with an ERROR line, when one cannot be chosen or FFmpeg refuses its value.
bool AddChosenOptions(const std::vector<EncoderOption>& chosen, const AVCodec& codec,
                      OptionDictionary& options);

}  // namespace brisolte
