#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "capture/capture_settings.h"
#include "encoder/capture_clock.h"
#include "encoder/encoder.h"
#include "encoder/mf/frame_textures.h"
#include "encoder/mf/mf_platform.h"
#include "encoder/mf/sample_worker.h"
#include "encoder/mf/sink_streams.h"

namespace brisolte {

/// Writes a recording with Media Foundation's sink writer: an MP4 file with H.264 or HEVC, by the settings'
/// encoder name "mf_h264" or "mf_hevc", and AAC.
///
/// Frames and sound are only queued where they are handed over; a thread of the encoder's own writes them.
/// One object serves one recording: it cannot start again once stopped. `ProcessFrameAsync` and
/// `ProcessAudioFrame` may be called on any thread at any time, everything else on the thread that made it.
class MFEncoder final : public Encoder {
 public:
  /// Runs `Initialize` once COM and Media Foundation are started. `platform` and `now` may be a
  /// test's.
  explicit MFEncoder(CaptureSettings settings, std::unique_ptr<MFPlatform> platform = SystemMFPlatform(),
                     SteadyNow now = std::chrono::steady_clock::now);

  MFEncoder(const MFEncoder&) = delete;
  MFEncoder& operator=(const MFEncoder&) = delete;
  /// Stops first when running, so that the file is complete.
  ~MFEncoder() override;

  /// Makes the sink writer, a device and its manager. Holds nothing when it fails, and can be tried again.
  bool Initialize() override;

  /// Whether `Initialize` has succeeded.
  bool initialized() const { return initialized_; }

  /// Begins the file and starts the worker. Without any stream there is no file to begin.
  bool Start() override;

  /// Ends the worker with the last picture, so that it is shown until now, completes the file and lets go of
  /// everything. True, also when nothing was running. A sink writer that does not return from a write is shut
  /// down, which costs the file.
  bool Stop() override;

  /// Queues a copy of the frame's texture. False when the frame is dropped: 100 are waiting, or with an ERROR
  /// line.
  bool ProcessFrameAsync(const VideoFrame& frame) override;

  /// Queues the samples.
  bool ProcessAudioFrame(const std::vector<std::uint8_t>& samples, const std::string& streamName) override;

  /// `device` is the one that the frames' textures belong to; without one they belong to the encoder's own.
  bool InitializeVideoEncoder(std::uint32_t width, std::uint32_t height, ID3D11Device* device) override;

  /// Sound is written in pieces of 40 ms of the format that came last, also that of the other stream.
  bool CreateAudioStream(AudioStreamKind kind, const WaveFormat* format) override;

  /// Always true: Media Foundation's encoders want NV12.
  bool GetPixelFormat() override { return true; }

  /// Completes the file and lets go of everything; a running worker is ended first. Always true.
  bool Finalize() override;

 private:
  bool InitializeWriter();
  bool HasWriter() const;
  bool AddVideo(std::uint32_t width, std::uint32_t height, ID3D11Device* device);
  bool AddAudio(AudioStreamKind kind, const WaveFormat* format);
  void StartOver();
  bool QueueFrame(const VideoFrame& frame);
  /// The last picture, at the time from which it is shown for one frame until the end. None when it is shown
  /// until then anyway, and without any.
  std::optional<QueuedFrame> LastFrame(CaptureClock::Moment end);
  SinkLayout Layout() const;
  void EndWriting();
  void Release();

  const CaptureSettings settings_;
  const std::unique_ptr<MFPlatform> platform_;
  const SteadyNow now_;
  const MFSession session_;
  bool initialized_ = false;
  bool begun_ = false;  ///< the file has been begun and not been ended
  std::atomic<bool> capturing_ = false;
  Microsoft::WRL::ComPtr<IMFSinkWriter> writer_;
  Microsoft::WRL::ComPtr<IMFMediaSink> sink_;  ///< of the writer, once the file has been begun
  DeviceManager devices_;
  SinkStreams streams_;
  std::mutex copierMutex_;
  // Guarded by `copierMutex_`.
  std::optional<FrameCopier> copier_;
  CaptureClock captureClock_;
  QueuedFrame lastFrame_;  ///< the one that was taken last; without a texture there was none
  SampleWorker worker_;
};

}  // namespace brisolte
