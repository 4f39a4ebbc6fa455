#pragma once

#include <d3d11.h>

namespace brisolte::standins {

/// Watches what the caller maps and copies, and lets the named calls fail.
///
/// Mapping a subresource that is mapped answers E_INVALIDARG. A copy from or to a resource that is mapped is
/// dropped, as is the unmapping of what is not mapped. Each of them is told on standard error in a line that
/// starts with "standin: ", for most of them have no other way to be noticed.
void HookContext(ID3D11DeviceContext& context);

}  // namespace brisolte::standins
