#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>

namespace brisolte::standins {

/// One method of Wine's objects that is replaced: the slot in their table of methods, which all of one kind
/// share.
template <typename Method>
class Slot {
 public:
  /// Replaces the method for the object's kind, once. `index` counts from 0 over the whole table.
  void Replace(void* object, std::size_t index, Method replacement) {
    Method* slot = *static_cast<Method**>(object) + index;
    if (*slot == replacement) {
      return;
    }
    original_ = *slot;
    DWORD protection = 0;
    auto* const place = static_cast<void*>(slot);
    if (VirtualProtect(place, sizeof(*slot), PAGE_READWRITE, &protection) != FALSE) {
      *slot = replacement;
      VirtualProtect(place, sizeof(*slot), protection, &protection);
    }
  }

  /// What Wine's method would have done.
  Method original() const { return original_; }

 private:
  std::atomic<Method> original_{nullptr};
};

}  // namespace brisolte::standins
