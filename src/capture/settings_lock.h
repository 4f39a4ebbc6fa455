#pragma once

#include <atomic>
#include <mutex>
#include <thread>

namespace brisolte {

/// A lock for `std::lock_guard` that is not recursive and says so: an owner that locks it again gets a
/// std::system_error "resource deadlock would occur". With std::mutex that is undefined and mostly hangs.
class SettingsLock {
 public:
  /// Waits for the lock. Raises the system error when the calling thread holds it already; it then still
  /// holds it once.
  void lock();

  /// Gives the lock back; called by its owner only.
  void unlock();

 private:
  std::mutex mutex_;
  std::atomic<std::thread::id> owner_;  ///< only its owner ever finds itself in it
};

}  // namespace brisolte
