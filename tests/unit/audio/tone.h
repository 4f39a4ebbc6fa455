#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "encoder/wave_format.h"

namespace brisolte::testing {

/// Plays a tone on a render endpoint while it lives.
class TonePlayer {
 public:
  TonePlayer(const std::string& deviceId, double frequency);
  TonePlayer(const TonePlayer&) = delete;
  TonePlayer& operator=(const TonePlayer&) = delete;
  ~TonePlayer();

 private:
  std::atomic<bool> playing_ = true;
  std::atomic<bool> started_ = false;
  std::jthread thread_;
};

/// How loud a frequency is in interleaved float samples: the amplitude of its tone in the first channel, over
/// the later half, in which everything has started.
double StrengthAt(double frequency, const std::vector<std::uint8_t>& samples, const WaveFormat& format);

}  // namespace brisolte::testing
