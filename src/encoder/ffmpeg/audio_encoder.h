#pragma once

#include <cstdint>
#include <functional>

#include "encoder/ffmpeg/audio_timestamps.h"
#include "encoder/ffmpeg/encoded_sound.h"
#include "encoder/ffmpeg/ffmpeg_types.h"

namespace brisolte {

/// An encoder of sound with the samples that wait for the next of its frames.
///
/// It keeps to the encoder's own frame size (of MP3 1152 or 576 samples), whatever sizes the samples come in:
/// given frames of another size, the encoder takes the first for the last one, or its packets' times run away
/// from those of the samples in them.
class AudioEncoder {
 public:
  /// Takes one encoded packet, in the encoder's time base. The packet is reused afterwards.
  using TakePacket = std::function<void(AVPacket&)>;

  /// Opens the encoder. False, with an ERROR line, when there is none for such sound.
  bool Open(const EncodedSound& sound);

  const AVCodecContext& context() const { return *context_; }

  /// Queues samples in the encoder's format, the first of them at `time` (in samples).
  bool Queue(const AVFrame& samples, std::int64_t time);

  /// Whether enough samples are queued for a frame.
  bool hasFrame() const { return av_audio_fifo_size(queue_.get()) >= frameSize_; }

  /// Encodes the next frame, shorter when no more samples are queued, which only the last one may be.
  bool EncodeFrame(const TakePacket& take);

  /// Encodes what is queued and hands out what the encoder still holds. It takes nothing afterwards.
  void Drain(const TakePacket& take);

 private:
  bool Allocate();
  bool ReceivePackets(const TakePacket& take);

  CodecContextPtr context_;
  PacketPtr packet_;
  FramePtr frame_;
  AudioFifoPtr queue_;
  AudioTimestamps timestamps_;
  int frameSize_ = 0;
};

}  // namespace brisolte
