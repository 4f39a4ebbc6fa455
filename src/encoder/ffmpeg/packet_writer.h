#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "encoder/ffmpeg/ffmpeg_types.h"

namespace brisolte {

/// Takes encoded packets from the threads that encode and writes them, in the order they came, on one thread
/// of its own, so that no encoding thread waits for the disk. The queue has no limit.
///
/// `EnqueuePacket` and `running` may be called from any thread at any time; `Start`, `Stop` and the
/// destructor one at a time.
class PacketWriter {
 public:
  /// Writes one packet; negative: FFmpeg's error. Called on the writer thread only; must not throw.
  using WritePacket = std::function<int(AVPacket&)>;

  /// Makes what was written safe from the end of the process. Called on the writer thread only; must not
  /// throw.
  using Flush = std::function<void()>;

  PacketWriter() = default;
  PacketWriter(const PacketWriter&) = delete;
  PacketWriter& operator=(const PacketWriter&) = delete;
  ~PacketWriter() { Stop(); }

  /// Queues what is due although nobody queued it. Called on the writer thread only; must not throw.
  using Beat = std::function<void()>;

  /// Starts the thread; nothing happens when it runs already. About a second after packets were written they
  /// are flushed, whether or not others follow; with a `beat`, every second, after that was called and what
  /// it queued is written. Raises std::system_error when the system gives no thread.
  void Start(WritePacket write, Flush flush, Beat beat = {});

  /// Refuses further packets, writes those that are queued and ends the thread.
  void Stop();

  bool running() const { return running_; }

  /// Queues a new reference to the packet's data; the caller keeps its packet. False when it is not queued:
  /// stopped, no packet, or no memory (with an ERROR line).
  bool EnqueuePacket(const AVPacket* packet, int streamIndex, bool isVideo);

 private:
  struct Entry {
    PacketPtr packet;
    int streamIndex;
    bool isVideo;
  };

  void Run();
  void WriteAll(std::vector<Entry>& entries);
  void Write(const Entry& entry);
  void FlushWhenDue();
  void WriteBeat();
  /// Waits for entries and takes all that are queued in exchange for `entries`, which is empty; there are
  /// none when it is time to flush. False when stopped and nothing is left.
  bool TakeEntries(std::vector<Entry>& entries);

  WritePacket write_;
  Flush flush_;
  Beat beat_;  ///< empty when nothing is ever due
  /// The writer thread's own; set while something is written that was not flushed, and
  /// always with a beat.
  std::optional<std::chrono::steady_clock::time_point> flushDue_;
  std::atomic<bool> running_ = false;
  std::mutex mutex_;
  std::condition_variable changed_;
  /// Guarded by `mutex_`. It and the writer's own change places, so that once both have grown to what a
  /// recording needs, queuing allocates nothing.
  std::vector<Entry> queue_;
  std::jthread thread_;
};

}  // namespace brisolte
