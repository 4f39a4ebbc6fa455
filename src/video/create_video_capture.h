#pragma once

#include <memory>

#include "capture/capture_settings.h"
#include "capture/recording_options.h"
#include "common/pausable_clock.h"
#include "desktop/desktop.h"
#include "encoder/capture_source.h"
#include "encoder/encoder.h"

namespace brisolte {

/// Prepares to record the screen, window or region of `settings` into `encoder`, whose video stream it
/// creates. The encoder is borrowed until the result is destroyed or `DetachEncoder` is called, the desktop
/// until it is destroyed. `clock` is the recording's. A step that fails is logged and leaves the result not
/// initialized; platform failures without an answer of their own raise HResultError. Windows only.
std::unique_ptr<CaptureSource> CreateVideoCapture(const CaptureSettings& settings, Encoder& encoder,
                                                  Desktop& desktop,
                                                  std::shared_ptr<const PausableClock> clock,
                                                  const RecordingOptions& options = {});

}  // namespace brisolte
