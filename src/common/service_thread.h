#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace brisolte {

/// A thread for calls of a service that may not come back. It works off one call after the other while their
/// callers wait.
///
/// A call that takes longer than its caller's patience is left behind on its thread: the caller goes on, the
/// calls after it get a new thread, and the old one ends when the call comes back after all. Therefore a call
/// owns all that it uses and never refers to its caller's stack.
class ServiceThread {
 public:
  struct Surroundings {
    /// How long a call may take once it has begun.
    std::chrono::milliseconds patience{5000};
    /// Runs the work of a thread, on it: what must be there before its first call and until its last.
    std::function<void(const std::function<void()>& work)> around = [](const auto& work) { work(); };
    /// What waiting callers do now and then, on their threads.
    std::function<void()> meanwhile = [] {};
  };

  explicit ServiceThread(Surroundings surroundings);
  ServiceThread(const ServiceThread&) = delete;
  ServiceThread& operator=(const ServiceThread&) = delete;
  /// Waits for nothing: the thread ends by itself.
  ~ServiceThread();

  /// Makes the call and gives its result, or raises what it raises; empty when it was left behind. Raises
  /// std::system_error when no thread can be had. Any thread but this one.
  template <typename Call>
  auto Run(Call call) -> std::optional<decltype(call())> {
    const auto result = std::make_shared<std::optional<decltype(call())>>();
    const bool ended = Perform([result, call = std::move(call)]() mutable { result->emplace(call()); });
    // A call that was left behind may be writing its result right now.
    return ended ? std::move(*result) : std::nullopt;
  }

  /// The same for a call that gives nothing; false when it was left behind.
  bool Perform(std::function<void()> work);

 private:
  struct State;

  const std::shared_ptr<State> state_;
};

}  // namespace brisolte
