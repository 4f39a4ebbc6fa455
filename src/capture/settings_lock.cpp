#include "capture/settings_lock.h"

#include <system_error>

namespace brisolte {
namespace {

/// Has the same words with every runtime. That of std::system_error has the runtime's own for the code.
class RelockError final : public std::system_error {
 public:
  RelockError() : std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur)) {}

  const char* what() const noexcept override { return "resource deadlock would occur"; }
};

}  // namespace

void SettingsLock::lock() {
  const std::thread::id self = std::this_thread::get_id();
  if (owner_.load(std::memory_order_relaxed) == self) {
    throw RelockError();
  }
  mutex_.lock();
  owner_.store(self, std::memory_order_relaxed);
}

void SettingsLock::unlock() {
  owner_.store(std::thread::id(), std::memory_order_relaxed);
  mutex_.unlock();
}

}  // namespace brisolte
