#include "encoder/mf/texture_lease.h"

#include <wrl/client.h>

#include <utility>

#include "common/ref_counted.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

constexpr GUID kLeaseKey{0x3B0F6D0E, 0x52C7, 0x4C8B, {0x9D, 0x61, 0x0A, 0x7E, 0x94, 0x1C, 0xE2, 0x35}};

/// An object that does nothing but hold a texture.
class Lease final : public RefCounted<IUnknown> {
 public:
  explicit Lease(PooledTexture texture) : texture_(std::move(texture)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return Answer(iid == IID_IUnknown, object);
  }

 private:
  const PooledTexture texture_;
};

}  // namespace

HRESULT LeaseTexture(IMFMediaBuffer& buffer, PooledTexture texture) {
  const auto lease = MakeRefCounted<Lease, IUnknown>(std::move(texture));
  ComPtr<IMFDXGIBuffer> surface;
  const HRESULT result =
      buffer.QueryInterface(__uuidof(IMFDXGIBuffer), reinterpret_cast<void**>(surface.GetAddressOf()));
  return FAILED(result) ? result : surface->SetUnknown(kLeaseKey, lease.Get());
}

}  // namespace brisolte
