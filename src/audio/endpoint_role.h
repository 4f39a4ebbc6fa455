#pragma once

#include <audioclient.h>

#include <string>

#include "encoder/encoder.h"

namespace brisolte {

/// What tells the two endpoints of a recording apart.
struct EndpointRole {
  AudioStreamKind kind;
  std::string name;   ///< also the stream's name at the encoder
  std::string title;  ///< the name at the beginning of a sentence
  DWORD streamFlags;
  /// A loopback delivers only while something is played, so something is.
  bool needsPlayback;
};

inline EndpointRole MicrophoneRole() {
  return {AudioStreamKind::kMicrophone, "microphone", "Microphone", 0, false};
}

inline EndpointRole SpeakerRole() {
  return {AudioStreamKind::kSpeaker, "speaker", "Speaker", AUDCLNT_STREAMFLAGS_LOOPBACK, true};
}

}  // namespace brisolte
