#include "encoder/mf/texture_lease.h"

#include <wrl/client.h>

#include <atomic>
#include <memory>
#include <utility>

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

constexpr GUID kLeaseKey{0x3B0F6D0E, 0x52C7, 0x4C8B, {0x9D, 0x61, 0x0A, 0x7E, 0x94, 0x1C, 0xE2, 0x35}};

/// An object that does nothing but hold a texture.
class Lease final : public IUnknown {
 public:
  explicit Lease(PooledTexture texture) : texture_(std::move(texture)) {}
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;
  ~Lease() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    const bool known = iid == IID_IUnknown;
    *object = known ? this : nullptr;
    if (!known) {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }

  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }

  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) {
      const std::unique_ptr<Lease> last(this);
    }
    return left;
  }

 private:
  std::atomic<ULONG> references_{1};
  const PooledTexture texture_;
};

}  // namespace

HRESULT LeaseTexture(IMFMediaBuffer& buffer, PooledTexture texture) {
  ComPtr<IUnknown> lease;
  lease.Attach(std::make_unique<Lease>(std::move(texture)).release());
  ComPtr<IMFDXGIBuffer> surface;
  const HRESULT result =
      buffer.QueryInterface(__uuidof(IMFDXGIBuffer), reinterpret_cast<void**>(surface.GetAddressOf()));
  return FAILED(result) ? result : surface->SetUnknown(kLeaseKey, lease.Get());
}

}  // namespace brisolte
