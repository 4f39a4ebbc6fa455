#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "capture/capture_settings.h"
#include "capture/recording_options.h"
#include "encoder/capture_clock.h"
#include "encoder/encoder.h"
#include "encoder/ffmpeg/audio_stream.h"
#include "encoder/ffmpeg/output_file.h"
#include "encoder/ffmpeg/packet_writer.h"
#include "encoder/ffmpeg/video_stream.h"

namespace brisolte {

/// Writes a recording with the FFmpeg libraries: one file, in the container its extension names.
///
/// Any call may come in any order; beyond what `Encoder` asks for, each may also come from any thread.
class FFmpegEncoder final : public Encoder {
 public:
  /// Runs `Initialize` when the settings name a file. Raises what it raises. `now` may be a test's clock.
  explicit FFmpegEncoder(CaptureSettings settings, SteadyNow now = std::chrono::steady_clock::now,
                         RecordingOptions options = {});

  FFmpegEncoder(const FFmpegEncoder&) = delete;
  FFmpegEncoder& operator=(const FFmpegEncoder&) = delete;
  /// Stops first when running, so that the file is complete.
  ~FFmpegEncoder() override;

  /// Raises the file system's failure to make the directory or to remove an old file, see
  /// `PrepareOutputFile`. True without doing anything when the file is prepared already.
  bool Initialize() override;

  /// Writes the header and starts the writer thread. True also when the header failed (every packet then
  /// fails to be written) and when it runs already. Raises std::system_error when the system gives no thread.
  bool Start() override;

  /// Hands the last picture in once more, so that it is shown until now, takes what the encoders still hold
  /// and what is left of the sound, waits until everything is written and finalizes the file.
  bool Stop() override;

  /// True when at least one packet was queued; false also when the encoder keeps the frame for now.
  bool ProcessFrameAsync(const VideoFrame& frame) override;

  /// True when at least one chunk of 1024 samples was encoded; false also when there is no whole one yet.
  bool ProcessAudioFrame(const std::vector<std::uint8_t>& samples, const std::string& streamName) override;

  /// `device` is not used. Fails once `Start` was called. See `VideoStream::Initialize` for a second call.
  bool InitializeVideoEncoder(std::uint32_t width, std::uint32_t height, ID3D11Device* device) override;

  /// Fails once `Start` was called. See `AudioStream::Create` for a second call of one kind.
  bool CreateAudioStream(AudioStreamKind kind, const WaveFormat* format) override;
  bool GetPixelFormat() override;

  /// Called by `Stop`. Fails while running, without a header, and a second time.
  bool Finalize() override;

 private:
  void WriteHeader();
  /// On the writer thread, which ends with the process when an exception leaves it.
  int WritePacket(AVPacket& packet);
  void Flush();
  bool EnqueueVideoPacket(const AVPacket& packet);
  /// Shows the last picture until about now when it is the picture of a screen on which nothing moves. On the
  /// writer thread.
  void ShowStillPicture();
  void DrainStreams(CaptureClock::Moment stopped);

  bool AcceptsAudio() const { return writer_.running() && !stopping_; }
  AudioStream MakeAudioStream(const std::string& name, const std::string& title);
  AudioStream* FindAudioStream(AudioStreamKind kind);
  AudioStream* FindAudioStream(const std::string& name);

  const CaptureSettings settings_;
  const RecordingOptions options_;
  const SteadyNow now_;
  // Taken in this order.
  std::mutex lifecycleMutex_;  ///< guards `file_` but for the writer thread's writing
  std::mutex videoMutex_;      ///< guards `video_`, what it shares with `file_`, the two below it
  std::mutex audioMutex_;      ///< guards the audio streams, what they share with `file_`, `startTime_`
  OutputFile file_;
  VideoStream video_;
  CaptureClock captureClock_;
  CaptureClock::Moment lastArrival_;  ///< of a picture
  AudioStream microphone_;
  AudioStream speaker_;
  std::chrono::steady_clock::time_point startTime_;
  std::atomic<bool> stopping_ =
      false;  ///< so that nothing is delivered to what `Stop` drains, nor holds it up
  PacketWriter writer_;
};

}  // namespace brisolte
