#pragma once

#include <objbase.h>
#include <windows.h>

namespace brisolte::standins {

/// The COM apartment of a thread. Every single-threaded one is its own; threads of the multithreaded one are
/// in it together, also those that never asked for it.
class Apartment {
 public:
  /// Of the calling thread.
  Apartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    if (FAILED(CoGetApartmentType(&type, &qualifier))) {
      kind_ = Kind::kNone;
    } else if (type == APTTYPE_STA || type == APTTYPE_MAINSTA) {
      kind_ = Kind::kSingle;
      thread_ = GetCurrentThreadId();
    }
  }

  bool exists() const { return kind_ != Kind::kNone; }

  friend bool operator==(const Apartment&, const Apartment&) = default;

 private:
  enum class Kind : char { kNone, kSingle, kMulti };

  Kind kind_ = Kind::kMulti;
  DWORD thread_ = 0;
};

/// The apartment that an object was made in, which alone may call it: behind the service's objects stand
/// proxies to another process, and a proxy belongs to the apartment that it came to.
class HomeApartment {
 public:
  /// The answer to a call that comes from elsewhere; S_OK at home.
  HRESULT Admit() const { return Apartment() == home_ ? S_OK : RPC_E_WRONG_THREAD; }

 private:
  const Apartment home_;
};

}  // namespace brisolte::standins
