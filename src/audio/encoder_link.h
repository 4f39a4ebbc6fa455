#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "common/gate.h"
#include "encoder/encoder.h"

namespace brisolte {

/// The way of captured sound to the encoder, which one call closes for good. Any thread may use it.
class EncoderLink {
 public:
  explicit EncoderLink(Encoder& encoder) : gate_(encoder) {}

  /// Hands samples over; true when the encoder took them, or when it is paused and they are let go. False
  /// once detached.
  bool Deliver(const std::vector<std::uint8_t>& samples, const std::string& streamName) {
    return paused_ ||
           gate_.Through([&](Encoder& encoder) { return encoder.ProcessAudioFrame(samples, streamName); });
  }

  void Pause() { paused_ = true; }
  void Resume() { paused_ = false; }
  bool paused() const { return paused_; }

  /// When it returns, no delivery is under way or will reach the encoder.
  void Detach() { gate_.Close(); }

 private:
  std::atomic<bool> paused_ = false;
  Gate<Encoder> gate_;
};

}  // namespace brisolte
