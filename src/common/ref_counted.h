#pragma once

#include <unknwn.h>
#include <wrl/client.h>

#include <atomic>
#include <memory>
#include <utility>

namespace brisolte {

/// Counts the references of a COM object of ours, which goes with the last one. Any thread.
template <typename Interface>
class RefCounted : public Interface {
 public:
  RefCounted() = default;
  RefCounted(const RefCounted&) = delete;
  RefCounted& operator=(const RefCounted&) = delete;
  virtual ~RefCounted() = default;

  ULONG STDMETHODCALLTYPE AddRef() override {
    return references_.fetch_add(1, std::memory_order_relaxed) + 1;
  }

  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) {
      const std::unique_ptr<RefCounted> last(this);
    }
    return left;
  }

 protected:
  /// Answers a query: `known` says whether the object is what was asked for.
  HRESULT Answer(bool known, void** object) {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = known ? static_cast<Interface*>(this) : nullptr;
    if (!known) {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }

 private:
  std::atomic<ULONG> references_{1};
};

/// Makes an object; the pointer owns its first reference.
template <typename Object, typename Interface, typename... Arguments>
Microsoft::WRL::ComPtr<Interface> MakeRefCounted(Arguments&&... arguments) {
  Microsoft::WRL::ComPtr<Interface> made;
  made.Attach(std::make_unique<Object>(std::forward<Arguments>(arguments)...).release());
  return made;
}

}  // namespace brisolte
