#include "encoder/ffmpeg/packet_writer.h"

#include <string>
#include <utility>

#include "common/logger.h"

namespace brisolte {
namespace {

// Less than a second by what the devices and encoders hold back, so that no more than that second is missing
// when the process ends at once.
constexpr std::chrono::milliseconds kFlushInterval{750};

std::chrono::steady_clock::time_point NextFlush() {
  return std::chrono::steady_clock::now() + kFlushInterval;
}

}  // namespace

void PacketWriter::Start(WritePacket write, Flush flush, Beat beat) {
  if (running_) {
    return;
  }
  write_ = std::move(write);
  flush_ = std::move(flush);
  beat_ = std::move(beat);
  flushDue_.reset();
  if (beat_) {
    flushDue_ = NextFlush();
  }
  running_ = true;
  try {
    thread_ = std::jthread([this] { Run(); });
  } catch (...) {
    running_ = false;
    throw;
  }
}

void PacketWriter::Stop() {
  running_ = false;
  // The writer looks at the flag and begins to wait under the mutex. Passing through it here keeps this
  // wake-up from falling between the two.
  {
    const std::scoped_lock lock(mutex_);
  }
  changed_.notify_all();
  if (thread_.joinable()) {
    thread_.join();
  }
}

bool PacketWriter::EnqueuePacket(const AVPacket* packet, int streamIndex, bool isVideo) {
  if (!running_ || packet == nullptr) {
    return false;
  }
  PacketPtr copy(av_packet_alloc());
  if (!copy || av_packet_ref(copy.get(), packet) < 0) {
    Logger::Error("FFmpegEncoder: Unable to allocate packet copy");
    return false;
  }
  bool wasEmpty = false;
  {
    const std::scoped_lock lock(mutex_);
    // Once the writer has ended nobody would write the packet; it ends under this mutex and only when
    // stopped.
    if (!running_) {
      return false;
    }
    wasEmpty = queue_.empty();
    queue_.push_back({std::move(copy), streamIndex, isVideo});
  }
  // Beside the time to flush the writer waits for nothing but an empty queue.
  if (wasEmpty) {
    changed_.notify_one();
  }
  return true;
}

bool PacketWriter::TakeEntries(std::vector<Entry>& entries) {
  std::unique_lock lock(mutex_);
  const auto ready = [this] { return !queue_.empty() || !running_; };
  if (flushDue_) {
    changed_.wait_until(lock, *flushDue_, ready);
  } else {
    changed_.wait(lock, ready);
  }
  entries.swap(queue_);
  return running_ || !entries.empty();
}

void PacketWriter::Run() {
  for (std::vector<Entry> entries; TakeEntries(entries); entries.clear()) {
    WriteAll(entries);
    if (!entries.empty() && !flushDue_) {
      flushDue_ = NextFlush();
    }
    FlushWhenDue();
  }
}

void PacketWriter::FlushWhenDue() {
  if (flushDue_ && std::chrono::steady_clock::now() >= *flushDue_) {
    flushDue_.reset();
    if (beat_) {
      WriteBeat();
      flushDue_ = NextFlush();
    }
    flush_();
  }
}

void PacketWriter::WriteBeat() {
  beat_();
  std::vector<Entry> entries;
  {
    const std::scoped_lock lock(mutex_);
    entries.swap(queue_);
  }
  WriteAll(entries);
}

void PacketWriter::WriteAll(std::vector<Entry>& entries) {
  for (Entry& entry : entries) {
    Write(entry);
    // A long queue gives its memory back while it is written.
    entry.packet.reset();
  }
}

void PacketWriter::Write(const Entry& entry) {
  if (!entry.packet) {
    Logger::Debug("FFmpegEncoder: No packet to write");
    return;
  }
  if (write_(*entry.packet) < 0) {
    Logger::Info("FFmpegEncoder: write frame:  Stream: " + std::to_string(entry.streamIndex) +
                 ", Type: " + (entry.isVideo ? "Video" : "Audio"));
  }
}

}  // namespace brisolte
