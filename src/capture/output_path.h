#pragma once

#include <string>

#include "capture/capture_settings.h"

namespace brisolte {

/// The container that a video encoder's stream is recorded into, as a file extension without a dot: "mp4",
/// "webm", "mov" or "avi". Names are compared exactly; an unknown one gets "mp4" and a WARNING line.
std::string ContainerForEncoder(const std::string& encoderName);

/// The full path of a recording that starts now: the output directory as it stands, a backslash, and a name
/// from the local time. Empty, with an ERROR line, when no container is known. Two calls in one second give
/// the same path.
std::string MakeOutputFilePath(const CaptureSettings& settings);

}  // namespace brisolte
