#pragma once

#include <memory>

#include "audio/sound_control.h"
#include "capture/capture_settings.h"
#include "encoder/capture_source.h"
#include "encoder/encoder.h"

namespace brisolte {

/// Opens the endpoints that `settings` name, the microphone and the loopback of the speaker, and announces
/// each to `encoder` (borrowed). Initialized when at least one of them is open and the encoder took it;
/// failures are logged.
///
/// `controls` may be used meanwhile.
///
/// Initialises COM for the calling thread, which must not be in the multithreaded apartment, and must be
/// destroyed on the same thread. A capture that is destroyed while it runs is stopped first.
std::unique_ptr<CaptureSource> CreateAudioCapture(
    const CaptureSettings& settings, Encoder& encoder,
    std::shared_ptr<SoundControls> controls = std::make_shared<SoundControls>());

}  // namespace brisolte
