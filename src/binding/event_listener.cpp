#include "binding/event_listener.h"

#include <mutex>

namespace brisolte {

/// Node.js deletes what is behind the handle when the environment ends, whoever still has it; the finalizer
/// tells that before.
struct EventListener::Channel {
  std::mutex mutex;
  Napi::ThreadSafeFunction function;
  bool open = true;
};

EventListener::EventListener(Napi::Env env, const Napi::Function& listener)
    : channel_(std::make_shared<Channel>()) {
  constexpr std::size_t kUnlimited = 0;
  constexpr std::size_t kThreads = 1;
  channel_->function = Napi::ThreadSafeFunction::New(env, listener, "recordingEvent", kUnlimited, kThreads,
                                                     [channel = channel_](Napi::Env /*env*/) {
                                                       const std::scoped_lock lock(channel->mutex);
                                                       channel->open = false;
                                                     });
  channel_->function.Unref(env);
}

EventListener::~EventListener() {
  const std::scoped_lock lock(channel_->mutex);
  if (channel_->open) {
    channel_->open = false;
    channel_->function.Release();
  }
}

void EventListener::Tell(const char* event) {
  const std::scoped_lock lock(channel_->mutex);
  if (channel_->open) {
    channel_->function.NonBlockingCall([event](Napi::Env env, const Napi::Function& listener) {
      // What the listener throws stays pending and becomes an uncaught exception. In a thread that is being
      // ended the calls fail without one, which Napi::Error would end the process for.
      napi_value name = nullptr;
      napi_value receiver = nullptr;
      if (napi_create_string_utf8(env, event, NAPI_AUTO_LENGTH, &name) == napi_ok &&
          napi_get_undefined(env, &receiver) == napi_ok) {
        napi_call_function(env, receiver, listener, 1, &name, nullptr);
      }
    });
  }
}

}  // namespace brisolte
