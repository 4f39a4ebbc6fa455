#pragma once

#include <cstdint>
#include <deque>

namespace brisolte {

/// The times of samples that come in pieces of one size and leave in pieces of another. All times are in
/// units of one sample.
class AudioTimestamps {
 public:
  /// `leastStep` is from the time of what leaves to that of what leaves next.
  explicit AudioTimestamps(int leastStep = 1) : leastStep_(leastStep), last_(-leastStep) {}

  /// `samples` more have come in, the first of them at `time`.
  void Add(std::int64_t time, int samples);

  /// The oldest `samples` leave, no more than are there and at least one: the time of the first of them, or
  /// the least step after what was returned before when that is later.
  std::int64_t Take(int samples);

 private:
  struct Run {
    std::int64_t time;
    int samples;
  };

  std::deque<Run> runs_;
  int leastStep_;
  std::int64_t last_;
};

}  // namespace brisolte
