#pragma once

#include <vector>

#include "audio/audio_device_info.h"

namespace brisolte {

/// The active endpoints of one direction, in the platform's order: speakers or microphones. The default is
/// the console's speaker and the communications microphone.
///
/// Needs a thread that is not in the multithreaded apartment. Failures are logged; the list then lacks the
/// endpoints that failed, or is empty.
std::vector<AudioDeviceInfo> EnumerateAudioDevices(AudioDataFlow dataFlow);

}  // namespace brisolte
