#include "capture/replaced_file.h"

#include <atomic>
#include <cstdint>
#include <memory>

#include "capture/long_path.h"
#include "common/text.h"

namespace brisolte {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HRESULT LastError() {
  return HRESULT_FROM_WIN32(GetLastError());
}

/// Opens a file and closes it again.
HRESULT TryToOpen(const std::wstring& path, DWORD access, DWORD disposition, DWORD flags = 0) {
  auto* const file = CreateFileW(path.c_str(), access, kShareAll, nullptr, disposition,
                                 FILE_ATTRIBUTE_NORMAL | flags, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return LastError();
  }
  CloseHandle(file);
  return S_OK;
}

HRESULT FindFullPath(const std::wstring& path, std::wstring& fullPath) {
  const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  if (size == 0) {
    return LastError();
  }
  fullPath.resize(size);
  // Another thread may change the current directory between the calls.
  const DWORD length = GetFullPathNameW(path.c_str(), size, fullPath.data(), nullptr);
  if (length == 0) {
    return LastError();
  }
  if (length >= size) {
    return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
  }
  fullPath.resize(length);
  return S_OK;
}

/// Text behind a NUL would not be seen by the system; and a path needs a name for a file.
HRESULT ResolvePath(const std::string& filePath, std::wstring& fullPath) {
  const HRESULT invalid = HRESULT_FROM_WIN32(ERROR_INVALID_NAME);
  if (filePath.empty() || filePath.find('\0') != std::string::npos) {
    return invalid;
  }
  const HRESULT found = FindFullPath(ToWide(filePath), fullPath);
  return SUCCEEDED(found) && fullPath.ends_with(L'\\') ? invalid : found;
}

/// Whether a file can take this place: it replaces one that may be written and removed, or one can be made
/// there, which is gone again at once.
HRESULT CheckPlace(const std::wstring& path) {
  constexpr DWORD kReplacing = GENERIC_WRITE | DELETE;
  const HRESULT opened = TryToOpen(path, kReplacing, OPEN_EXISTING);
  if (opened != HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)) {
    return opened;
  }
  const HRESULT made = TryToOpen(path, kReplacing, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE);
  // Somebody else may make the same file right now.
  return made == HRESULT_FROM_WIN32(ERROR_FILE_EXISTS) ? S_OK : made;
}

}  // namespace

ReplacedFile::~ReplacedFile() {
  if (!temporary_.empty()) {
    DeleteFileW(temporary_.c_str());
  }
}

HRESULT ReplacedFile::Reserve(const std::string& filePath) {
  std::wstring fullPath;
  if (const HRESULT found = ResolvePath(filePath, fullPath); FAILED(found)) {
    return found;
  }
  path_ = LongPath(fullPath);
  const HRESULT usable = CheckPlace(path_);
  return FAILED(usable) ? usable : CreateTemporary(fullPath.substr(0, fullPath.find_last_of(L'\\') + 1));
}

HRESULT ReplacedFile::CreateTemporary(const std::wstring& directory) {
  static std::atomic<std::uint32_t> number = 0;
  const std::wstring beginning = directory + L"brisolte-" + std::to_wstring(GetCurrentProcessId()) + L"-";
  HRESULT made = S_OK;
  do {
    std::wstring path = LongPath(beginning + std::to_wstring(number++) + L".tmp");
    made = TryToOpen(path, GENERIC_WRITE, CREATE_NEW);
    if (SUCCEEDED(made)) {
      temporary_ = std::move(path);
    }
    // A process of the same number may have left one behind.
  } while (made == HRESULT_FROM_WIN32(ERROR_FILE_EXISTS));
  return made;
}

HRESULT ReplacedFile::Commit() {
  if (MoveFileExW(temporary_.c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING) == FALSE) {
    return LastError();
  }
  temporary_.clear();
  return S_OK;
}

}  // namespace brisolte
