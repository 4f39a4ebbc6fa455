#pragma once

#include <combaseapi.h>

namespace brisolte {

/// Keeps the process's multithreaded apartment alive, to which threads that did not initialise COM then
/// belong. It decides nothing about the apartment of a thread, which is not ours to choose.
class MtaUsage {
 public:
  MtaUsage() = default;
  MtaUsage(const MtaUsage&) = delete;
  MtaUsage& operator=(const MtaUsage&) = delete;
  ~MtaUsage() {
    if (held()) {
      CoDecrementMTAUsage(cookie_);
    }
  }

  /// From now on, until this object goes.
  HRESULT Hold() { return held() ? S_OK : CoIncrementMTAUsage(&cookie_); }
  bool held() const { return cookie_ != nullptr; }

 private:
  CO_MTA_USAGE_COOKIE cookie_ = nullptr;
};

}  // namespace brisolte
