#pragma once

#include <memory>

#include "capture/recording_parts.h"

namespace brisolte {

/// The parts of a controller on Windows: Direct3D 11, FFmpeg and the capture service. Windows only.
std::unique_ptr<RecordingParts> CreateWindowsRecordingParts();

}  // namespace brisolte
