#include "encoder/ffmpeg/packet_writer.h"

#include <string>
#include <utility>

#include "common/logger.h"

namespace brisolte {

void PacketWriter::Start(WritePacket write) {
  if (running_) {
    return;
  }
  write_ = std::move(write);
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
  {
    const std::scoped_lock lock(mutex_);
    // Once the writer has ended nobody would write the packet; it ends under this mutex and only when
    // stopped.
    if (!running_) {
      return false;
    }
    queue_.push_back({std::move(copy), streamIndex, isVideo});
  }
  changed_.notify_one();
  return true;
}

bool PacketWriter::TakeEntry(Entry& entry) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !queue_.empty() || !running_; });
  if (queue_.empty()) {
    return false;
  }
  entry = std::move(queue_.front());
  queue_.pop_front();
  return true;
}

void PacketWriter::Run() {
  for (Entry entry{}; TakeEntry(entry);) {
    if (!entry.packet) {
      Logger::Debug("FFmpegEncoder: No packet to write");
      continue;
    }
    if (write_(*entry.packet) < 0) {
      Logger::Info("FFmpegEncoder: write frame:  Stream: " + std::to_string(entry.streamIndex) +
                   ", Type: " + (entry.isVideo ? "Video" : "Audio"));
    }
  }
}

}  // namespace brisolte
