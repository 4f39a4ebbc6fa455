#pragma once

#include <inspectable.h>
#include <windows.h>
#include <winstring.h>
#include <wrl/client.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cwchar>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "video/graphics_capture_abi.h"

namespace brisolte::standins {

using Microsoft::WRL::ComPtr;

/// The answer of a WinRT object that has been closed (RO_E_CLOSED).
inline constexpr HRESULT kClosed = static_cast<HRESULT>(0x80000013);
/// The answer to a call that comes in the wrong state (E_ILLEGAL_METHOD_CALL).
inline constexpr HRESULT kIllegalMethodCall = static_cast<HRESULT>(0x8000000E);
/// The answer to a handler that cannot be called from any thread (RO_E_MUST_BE_AGILE).
inline constexpr HRESULT kMustBeAgile = static_cast<HRESULT>(0x8000001C);

/// Objects of this DLL that are alive.
inline std::atomic<long> liveObjects{0};

/// The identifier of an interface: our own declarations carry it, the platform's are known to the compiler.
template <typename Interface>
IID IidOf() {
  if constexpr (requires { Interface::kIid; }) {
    return Interface::kIid;
  } else {
    return __uuidof(Interface);
  }
}

/// A reference-counted object with these interfaces, which any thread may call. The first one gives it its
/// identity.
template <typename First, typename... Others>
class ComObject : public First, public Others... {
 public:
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;
  ComObject(ComObject&&) = delete;
  ComObject& operator=(ComObject&&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (const auto refusal = RefuseQuery(iid)) {
      return *refusal;
    }
    *object = Find(iid);
    if (*object == nullptr) {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }

  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }

  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) {
      delete this;
    }
    return left;
  }

  /// Adds a reference unless the last one is gone already; for those who know the object without owning it.
  bool TryAddRef() {
    ULONG known = references_.load();
    while (known != 0 && !references_.compare_exchange_weak(known, known + 1)) {
    }
    return known != 0;
  }

 protected:
  ComObject() { ++liveObjects; }
  virtual ~ComObject() { --liveObjects; }

  /// A result to answer a query with instead of looking for the interface.
  virtual std::optional<HRESULT> RefuseQuery(REFIID /*iid*/) { return std::nullopt; }

  /// An interface that is a base of a listed one.
  virtual void* FindBase(REFIID /*iid*/) { return nullptr; }

 private:
  void* Find(REFIID iid) {
    if (iid == __uuidof(IUnknown) || iid == abi::IAgileObject::kIid) {
      return static_cast<IUnknown*>(static_cast<First*>(this));
    }
    void* found = nullptr;
    const auto match = [&]<typename Interface>(Interface* self) {
      const bool inspectable = std::is_base_of_v<IInspectable, Interface> && iid == __uuidof(IInspectable);
      if (found == nullptr && (inspectable || iid == IidOf<Interface>())) {
        found = self;
      }
    };
    match(static_cast<First*>(this));
    (match(static_cast<Others*>(this)), ...);
    return found != nullptr ? found : FindBase(iid);
  }

  std::atomic<ULONG> references_{1};
};

/// The same for a WinRT object: all that every IInspectable must answer.
template <typename First, typename... Others>
class InspectableObject : public ComObject<First, Others...> {
 public:
  HRESULT STDMETHODCALLTYPE GetIids(ULONG* count, IID** iids) override {
    if (count == nullptr || iids == nullptr) {
      return E_POINTER;
    }
    constexpr ULONG kCount = 1 + sizeof...(Others);
    *count = 0;
    *iids = static_cast<IID*>(CoTaskMemAlloc(kCount * sizeof(IID)));
    if (*iids == nullptr) {
      return E_OUTOFMEMORY;
    }
    const std::array<IID, kCount> all{IidOf<First>(), IidOf<Others>()...};
    for (; *count < kCount; ++*count) {
      (*iids)[*count] = all[*count];
    }
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING* name) override {
    return name == nullptr
               ? E_POINTER
               : WindowsCreateString(className_, static_cast<UINT32>(std::wcslen(className_)), name);
  }

  HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel* level) override {
    if (level == nullptr) {
      return E_POINTER;
    }
    *level = BaseTrust;
    return S_OK;
  }

 protected:
  explicit InspectableObject(const wchar_t* className) : className_(className) {}

 private:
  const wchar_t* className_;
};

/// Makes an object; the pointer owns its first reference.
template <typename Object, typename... Arguments>
ComPtr<Object> Make(Arguments&&... arguments) {
  ComPtr<Object> made;
  made.Attach(new Object(std::forward<Arguments>(arguments)...));
  return made;
}

/// Hands a reference to a caller through its result pointer, as COM methods do.
template <typename Interface>
HRESULT Give(ComPtr<Interface> object, Interface** result) {
  *result = object.Detach();
  return S_OK;
}

}  // namespace brisolte::standins
