#include "capture/settings_lock.h"

#include <system_error>

namespace brisolte {

void SettingsLock::lock() {
  const std::thread::id self = std::this_thread::get_id();
  if (owner_.load(std::memory_order_relaxed) == self) {
    // The words are given, because each runtime has its own for this code.
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur),
                            "resource deadlock would occur");
  }
  mutex_.lock();
  owner_.store(self, std::memory_order_relaxed);
}

void SettingsLock::unlock() {
  owner_.store(std::thread::id(), std::memory_order_relaxed);
  mutex_.unlock();
}

}  // namespace brisolte
