#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace brisolte {

/// What is left of the volume that a file is on, for whoever runs this process. None when the system does not
/// say; some drives of networks and clouds claim to have no size at all.
std::optional<std::uint64_t> FreeSpaceBeside(const std::filesystem::path& file);

}  // namespace brisolte
