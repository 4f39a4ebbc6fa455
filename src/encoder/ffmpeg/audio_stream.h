#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "capture/capture_settings.h"
#include "capture/recording_options.h"
#include "encoder/ffmpeg/audio_encoder.h"
#include "encoder/ffmpeg/audio_resampler.h"
#include "encoder/ffmpeg/output_file.h"
#include "encoder/ffmpeg/pending_samples.h"
#include "encoder/wave_format.h"

namespace brisolte {

/// The sound of one source in one recording: its encoder, its stream in the output file, and the samples on
/// their way. Not synchronised: one thread at a time.
class AudioStream {
 public:
  /// What a stream needs of the recording it is part of.
  struct Recording {
    std::function<bool()> running;                 ///< false as soon as the recording is being stopped
    std::function<std::int64_t()> elapsed;         ///< milliseconds since its start, never falling
    std::function<bool(const AVPacket&)> enqueue;  ///< takes one packet, stamped for the file
  };

  /// `name` is what the source is called when samples are handed over, and in the log; `title` what players
  /// call its stream.
  AudioStream(std::string name, std::string title, Recording recording);

  /// Sets the stream up for samples in `format`; without one, in the settings' rate and channels. A later
  /// call replaces the encoder of an earlier one and keeps its stream. A call that fails changes nothing:
  /// what the encoder cannot take is left out of the file.
  bool Create(OutputFile& file, const WaveFormat* format, const CaptureSettings& settings,
              const SoundOptions& options = {});

  /// Encodes what has gathered with `bytes`, in whole chunks; the rest waits for more. True when at least one
  /// chunk was taken without an error.
  bool Process(std::span<const std::uint8_t> bytes);

  /// Ends the encoding: hands over everything that was delivered, also what is less than a chunk. The encoder
  /// takes nothing afterwards.
  void Drain();

  /// Frees everything but the stream, which is the file's.
  void Release() { source_.reset(); }

  const std::string& name() const { return name_; }

 private:
  struct Source {
    AudioResampler resampler;
    AudioEncoder encoder;
    PendingSamples pending;
    std::int64_t lastDelivery = 0;  ///< milliseconds since the recording's start
    bool drained = false;
  };

  bool AddStream(OutputFile& file, const AudioEncoder& encoder);
  bool EncodeChunk(Source& source, std::int64_t milliseconds);
  static bool QueueAt(Source& source, const AVFrame* samples, std::int64_t milliseconds);
  bool EncodeAudioFrame(Source& source);
  void EnqueuePacket(const Source& source, AVPacket& packet);

  const std::string name_;
  const std::string title_;
  const Recording recording_;
  AVStream* stream_ = nullptr;  ///< the file's; kept when the encoder is replaced
  std::optional<Source> source_;
  std::int64_t lastPacketTime_ = AV_NOPTS_VALUE;  ///< in the stream's time base
};

}  // namespace brisolte
