#pragma once

#include <map>
#include <mutex>
#include <vector>

#include "shared/com_object.h"

namespace brisolte::standins {

/// The handlers of a WinRT event. They are called without a lock, so that they may call back.
template <typename Handler>
class EventSource {
 public:
  HRESULT Add(Handler* handler, abi::EventRegistrationToken* token) {
    if (handler == nullptr || token == nullptr) {
      return E_POINTER;
    }
    ComPtr<IUnknown> agile;
    if (FAILED(handler->QueryInterface(abi::IAgileObject::kIid,
                                       reinterpret_cast<void**>(agile.GetAddressOf())))) {
      return kMustBeAgile;
    }
    const std::lock_guard lock(mutex_);
    token->value = ++lastToken_;
    handlers_.emplace(lastToken_, handler);
    return S_OK;
  }

  /// As the platform does, a token that is not known is no error.
  HRESULT Remove(abi::EventRegistrationToken token) {
    ComPtr<Handler> removed;
    const std::lock_guard lock(mutex_);
    if (const auto found = handlers_.find(token.value); found != handlers_.end()) {
      removed = std::move(found->second);
      handlers_.erase(found);
    }
    return S_OK;
  }

  void Clear() {
    std::map<INT64, ComPtr<Handler>> removed;
    const std::lock_guard lock(mutex_);
    removed.swap(handlers_);
  }

  template <typename Sender>
  void Raise(Sender* sender) {
    for (const auto& handler : Handlers()) {
      handler->Invoke(sender, nullptr);
    }
  }

 private:
  std::vector<ComPtr<Handler>> Handlers() {
    const std::lock_guard lock(mutex_);
    std::vector<ComPtr<Handler>> all;
    all.reserve(handlers_.size());
    for (const auto& [token, handler] : handlers_) {
      all.push_back(handler);
    }
    return all;
  }

  std::mutex mutex_;
  INT64 lastToken_ = 0;
  std::map<INT64, ComPtr<Handler>> handlers_;
};

}  // namespace brisolte::standins
