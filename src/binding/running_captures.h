#pragma once

#include <set>

namespace brisolte {

class Capture;

/// The instances of an environment that record. On the environment's thread.
class RunningCaptures {
 public:
  void Add(Capture& capture) { captures_.insert(&capture); }
  void Remove(Capture& capture) { captures_.erase(&capture); }

  /// Ends their recordings, which completes the files. What goes wrong with one is logged and does not keep
  /// the others from it.
  void StopAll();

 private:
  std::set<Capture*> captures_;
};

}  // namespace brisolte
