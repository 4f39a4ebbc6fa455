#pragma once

#include <wrl/client.h>

#include <string>

#include "encoder/mf/media_foundation.h"

namespace brisolte {

/// The sink writer for the MP4 file at `path` (UTF-8), whatever its name ends in and however long it is. Null
/// when a call fails, with an ERROR line.
Microsoft::WRL::ComPtr<IMFSinkWriter> MakeSinkWriter(MediaFoundation& platform, const std::string& path);

/// What holds a sink writer's file. Null before writing has begun.
Microsoft::WRL::ComPtr<IMFMediaSink> MediaSinkOf(IMFSinkWriter& writer);

/// Closes a file that was not finalized, as it is: letting go of the sink writer alone need not end its media
/// sink. A write that is under way on another thread returns with a failure.
void CloseFile(IMFMediaSink& sink);

}  // namespace brisolte
