#include "encoder/mf/sample_worker.h"

#include <system_error>
#include <utility>

#include "common/guarded.h"
#include "encoder/mf/sample_times.h"

namespace brisolte {

void SampleWorker::Start(MakeSink makeSink, const SinkLayout& layout) {
  Stop();
  {
    const std::scoped_lock lock(mutex_);
    running_ = true;
    frameLost_ = false;
    ended_ = false;
    positions_ = StreamPositions(layout);
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

void SampleWorker::Stop(const std::function<void()>& endWrite) {
  End();
  if (thread_.get_id() == std::this_thread::get_id()) {
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
  }
  if (thread_.joinable()) {
    if (endWrite && !HasEndedInTime()) {
      endWrite();
    }
    thread_.join();
  }
  Forget();
}

bool SampleWorker::HasEndedInTime() {
  Lock lock(mutex_);
  return changed_.wait_for(lock, patience_, [this] { return ended_; });
}

void SampleWorker::SetBytesPerSecond(AudioStreamKind kind, std::uint32_t bytes) {
  const std::scoped_lock lock(mutex_);
  SoundOf(kind).bytesPerSecond = bytes;
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
    Sound& sound = SoundOf(kind);
    sound.bytes.insert(sound.bytes.end(), bytes.begin(), bytes.end());
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
  {
    const std::scoped_lock lock(mutex_);
    ended_ = true;
  }
  changed_.notify_all();
}

void SampleWorker::RunWith(SampleSink& sink) {
  Lock lock(mutex_);
  while (running_) {
    if (const auto stream = Earliest()) {
      SendTicks(sink, *stream, NextTime(*stream), lock);
      WriteNext(sink, *stream, lock);
    } else {
      changed_.wait(lock);
    }
  }
  WriteLastFrame(sink, lock);
}

SampleWorker::Sound& SampleWorker::SoundOf(AudioStreamKind kind) {
  return kind == AudioStreamKind::kMicrophone ? microphone_ : speaker_;
}

std::int64_t SampleWorker::Sound::TimeAt(std::int64_t byte) const {
  return bytesPerSecond > 0 ? AudioSampleTime(byte, bytesPerSecond) : 0;
}

bool SampleWorker::HasChunk(const Sound& sound) const {
  return chunkBytes_ > 0 && sound.bytes.size() >= chunkBytes_;
}

bool SampleWorker::HasNext(SinkStream stream) const {
  switch (stream) {
    case SinkStream::kMicrophone:
      return HasChunk(microphone_);
    case SinkStream::kSpeaker:
      return HasChunk(speaker_);
    case SinkStream::kVideo:
      return !frames_.empty();
  }
  return false;
}

std::int64_t SampleWorker::NextTime(SinkStream stream) const {
  switch (stream) {
    case SinkStream::kMicrophone:
      return microphone_.TimeAt(microphone_.written);
    case SinkStream::kSpeaker:
      return speaker_.TimeAt(speaker_.written);
    case SinkStream::kVideo:
      return SampleTime(frames_.front().timestamp);
  }
  return 0;
}

/// The stream whose next sample comes before those of the others.
std::optional<SinkStream> SampleWorker::Earliest() const {
  std::optional<SinkStream> earliest;
  for (const SinkStream stream : kSinkStreams) {
    if (HasNext(stream) && (!earliest || NextTime(stream) < NextTime(*earliest))) {
      earliest = stream;
    }
  }
  return earliest;
}

/// Tells the sink of the streams that have nothing while `leader` gets to `time`.
void SampleWorker::SendTicks(SampleSink& sink, SinkStream leader, std::int64_t time, Lock& lock) {
  for (const SinkStream stream : kSinkStreams) {
    while (stream != leader && !HasNext(stream) && positions_.NeedsTick(stream, time)) {
      const std::int64_t tick = positions_.TakeTick(stream);
      lock.unlock();
      sink.SendTick(stream, tick);
      lock.lock();
    }
  }
}

void SampleWorker::WriteNext(SampleSink& sink, SinkStream stream, Lock& lock) {
  if (!running_) {
    return;
  }
  if (stream == SinkStream::kVideo) {
    WriteFrame(sink, lock);
  } else {
    WriteAudio(sink,
               stream == SinkStream::kMicrophone ? AudioStreamKind::kMicrophone : AudioStreamKind::kSpeaker,
               lock);
  }
}

void SampleWorker::WriteAudio(SampleSink& sink, AudioStreamKind kind, Lock& lock) {
  Sound& sound = SoundOf(kind);
  const auto end = sound.bytes.begin() + static_cast<std::ptrdiff_t>(chunkBytes_);
  const std::vector<std::uint8_t> chunk(sound.bytes.begin(), end);
  sound.bytes.erase(sound.bytes.begin(), end);
  sound.written += static_cast<std::int64_t>(chunk.size());
  positions_.Advance(kind == AudioStreamKind::kMicrophone ? SinkStream::kMicrophone : SinkStream::kSpeaker,
                     sound.TimeAt(sound.written));
  lock.unlock();
  sink.WriteAudio(kind, chunk);
  lock.lock();
}

void SampleWorker::WriteFrame(SampleSink& sink, Lock& lock) {
  QueuedFrame frame = std::move(frames_.front());
  frames_.pop_front();
  positions_.AdvanceFrame(SampleTime(frame.timestamp));
  lock.unlock();
  const bool written = sink.WriteFrame(frame);
  frame = {};  // Giving a texture back takes the pool's lock.
  lock.lock();
  frameLost_ = !written;
}

void SampleWorker::WriteLastFrame(SampleSink& sink, Lock& lock) {
  if (!lastFrame_ || frameLost_) {
    return;
  }
  const QueuedFrame frame = std::move(*lastFrame_);
  lastFrame_.reset();
  // It goes far ahead of sound that waits and is not written any more.
  for (Sound* const sound : {&microphone_, &speaker_}) {
    sound->bytes.clear();
  }
  SendTicks(sink, SinkStream::kVideo, SampleTime(frame.timestamp), lock);
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
  for (Sound* const sound : {&microphone_, &speaker_}) {
    sound->bytes.clear();
    sound->written = 0;
  }
}

}  // namespace brisolte
