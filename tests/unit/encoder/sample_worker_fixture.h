#pragma once

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <numeric>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "encoder/mf/sample_worker.h"

namespace brisolte {

inline constexpr auto kLimit = std::chrono::seconds(60);
inline constexpr auto kMicrophone = AudioStreamKind::kMicrophone;
inline constexpr auto kSpeaker = AudioStreamKind::kSpeaker;

/// What the sinks of a test wrote, and a gate that holds them up.
class Writes {
 public:
  void Add(const std::string& write) {
    std::unique_lock lock(mutex_);
    all_.push_back(write);
    changed_.notify_all();
    changed_.wait(lock, [this] { return open_; });
  }

  void Open(bool open) {
    const std::scoped_lock lock(mutex_);
    open_ = open;
    changed_.notify_all();
  }

  /// Waits for as many writes and gives all there are.
  std::vector<std::string> Await(std::size_t count) {
    std::unique_lock lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, kLimit, [&] { return all_.size() >= count; }));
    return all_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> all_;
  bool open_ = true;
};

/// The time of a frame that cannot be written.
inline constexpr std::int64_t kLostFrame = 666;

/// Writes down "m" or "s" with the first byte of a chunk and its size, or "v" with a frame's time.
class WritingSink : public SampleSink {
 public:
  explicit WritingSink(Writes& writes) : writes_(writes) {}

  bool WriteFrame(const QueuedFrame& frame) override {
    writes_.Add("v" + std::to_string(frame.timestamp));
    return frame.timestamp != kLostFrame;
  }

  void WriteAudio(AudioStreamKind kind, std::span<const std::uint8_t> chunk) override {
    writes_.Add((kind == kMicrophone ? "m" : "s") + std::to_string(chunk.front()) + "+" +
                std::to_string(chunk.size()));
  }

  void SendTick(SinkStream stream, std::int64_t time) override {
    constexpr std::array kNames{"M", "S", "V"};
    writes_.Add(kNames.at(static_cast<std::size_t>(stream)) + std::to_string(time / 10'000));
  }

 private:
  Writes& writes_;
};

class SampleWorkerTest : public ::testing::Test {
 protected:
  void Start() {
    worker_.SetChunkBytes(4);
    worker_.Start([this] { return std::make_unique<WritingSink>(writes_); });
  }

  /// A worker that is busy with the frame of time -1.
  void StartBusy() {
    writes_.Open(false);
    Start();
    EXPECT_TRUE(worker_.PushFrame({nullptr, -1, 0}));
    writes_.Await(1);
  }

  /// Waits until the worker takes nothing more.
  void AwaitStopped() {
    const auto limit = std::chrono::steady_clock::now() + kLimit;
    while (worker_.AcceptsFrame() && std::chrono::steady_clock::now() < limit) {
      std::this_thread::yield();
    }
    EXPECT_FALSE(worker_.AcceptsFrame());
  }

  bool PushFrame(std::int64_t time) { return worker_.PushFrame({nullptr, time, 0}); }

  /// Bytes that count up from `first`.
  bool PushAudio(AudioStreamKind kind, std::uint8_t first, std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), first);
    return worker_.PushAudio(kind, bytes);
  }

  /// A worker with sounds of 100 bytes a second, so that a chunk has 40 ms, and 10 frames a second.
  void StartInTime() {
    for (const auto kind : {kMicrophone, kSpeaker}) {
      worker_.SetBytesPerSecond(kind, 100);
    }
    worker_.SetChunkBytes(4);
    constexpr std::int64_t kFrame = 1'000'000;
    worker_.Start([this] { return std::make_unique<WritingSink>(writes_); },
                  {SinkLayout::kAudioTick, SinkLayout::kAudioTick, kFrame});
  }

  Writes writes_;
  SampleWorker worker_{std::chrono::milliseconds(20)};
};

}  // namespace brisolte
