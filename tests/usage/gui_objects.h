#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>

namespace brisolte {

/// Bitmaps, device contexts and the like that a process has. Nothing when it cannot be told.
std::optional<std::uint64_t> CountGdiObjects(HANDLE process);

/// Top-level and message-only windows of a process; of the other user objects nothing tells the number.
std::uint64_t CountWindows(DWORD pid);

}  // namespace brisolte
