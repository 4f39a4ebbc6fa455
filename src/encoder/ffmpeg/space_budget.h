#pragma once

#include <cstdint>
#include <optional>

namespace brisolte {

/// Tells how far a file may grow on a volume that fills up, so that there is still room to complete it: some
/// containers cannot be played without the index that is written last.
///
/// Between two looks at the volume it counts itself, however fast the file grows.
class SpaceBudget {
 public:
  /// The volume has `free` bytes left, with all that was admitted so far written. Nothing is refused while
  /// that is not known.
  void Look(std::optional<std::uint64_t> free);

  /// Whether a packet of so many bytes may be written. Once one was refused all are: a file that lacks a part
  /// in the middle is worse than one that ends.
  bool Admit(std::uint64_t bytes);

 private:
  std::uint64_t NeededForCompletion() const;

  std::optional<std::uint64_t> free_;
  std::uint64_t reserve_ = 0;
  std::uint64_t packets_ = 0;
  std::uint64_t writtenSinceLook_ = 0;
  bool exhausted_ = false;
};

}  // namespace brisolte
