#pragma once

#include <objbase.h>

namespace brisolte {

/// COM initialised for the thread that makes it, until it is destroyed on that same thread. Each success of
/// the platform's call, also one that found the apartment already there, is balanced once.
class ComApartment {
 public:
  /// `model` is a COINIT value. On a thread that is in the other kind of apartment `result` is
  /// RPC_E_CHANGED_MODE, and nothing is disturbed.
  explicit ComApartment(DWORD model) : result_(CoInitializeEx(nullptr, model)) {}
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;
  ~ComApartment() {
    if (SUCCEEDED(result_)) {
      CoUninitialize();
    }
  }

  HRESULT result() const { return result_; }

 private:
  HRESULT result_;
};

}  // namespace brisolte
