#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "encoder/video_frame.h"
#include "encoder/wave_format.h"

struct ID3D11Device;

namespace brisolte {

/// The source of an audio stream.
enum class AudioStreamKind : std::int32_t { kMicrophone = 1, kSpeaker = 2 };

/// Writes one recording: streams are created first, then `Start`, then frames and audio flow, then `Stop`.
///
/// Streams are created, and `Start`, `Stop` and the destructor called, on the controller's thread. Frames
/// come from one thread at a time, audio from another; both may run at once. Failures are logged where they
/// happen and reported as false.
class Encoder {
 public:
  Encoder() = default;
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;
  virtual ~Encoder() = default;

  /// Prepares the output file and its container.
  virtual bool Initialize() = 0;

  /// Starts the work in the background.
  virtual bool Start() = 0;

  /// Ends the work in the background and completes the file. False when nothing was running.
  virtual bool Stop() = 0;

  /// Takes one frame. The pixels are read before it returns; a texture is kept by a reference of the
  /// encoder's own.
  virtual bool ProcessFrameAsync(const VideoFrame& frame) = 0;

  /// Takes interleaved samples in the format given to `CreateAudioStream`. `streamName` is "microphone" or
  /// "speaker".
  virtual bool ProcessAudioFrame(const std::vector<std::uint8_t>& samples, const std::string& streamName) = 0;

  /// Creates the video stream for frames of `width` by `height` pixels, captured on `device` (borrowed, may
  /// be null).
  virtual bool InitializeVideoEncoder(std::uint32_t width, std::uint32_t height, ID3D11Device* device) = 0;

  /// Creates the audio stream of one source. `format` (borrowed for the call) may be null: the settings'
  /// sample rate and channels hold then.
  virtual bool CreateAudioStream(AudioStreamKind kind, const WaveFormat* format) = 0;

  /// Whether frames are wanted as NV12; otherwise they are wanted as packed BGRA.
  virtual bool GetPixelFormat() = 0;

  /// Writes what ends the file and closes it.
  virtual bool Finalize() = 0;
};

}  // namespace brisolte
