#pragma once

#include <unknwn.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "com_faults/hook_object.h"
#include "com_faults/owners.h"
#include "shared/faults.h"
#include "shared/vtable.h"

namespace brisolte::standins {

/// A call's name as a template argument.
template <std::size_t kSize>
struct CallName {
  // NOLINTNEXTLINE(google-explicit-constructor,modernize-avoid-c-arrays): a literal is to become one.
  consteval CallName(const char (&literal)[kSize]) { std::copy_n(literal, kSize, text.begin()); }
  std::string_view view() const { return {text.data(), kSize - 1}; }

  std::array<char, kSize> text{};
};

/// Result pointers become null; everything else that is passed stays as it is.
template <typename Argument>
void ClearResult(Argument& argument) {
  if constexpr (std::is_pointer_v<Argument> && std::is_pointer_v<std::remove_pointer_t<Argument>>) {
    if (argument != nullptr) {
      *argument = nullptr;
    }
  }
}

/// Hooks the objects that a call has given.
class ResultHooks {
 public:
  /// `giver` is the object that was called.
  explicit ResultHooks(const void* giver) : giver_(giver) {}

  template <typename... Arguments>
  void HookAll(const Arguments&... arguments) {
    (Hook(arguments), ...);
  }

 private:
  // Stands before the pointer to what is asked for.
  void Hook(const IID& iid) { asked_ = iid; }

  void Hook(void** object) {
    if (object != nullptr) {
      HookObject(asked_, *object, giver_);
    }
  }

  template <std::derived_from<IUnknown> Object>
  void Hook(Object** object) {
    if (object != nullptr) {
      HookObject(__uuidof(Object), *object, giver_);
    }
  }

  template <typename Argument>
  void Hook(const Argument& /*noObject*/) {}

  const void* giver_;
  IID asked_{};
};

/// A method of an interface, at its place in the table of methods, that asks for a fault of this name first.
/// `kBefore`, if there is one, sees the call before that.
template <CallName kCall, std::size_t kIndex, auto kMethod, auto kBefore = nullptr>
class FaultHook;

template <CallName kCall, std::size_t kIndex, typename Interface, typename... Arguments,
          HRESULT (STDMETHODCALLTYPE Interface::*kMethod)(Arguments...), auto kBefore>
class FaultHook<kCall, kIndex, kMethod, kBefore> {
 public:
  /// Replaces the method if the object has this interface; harmless to repeat.
  static void Install(REFIID iid, void* object) {
    if (iid == __uuidof(Interface)) {
      static std::mutex installing;
      const std::lock_guard lock(installing);
      slot.Replace(object, kIndex, Call);
    }
  }

 private:
  static HRESULT STDMETHODCALLTYPE Call(Interface* self, Arguments... arguments) {
    if constexpr (!std::is_null_pointer_v<decltype(kBefore)>) {
      kBefore(self, arguments...);
    }
    if (const auto fault = TakeFaultOf(self)) {
      (ClearResult(arguments), ...);
      return *fault;
    }
    // What Wine's objects call of one another is no call of the product.
    const NoFaults inside;
    const HRESULT result = slot.original()(self, arguments...);
    if (SUCCEEDED(result)) {
      ResultHooks(self).HookAll(arguments...);
    }
    return result;
  }

  static std::optional<HRESULT> TakeFaultOf(const Interface* self) {
    const std::string_view owner = OwnerOf(self);
    if (owner.empty()) {
      return TakeFault(kCall.view());
    }
    return TakeFault(std::string(owner).append(":").append(kCall.view()), kCall.view());
  }

  inline static Slot<HRESULT(STDMETHODCALLTYPE*)(Interface*, Arguments...)> slot;
};

}  // namespace brisolte::standins
