#include "encoder/mf/sample_worker.h"

#include <system_error>
#include <utility>

#include "common/guarded.h"

namespace brisolte {

void SampleWorker::Start(MakeSink makeSink) {
  Stop();
  {
    const std::scoped_lock lock(mutex_);
    running_ = true;
    frameLost_ = false;
  }
  try {
    thread_ = std::jthread([this, make = std::move(makeSink)] { Run(make); });
  } catch (...) {
    Forget();
    throw;
  }
}

void SampleWorker::End() {
  {
    const std::scoped_lock lock(mutex_);
    running_ = false;
  }
  changed_.notify_all();
}

void SampleWorker::Stop() {
  End();
  if (thread_.get_id() == std::this_thread::get_id()) {
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
  }
  if (thread_.joinable()) {
    thread_.join();
  }
  Forget();
}

void SampleWorker::SetChunkBytes(std::size_t bytes) {
  {
    const std::scoped_lock lock(mutex_);
    chunkBytes_ = bytes;
  }
  changed_.notify_all();
}

bool SampleWorker::AcceptsFrame() const {
  const std::scoped_lock lock(mutex_);
  return running_ && frames_.size() < kMaxFrames;
}

bool SampleWorker::PushFrame(QueuedFrame frame) {
  {
    const std::scoped_lock lock(mutex_);
    if (!running_ || frames_.size() >= kMaxFrames) {
      return false;
    }
    frames_.push_back(std::move(frame));
  }
  changed_.notify_all();
  return true;
}

void SampleWorker::SetLastFrame(QueuedFrame frame) {
  const std::scoped_lock lock(mutex_);
  lastFrame_ = std::move(frame);
}

bool SampleWorker::PushAudio(AudioStreamKind kind, std::span<const std::uint8_t> bytes) {
  {
    const std::scoped_lock lock(mutex_);
    if (!running_) {
      return false;
    }
    Bytes& queue = kind == AudioStreamKind::kMicrophone ? microphone_ : speaker_;
    queue.insert(queue.end(), bytes.begin(), bytes.end());
  }
  changed_.notify_all();
  return true;
}

void SampleWorker::Run(const MakeSink& makeSink) {
  Guarded("", "in MFEncoder worker", [&] {
    const auto sink = makeSink();
    RunWith(*sink);
    return true;
  });
  // Whatever ended it, nothing gathers that nobody will write.
  Forget();
}

void SampleWorker::RunWith(SampleSink& sink) {
  Lock lock(mutex_);
  while (running_) {
    WriteAudio(sink, AudioStreamKind::kMicrophone, microphone_, lock);
    WriteAudio(sink, AudioStreamKind::kSpeaker, speaker_, lock);
    WriteFrames(sink, lock);
    changed_.wait(lock, [this] {
      return !running_ || !frames_.empty() || HasChunk(microphone_) || HasChunk(speaker_);
    });
  }
  WriteLastFrame(sink, lock);
}

bool SampleWorker::HasChunk(const Bytes& bytes) const {
  return chunkBytes_ > 0 && bytes.size() >= chunkBytes_;
}

void SampleWorker::WriteAudio(SampleSink& sink, AudioStreamKind kind, Bytes& bytes, Lock& lock) {
  while (running_ && HasChunk(bytes)) {
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(chunkBytes_);
    const std::vector<std::uint8_t> chunk(bytes.begin(), end);
    bytes.erase(bytes.begin(), end);
    lock.unlock();
    sink.WriteAudio(kind, chunk);
    lock.lock();
  }
}

void SampleWorker::WriteFrames(SampleSink& sink, Lock& lock) {
  // Only those that wait now: frames that come faster than they are written must not keep the sound waiting.
  for (std::size_t left = frames_.size(); running_ && left > 0; --left) {
    QueuedFrame frame = std::move(frames_.front());
    frames_.pop_front();
    lock.unlock();
    const bool written = sink.WriteFrame(frame);
    frame = {};  // Giving a texture back takes the pool's lock.
    lock.lock();
    frameLost_ = !written;
  }
}

void SampleWorker::WriteLastFrame(SampleSink& sink, Lock& lock) {
  if (!lastFrame_ || frameLost_) {
    return;
  }
  const QueuedFrame frame = std::move(*lastFrame_);
  lastFrame_.reset();
  lock.unlock();
  sink.WriteFrame(frame);
  lock.lock();
}

void SampleWorker::Forget() {
  std::deque<QueuedFrame> frames;
  std::optional<QueuedFrame> lastFrame;
  const std::scoped_lock lock(mutex_);
  running_ = false;
  frames.swap(frames_);
  lastFrame.swap(lastFrame_);
  microphone_.clear();
  speaker_.clear();
}

}  // namespace brisolte
