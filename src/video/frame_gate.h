#pragma once

#include <mutex>
#include <utility>

namespace brisolte {

/// Lets the capture service's calls through to one owner, one at a time, until it is closed.
///
/// The service may still call while or after the owner is destroyed. So the gate is shared by the owner and
/// the handler given to the service, and the owner closes it before it goes.
template <typename Owner>
class FrameGate {
 public:
  explicit FrameGate(Owner& owner) : owner_(&owner) {}

  /// Calls `pass(owner)` unless the gate is closed. Other passes, and `Close`, wait until it is through.
  template <typename Pass>
  void Through(Pass&& pass) {
    const std::lock_guard lock(mutex_);
    if (owner_ != nullptr) {
      std::forward<Pass>(pass)(*owner_);
    }
  }

  void Close() {
    const std::lock_guard lock(mutex_);
    owner_ = nullptr;
  }

 private:
  std::mutex mutex_;
  Owner* owner_;
};

}  // namespace brisolte
