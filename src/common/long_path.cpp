#include "common/long_path.h"

#include <cstddef>

namespace brisolte {
namespace {

/// A file may have 259 characters; a folder, only so many that a short name finds room in it.
constexpr std::size_t kLongestPlainPath = 247;

/// Beyond this nothing can be, in whatever form; the system counts a path's bytes in 16 bits, and behind
/// `\\?\` not every one looks before it does.
constexpr std::size_t kLongestPath = 32'700;

}  // namespace

bool IsVerbatim(const std::wstring& path) {
  return path.starts_with(LR"(\\?\)");
}

std::wstring LongPath(const std::wstring& path) {
  const bool asItIs = path.size() <= kLongestPlainPath || path.size() > kLongestPath;
  if (asItIs || IsVerbatim(path) || path.starts_with(LR"(\\.\)")) {
    return path;
  }
  if (path.starts_with(LR"(\\)")) {
    return LR"(\\?\UNC\)" + path.substr(2);
  }
  const bool full = path.substr(1, 2) == LR"(:\)";
  return full ? LR"(\\?\)" + path : path;
}

}  // namespace brisolte
