#pragma once

#include <mfidl.h>

#include <optional>

#include "sink_writer/mp4_file.h"

namespace brisolte::standins {

/// Whether a file can have a stream of this kind at all.
bool IsStreamType(IMFMediaType& output);

/// What becomes of input of the one type in a stream of the other. None when the real writer has no encoder
/// or no converter for that.
std::optional<VideoTrackType> VideoTypeOf(IMFMediaType& output, IMFMediaType& input);
std::optional<AudioTrackType> AudioTypeOf(IMFMediaType& output, IMFMediaType& input);

}  // namespace brisolte::standins
