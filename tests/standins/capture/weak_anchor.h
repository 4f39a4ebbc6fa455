#pragma once

#include <mutex>

#include "shared/com_object.h"

namespace brisolte::standins {

/// How a thread of the service reaches an object that its caller owns: a reference while it lives, none
/// afterwards.
template <typename Object>
class WeakAnchor {
 public:
  /// By the object, when it is made.
  void Set(Object* object) {
    const std::lock_guard lock(mutex_);
    object_ = object;
  }

  /// By the object's destructor.
  void Clear() { Set(nullptr); }

  ComPtr<Object> Lock() {
    const std::lock_guard lock(mutex_);
    ComPtr<Object> owned;
    if (object_ != nullptr && object_->TryAddRef()) {
      owned.Attach(object_);
    }
    return owned;
  }

 private:
  std::mutex mutex_;
  Object* object_ = nullptr;
};

}  // namespace brisolte::standins
