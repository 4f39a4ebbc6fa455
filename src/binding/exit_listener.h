#pragma once

#include <napi.h>

#include <functional>

namespace brisolte {

/// The one listener of an environment to the event 'exit', with which a process or a worker thread announces
/// its end. It comes in time: on the main thread nothing else of a module is called when a program ends by
/// `process.exit` or by an exception that nobody catches.
class ExitListener {
 public:
  /// `onExit` is called at each such event. @throws Napi::Error
  ExitListener(Napi::Env env, std::function<void()> onExit);

  /// Lets it listen unless it does already; a program may have removed all listeners. It comes before the
  /// others, because one that throws or calls `process.exit` keeps those after it from being called. Does
  /// nothing in a program that has no such event. @throws ScriptFailure
  void Listen();

 private:
  bool ListensTo(const Napi::Object& process) const;

  Napi::FunctionReference listener_;
};

}  // namespace brisolte
