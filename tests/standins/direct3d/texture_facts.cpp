#include "direct3d/texture_facts.h"

#include <cstdint>

namespace brisolte::standins {

namespace {

constexpr GUID kAskedFlagsKey{0x2A0E5F1C, 0x6C57, 0x4B52, {0x8E, 0x0B, 0x90, 0x5E, 0x4D, 0x0E, 0x77, 0x01}};
constexpr GUID kMappedKey{0x2A0E5F1C, 0x6C57, 0x4B52, {0x8E, 0x0B, 0x90, 0x5E, 0x4D, 0x0E, 0x77, 0x02}};
// One bit a subresource; what lies beyond is not watched.
constexpr UINT kWatched = 64;

template <typename Value>
std::optional<Value> Recall(ID3D11Resource& resource, const GUID& key) {
  Value value{};
  UINT size = sizeof(value);
  const bool found = SUCCEEDED(resource.GetPrivateData(key, &size, &value)) && size == sizeof(value);
  return found ? std::optional(value) : std::nullopt;
}

std::uint64_t MappedBits(ID3D11Resource& resource) {
  return Recall<std::uint64_t>(resource, kMappedKey).value_or(0);
}

std::uint64_t Bit(UINT subresource) {
  return subresource < kWatched ? std::uint64_t{1} << subresource : 0;
}

}  // namespace

void RememberAskedFlags(ID3D11Resource& resource, const AskedFlags& flags) {
  resource.SetPrivateData(kAskedFlagsKey, sizeof(flags), &flags);
}

std::optional<AskedFlags> AskedFlagsOf(ID3D11Resource& resource) {
  return Recall<AskedFlags>(resource, kAskedFlagsKey);
}

bool IsMapped(ID3D11Resource& resource, UINT subresource) {
  return (MappedBits(resource) & Bit(subresource)) != 0;
}

bool IsAnyMapped(ID3D11Resource& resource) {
  return MappedBits(resource) != 0;
}

void SetMapped(ID3D11Resource& resource, UINT subresource, bool mapped) {
  const std::uint64_t others = MappedBits(resource) & ~Bit(subresource);
  const std::uint64_t bits = others | (mapped ? Bit(subresource) : 0);
  resource.SetPrivateData(kMappedKey, sizeof(bits), &bits);
}

}  // namespace brisolte::standins
