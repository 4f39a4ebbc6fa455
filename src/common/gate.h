#pragma once

#include <mutex>
#include <type_traits>
#include <utility>

namespace brisolte {

/// The way to something borrowed, which one call closes for good. Calls pass one at a time. Any thread.
template <typename Target>
class Gate {
 public:
  explicit Gate(Target& target) : target_(&target) {}

  /// Gives what `call` makes of the target, or the empty value of its type once the gate is closed. Other
  /// calls, and `Close`, wait until it is through.
  template <typename Call>
  auto Through(Call&& call) {
    using Result = std::invoke_result_t<Call, Target&>;
    const std::scoped_lock lock(mutex_);
    return target_ == nullptr ? Result{} : Result(std::forward<Call>(call)(*target_));
  }

  /// When it returns, no call is inside or will come through.
  void Close() {
    const std::scoped_lock lock(mutex_);
    target_ = nullptr;
  }

 private:
  std::mutex mutex_;
  Target* target_;
};

}  // namespace brisolte
