#pragma once

namespace brisolte {

/// Something that feeds an `Encoder` from threads of its own while it runs: the video or the audio of a
/// recording. The encoder is borrowed. All operations are called on the controller's thread.
class CaptureSource {
 public:
  CaptureSource() = default;
  CaptureSource(const CaptureSource&) = delete;
  CaptureSource& operator=(const CaptureSource&) = delete;
  virtual ~CaptureSource() = default;

  /// Whether construction completed; an object that is not initialized is never started.
  virtual bool initialized() const = 0;

  /// Begins delivery. False, or an exception of the platform's failure, when it cannot.
  virtual bool Start() = 0;

  /// From when it returns nothing is delivered, until `Resume`. What feeds it stays open.
  virtual void Pause() = 0;
  /// Goes on delivering what is captured from now on, and what is shown by now.
  virtual void Resume() = 0;

  /// Ends delivery; when it returns, no call into the encoder is under way or will follow.
  virtual void Stop() = 0;

  /// Lets go of the encoder for good, also while running: when it returns, the encoder may be destroyed.
  virtual void DetachEncoder() = 0;
};

}  // namespace brisolte
