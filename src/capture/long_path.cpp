#include "capture/long_path.h"

#include <cstddef>

namespace brisolte {
namespace {

constexpr std::size_t kLongestPlainPath = 259;

}  // namespace

std::wstring LongPath(const std::wstring& fullPath) {
  const bool device = fullPath.starts_with(LR"(\\?\)") || fullPath.starts_with(LR"(\\.\)");
  if (fullPath.size() <= kLongestPlainPath || device) {
    return fullPath;
  }
  return fullPath.starts_with(LR"(\\)") ? LR"(\\?\UNC\)" + fullPath.substr(2) : LR"(\\?\)" + fullPath;
}

}  // namespace brisolte
