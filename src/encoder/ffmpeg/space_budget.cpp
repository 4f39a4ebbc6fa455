#include "encoder/ffmpeg/space_budget.h"

#include <algorithm>

namespace brisolte {
namespace {

// What one packet can take in an index. That of MP4 and MOV is the largest: the time to the next sample (8
// bytes) and to its showing (8), its size (4), its chunk's place (8) and length (12), and its number if it is
// a key frame (4).
constexpr std::uint64_t kIndexBytes = 44;
// What a container puts around a packet, at most.
constexpr std::uint64_t kFramingBytes = 24;
// The parts of an index that do not grow, for three streams.
constexpr std::uint64_t kDescriptionBytes = std::uint64_t{16} * 1024;
// Beside the index, for what others write between two looks: this share of the room that there was at first.
constexpr std::uint64_t kReserveShare = 16;
constexpr std::uint64_t kLargestReserve = std::uint64_t{16} * 1024 * 1024;

}  // namespace

void SpaceBudget::Look(std::optional<std::uint64_t> free) {
  if (free && reserve_ == 0) {
    reserve_ = std::min(*free / kReserveShare, kLargestReserve);
  }
  free_ = free;
  writtenSinceLook_ = 0;
}

std::uint64_t SpaceBudget::NeededForCompletion() const {
  return kDescriptionBytes + packets_ * kIndexBytes + reserve_;
}

bool SpaceBudget::Admit(std::uint64_t bytes) {
  if (exhausted_) {
    return false;
  }
  ++packets_;
  writtenSinceLook_ += bytes + kFramingBytes;
  exhausted_ = free_ && writtenSinceLook_ + NeededForCompletion() > *free_;
  return !exhausted_;
}

}  // namespace brisolte
