#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "encoder/encoder.h"

namespace brisolte {

/// The way of captured sound to the encoder, which one call closes for good. Any thread may use it.
class EncoderLink {
 public:
  explicit EncoderLink(Encoder& encoder) : encoder_(&encoder) {}

  /// Hands samples over; true when the encoder took them. False once detached.
  bool Deliver(const std::vector<std::uint8_t>& samples, const std::string& streamName) {
    const std::scoped_lock lock(mutex_);
    return encoder_ != nullptr && encoder_->ProcessAudioFrame(samples, streamName);
  }

  /// When it returns, no delivery is under way or will reach the encoder.
  void Detach() {
    const std::scoped_lock lock(mutex_);
    encoder_ = nullptr;
  }

 private:
  std::mutex mutex_;
  Encoder* encoder_;
};

}  // namespace brisolte
