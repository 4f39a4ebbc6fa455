#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>

namespace brisolte {

/// The handles that a process has open. Nothing when it cannot be told.
std::optional<std::uint64_t> CountHandles(DWORD pid);

}  // namespace brisolte
