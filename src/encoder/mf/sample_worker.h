#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

#include "encoder/encoder.h"
#include "encoder/mf/queued_frame.h"
#include "encoder/mf/stream_positions.h"

namespace brisolte {

/// Where the worker writes to. Made, used and destroyed on the worker's thread. What cannot be written is
/// lost, and the recording goes on; an exception would end the worker.
class SampleSink {
 public:
  SampleSink() = default;
  SampleSink(const SampleSink&) = delete;
  SampleSink& operator=(const SampleSink&) = delete;
  virtual ~SampleSink() = default;

  /// False when the frame is lost.
  virtual bool WriteFrame(const QueuedFrame& frame) = 0;
  virtual void WriteAudio(AudioStreamKind kind, std::span<const std::uint8_t> chunk) = 0;

  /// The stream has nothing at this time, in units of 100 nanoseconds.
  virtual void SendTick(SinkStream stream, std::int64_t time) = 0;
};

/// Takes frames and sound from the threads that capture and writes them on one thread of its own, so that
/// nobody waits for the encoding. Sound goes out in chunks of one size for both streams; what does not fill
/// one stays behind. What is earliest goes first, and a stream that falls behind gets ticks.
///
/// `Start`, `Stop` and the destructor are called one at a time, everything else from any thread at any time.
class SampleWorker {
 public:
  /// As many frames wait at the most; more are refused.
  static constexpr std::size_t kMaxFrames = 100;

  using MakeSink = std::function<std::unique_ptr<SampleSink>()>;

  /// `patience` is how long `Stop` waits for a write before it asks for help.
  explicit SampleWorker(std::chrono::milliseconds patience = std::chrono::seconds(5)) : patience_(patience) {}
  SampleWorker(const SampleWorker&) = delete;
  SampleWorker& operator=(const SampleWorker&) = delete;
  ~SampleWorker() { End(); }

  /// Starts the thread, which makes its sink first. Raises std::system_error when the system gives none.
  void Start(MakeSink makeSink, const SinkLayout& layout = {});

  /// Ends the thread after the write that is under way, if any, and forgets what waits. When that write does
  /// not return, `endWrite` is called, once, to make it. On the worker's own thread it raises
  /// std::system_error.
  void Stop(const std::function<void()>& endWrite = {});

  /// Sets how many bytes of sound are written at once; with 0 none ever is.
  void SetChunkBytes(std::size_t bytes);

  /// Sets how many bytes of a source last a second, for the order in time; with 0 its sound goes first.
  void SetBytesPerSecond(AudioStreamKind kind, std::uint32_t bytes);

  /// Whether a frame would be taken now.
  bool AcceptsFrame() const;

  /// False when it is not taken: the queue is full or the worker does not run.
  bool PushFrame(QueuedFrame frame);

  /// Sets what is written last of all, when the thread is told to end; nothing is when the frame before was
  /// lost.
  void SetLastFrame(QueuedFrame frame);

  /// False when the worker does not run.
  bool PushAudio(AudioStreamKind kind, std::span<const std::uint8_t> bytes);

 private:
  using Lock = std::unique_lock<std::mutex>;

  /// The sound of one source that waits, and how much of it was written.
  struct Sound {
    std::deque<std::uint8_t> bytes;
    std::uint32_t bytesPerSecond = 0;
    std::int64_t written = 0;

    std::int64_t TimeAt(std::int64_t byte) const;
  };

  /// Tells the thread to end.
  void End();
  bool HasEndedInTime();
  void Run(const MakeSink& makeSink);
  void RunWith(SampleSink& sink);
  Sound& SoundOf(AudioStreamKind kind);
  bool HasChunk(const Sound& sound) const;
  bool HasNext(SinkStream stream) const;
  std::int64_t NextTime(SinkStream stream) const;
  std::optional<SinkStream> Earliest() const;
  void SendTicks(SampleSink& sink, SinkStream leader, std::int64_t time, Lock& lock);
  void WriteNext(SampleSink& sink, SinkStream stream, Lock& lock);
  void WriteAudio(SampleSink& sink, AudioStreamKind kind, Lock& lock);
  void WriteFrame(SampleSink& sink, Lock& lock);
  void WriteLastFrame(SampleSink& sink, Lock& lock);
  void Forget();

  const std::chrono::milliseconds patience_;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by `mutex_`.
  bool running_ = false;
  bool ended_ = true;
  std::size_t chunkBytes_ = 0;
  std::deque<QueuedFrame> frames_;
  std::optional<QueuedFrame> lastFrame_;
  bool frameLost_ = false;  ///< the frame that was to be written before
  Sound microphone_;
  Sound speaker_;
  StreamPositions positions_;

  std::jthread thread_;  ///< goes first, and waits for the thread
};

}  // namespace brisolte
