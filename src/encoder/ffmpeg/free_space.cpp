#include "encoder/ffmpeg/free_space.h"

#include <system_error>

namespace brisolte {

std::optional<std::uint64_t> FreeSpaceBeside(const std::filesystem::path& file) {
  std::error_code error;
  // Ends in a separator: the directory may itself be where a volume begins, and not every library looks at
  // the last name of a path that does not.
  const auto space = std::filesystem::space(file.parent_path() / "", error);
  if (error || space.capacity == 0) {
    return std::nullopt;
  }
  return space.available;
}

}  // namespace brisolte
