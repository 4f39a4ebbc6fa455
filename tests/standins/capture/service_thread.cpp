#include "capture/service_thread.h"

#include <mutex>
#include <system_error>
#include <thread>

namespace brisolte::standins {

bool StartServiceThread(std::function<void()> work) {
  // MinGW's threads library gives the record of a thread back twice when the thread ends while it is being
  // detached. The next two threads then share one, and wait for each other for ever.
  static std::mutex detaching;
  const std::lock_guard starting(detaching);
  try {
    std::thread([work = std::move(work)]() mutable {
      {
        const std::lock_guard isDetached(detaching);
      }
      work();
      work = nullptr;
    }).detach();
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

}  // namespace brisolte::standins
