#include "common/full_path.h"

#include <system_error>

#include "common/text.h"

#ifdef _WIN32
#include <windows.h>

#include "common/long_path.h"
#endif

namespace brisolte {
namespace {

constexpr auto kSeparators = "\\/";

#ifdef _WIN32

/// A path that has no full form stays as it is: whoever opens it learns the reason.
std::wstring FullPath(const std::wstring& path) {
  if (IsVerbatim(path)) {
    return path;
  }
  std::wstring full;
  DWORD length = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  // Another thread may change the current directory between the calls.
  while (length > full.size()) {
    full.resize(length);
    length = GetFullPathNameW(path.c_str(), length, full.data(), nullptr);
  }
  full.resize(length);
  return length == 0 ? path : full;
}

#else

std::filesystem::path FullPath(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path full = std::filesystem::absolute(path, error);
  return error ? path : full;
}

#endif

}  // namespace

std::string ParentDirectory(const std::string& path) {
  const auto lastSeparator = path.find_last_of(kSeparators);
  if (lastSeparator == std::string::npos) {
    return {};
  }
  const auto end = path.find_last_not_of(kSeparators, lastSeparator);
  return end == std::string::npos ? std::string() : path.substr(0, end + 1);
}

#ifdef _WIN32

std::filesystem::path FullFolderPath(const std::string& path) {
  std::wstring wide = ToWide(path);
  // Without a separator a drive is its current directory, and behind `\\?\` the device and not its root.
  if (wide.ends_with(L':')) {
    wide += L'\\';
  }
  return LongPath(FullPath(wide));
}

std::filesystem::path FullFilePath(const std::string& path) {
  const auto lastSeparator = path.find_last_of(kSeparators);
  if (lastSeparator == std::string::npos) {
    return LongPath(FullPath(ToWide(path)));
  }
  // The folder by itself, because the system ignores blanks and dots at the end of a path only, and behind
  // `\\?\` takes one separator only.
  const std::string parent = ParentDirectory(path);
  std::wstring folder = parent.empty() ? FullPath(L"\\") : FullFolderPath(parent).wstring();
  if (!folder.ends_with(L'\\')) {
    folder += L'\\';
  }
  return LongPath(FullPath(folder + ToWide(path.substr(lastSeparator + 1))));
}

#else

std::filesystem::path FullFolderPath(const std::string& path) {
  return FullPath(PathFromUtf8(path));
}

std::filesystem::path FullFilePath(const std::string& path) {
  return FullPath(PathFromUtf8(path));
}

#endif

}  // namespace brisolte
