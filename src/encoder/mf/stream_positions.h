#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace brisolte {

/// The streams of a recording.
enum class SinkStream : std::uint8_t { kMicrophone, kSpeaker, kVideo };

inline constexpr std::array kSinkStreams{SinkStream::kMicrophone, SinkStream::kSpeaker, SinkStream::kVideo};

/// Which streams there are, and how far apart the ticks are that say of one that it has nothing: units of 100
/// nanoseconds, 0 for a stream that there is not.
struct SinkLayout {
  /// A sink writer wants to hear of silence at least once a second.
  static constexpr std::int64_t kAudioTick = 2'000'000;

  std::int64_t microphoneTick = 0;
  std::int64_t speakerTick = 0;
  std::int64_t videoTick = 0;  ///< of one frame
};

/// How far the streams have got. A sink writer holds back what runs ahead of a stream that has neither a
/// sample nor a tick. Times in units of 100 nanoseconds.
class StreamPositions {
 public:
  /// A stream that is no further behind than this may only be late: its samples shall not come before a tick.
  static constexpr std::int64_t kPatience = 5'000'000;

  explicit StreamPositions(const SinkLayout& layout = {})
      : streams_{{{layout.microphoneTick, 0}, {layout.speakerTick, 0}, {layout.videoTick, 0}}} {}

  /// A sample of the stream ends here.
  void Advance(SinkStream stream, std::int64_t until) {
    Stream& entry = At(stream);
    entry.until = until > entry.until ? until : entry.until;
  }

  /// A frame begins here, and lasts until the next one is due.
  void AdvanceFrame(std::int64_t time) { Advance(SinkStream::kVideo, time + At(SinkStream::kVideo).tick); }

  /// Whether the stream, which has nothing to write, needs a tick before another one gets to `time`.
  bool NeedsTick(SinkStream stream, std::int64_t time) const {
    const Stream& entry = At(stream);
    return entry.tick > 0 && entry.until + entry.tick + kPatience <= time;
  }

  /// The time of the stream's next tick, which is taken as sent.
  std::int64_t TakeTick(SinkStream stream) {
    Stream& entry = At(stream);
    const std::int64_t time = entry.until;
    entry.until += entry.tick;
    return time;
  }

 private:
  struct Stream {
    std::int64_t tick = 0;
    std::int64_t until = 0;
  };

  Stream& At(SinkStream stream) { return streams_[static_cast<std::size_t>(stream)]; }
  const Stream& At(SinkStream stream) const { return streams_[static_cast<std::size_t>(stream)]; }

  std::array<Stream, kSinkStreams.size()> streams_;
};

}  // namespace brisolte
