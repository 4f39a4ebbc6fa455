#pragma once

#include <wrl/client.h>

#include <string>

#include "encoder/mf/media_foundation.h"

namespace brisolte {

/// The sink writer for the MP4 file at `path` (UTF-8), whatever its name ends in. Null when a call fails,
/// with an ERROR line.
Microsoft::WRL::ComPtr<IMFSinkWriter> MakeSinkWriter(MediaFoundation& platform, const std::string& path);

/// Closes the file of a sink writer that was not finalized, as it is: letting go of the writer alone need not
/// end its media sink, which holds the file. Nobody writes any more.
void AbandonFile(IMFSinkWriter& writer);

}  // namespace brisolte
