#pragma once

#include <memory>

#include "capture/recording_parts.h"

namespace brisolte {

/// The encoders of a controller: an owning slot for each engine, and which of them is in use.
class EncoderSlots {
 public:
  /// Puts a new encoder of the engine that `settings` chooses into its slot and makes it the active one. The
  /// previous encoder, of either engine, is destroyed first: it may still hold the file that the new one is
  /// about to write. False, with an ERROR line, when there is no encoder; then, and when construction raises,
  /// slots and active encoder are empty.
  bool CreateEncoder(RecordingParts& parts, const CaptureSettings& settings, const RecordingOptions& options,
                     const RecordingParts::RecordingClock& clock);

  /// The encoder in use; null when there is none.
  Encoder* active() const { return active_; }

  /// Destroys the encoders of both engines.
  void Clear();

 private:
  std::unique_ptr<Encoder> ffmpeg_;
  std::unique_ptr<Encoder> mediaFoundation_;
  Encoder* active_ = nullptr;
};

}  // namespace brisolte
