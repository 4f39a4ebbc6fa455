#pragma once

#include <memory>

#include "encoder/mf/mf_platform.h"
#include "mf/media_stage.h"

namespace brisolte::testing {

/// The system's Media Foundation with a sink writer that records; all calls go past `stage`, which outlives
/// everything made here.
std::unique_ptr<MFPlatform> MakeRecordingPlatform(MediaStage& stage);

}  // namespace brisolte::testing
