#pragma once

#include <wrl/client.h>

#include <cstdint>
#include <optional>

#include "common/com_apartment.h"
#include "encoder/mf/mf_platform.h"
#include "encoder/mf/sample_worker.h"
#include "encoder/mf/sink_streams.h"

namespace brisolte {

/// Turns frames and sound into samples and hands them to the sink writer. The time of sound is what was
/// written of its stream before, from 0; that of a frame is the frame's.
class SampleWriter final : public SampleSink {
 public:
  /// Borrows `platform`. Keeps COM started for the worker's thread, on which it is made and destroyed.
  SampleWriter(MFPlatform& platform, Microsoft::WRL::ComPtr<IMFSinkWriter> writer,
               const SinkStreams& streams);

  bool WriteFrame(const QueuedFrame& frame) override;
  void WriteAudio(AudioStreamKind kind, std::span<const std::uint8_t> chunk) override;
  void SendTick(SinkStream stream, std::int64_t time) override;

 private:
  struct Sound {
    const char* name = "";
    std::optional<AudioSinkStream> stream;
    std::int64_t framesWritten = 0;
  };

  static constexpr int kMostFailures = 10;

  bool WriteVideoSample(const QueuedFrame& frame);
  bool WriteAudioSample(Sound& sound, std::span<const std::uint8_t> chunk);
  std::optional<DWORD> IndexOf(SinkStream stream) const;
  bool Count(bool written);
  bool HasFailed() const { return failures_ >= kMostFailures; }

  const ComApartment apartment_{COINIT_MULTITHREADED};
  MFPlatform& platform_;
  const Microsoft::WRL::ComPtr<IMFSinkWriter> writer_;
  const std::optional<VideoSinkStream> video_;
  Sound microphone_;
  Sound speaker_;
  int failures_ = 0;  ///< in a row
  bool ticksTaken_ = true;
};

}  // namespace brisolte
