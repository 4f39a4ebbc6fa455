#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "encoder/encoder.h"

namespace brisolte::testing {

/// An encoder that keeps the sound it is given.
class RecordingEncoder : public Encoder {
 public:
  /// Whether an audio stream of this kind is accepted.
  std::map<AudioStreamKind, bool> acceptsStream{{AudioStreamKind::kMicrophone, true},
                                                {AudioStreamKind::kSpeaker, true}};
  /// What each delivery answers.
  std::function<bool(const std::string&)> answer = [](const std::string&) { return true; };

  bool Initialize() override { return true; }
  bool Start() override { return true; }
  bool Stop() override { return true; }
  bool ProcessFrameAsync(const VideoFrame& /*frame*/) override { return true; }
  bool InitializeVideoEncoder(std::uint32_t /*width*/, std::uint32_t /*height*/,
                              ID3D11Device* /*device*/) override {
    return true;
  }
  bool GetPixelFormat() override { return false; }
  bool Finalize() override { return true; }

  bool CreateAudioStream(AudioStreamKind kind, const WaveFormat* format) override {
    streams_.emplace_back(kind, format != nullptr ? std::optional(*format) : std::nullopt);
    return acceptsStream[kind];
  }

  bool ProcessAudioFrame(const std::vector<std::uint8_t>& samples, const std::string& streamName) override {
    {
      const std::scoped_lock lock(mutex_);
      auto& stream = delivered_[streamName];
      stream.insert(stream.end(), samples.begin(), samples.end());
      ++deliveries_[streamName];
    }
    changed_.notify_all();
    return answer(streamName);
  }

  /// The streams created, in order, with the formats they were given.
  const std::vector<std::pair<AudioStreamKind, std::optional<WaveFormat>>>& streams() const {
    return streams_;
  }

  std::vector<std::uint8_t> delivered(const std::string& streamName) {
    const std::scoped_lock lock(mutex_);
    return delivered_[streamName];
  }

  int deliveries(const std::string& streamName) {
    const std::scoped_lock lock(mutex_);
    return deliveries_[streamName];
  }

  /// Waits until so many bytes of a stream were delivered; false after half a minute.
  bool WaitForBytes(const std::string& streamName, std::size_t bytes) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(30),
                             [&] { return delivered_[streamName].size() >= bytes; });
  }

 private:
  std::vector<std::pair<AudioStreamKind, std::optional<WaveFormat>>> streams_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<std::string, std::vector<std::uint8_t>> delivered_;
  std::map<std::string, int> deliveries_;
};

}  // namespace brisolte::testing
