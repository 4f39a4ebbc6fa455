#pragma once

#include <napi.h>

#include <memory>

namespace brisolte {

/// Calls a function of the script, on the script's thread, for events that happen on others. It does not keep
/// the script's environment alive, and is silent once that has ended.
class EventListener {
 public:
  /// On the environment's thread. @throws Napi::Error
  EventListener(Napi::Env env, const Napi::Function& listener);
  EventListener(const EventListener&) = delete;
  EventListener& operator=(const EventListener&) = delete;
  ~EventListener();

  /// Lets the function be called with the event's name, which outlives the program. Any thread; never waits
  /// for the script.
  void Tell(const char* event);

 private:
  struct Channel;

  std::shared_ptr<Channel> channel_;
};

}  // namespace brisolte
