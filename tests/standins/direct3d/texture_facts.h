#pragma once

#include <d3d11.h>

#include <optional>

namespace brisolte::standins {

/// What the stand-in remembers about a resource. It is kept with the resource itself, so it ends with it.

/// The flags that a texture was asked for with, where Wine can only make it without them.
struct AskedFlags {
  UINT bind = 0;
  UINT misc = 0;
};
void RememberAskedFlags(ID3D11Resource& resource, const AskedFlags& flags);
std::optional<AskedFlags> AskedFlagsOf(ID3D11Resource& resource);

/// Which of the resource's subresources are mapped.
bool IsMapped(ID3D11Resource& resource, UINT subresource);
bool IsAnyMapped(ID3D11Resource& resource);
void SetMapped(ID3D11Resource& resource, UINT subresource, bool mapped);

}  // namespace brisolte::standins
