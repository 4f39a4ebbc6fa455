#include "capture/replaced_file.h"

#include <array>
#include <atomic>
#include <cstdint>

#include "common/full_path.h"
#include "common/handle.h"
#include "common/long_path.h"

namespace brisolte {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kPause = 20;

HRESULT LastError() {
  return HRESULT_FROM_WIN32(GetLastError());
}

HRESULT ResultOf(BOOL done) {
  return done != FALSE ? S_OK : LastError();
}

HRESULT Open(const std::wstring& path, DWORD access, DWORD disposition, Handle& file) {
  void* const opened =
      CreateFileW(path.c_str(), access, kShareAll, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (opened == INVALID_HANDLE_VALUE) {
    return LastError();
  }
  file.reset(opened);
  return S_OK;
}

/// Opens a file and closes it again.
HRESULT TryToOpen(const std::wstring& path, DWORD access, DWORD disposition) {
  Handle file;
  return Open(path, access, disposition, file);
}

/// What calls answer while somebody else has the file open, and when they are not allowed for good.
bool MayBeHeld(HRESULT result) {
  return result == HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION) ||
         result == HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED);
}

/// Calls until nobody else has the file open, or for so long: scanners, indexers and the like open new and
/// changed files for a moment.
template <typename Call>
HRESULT CallPatiently(std::chrono::milliseconds patience, Call call) {
  const auto end = std::chrono::steady_clock::now() + patience;
  HRESULT result = call();
  while (MayBeHeld(result) && std::chrono::steady_clock::now() < end) {
    Sleep(kPause);
    result = call();
  }
  return result;
}

HRESULT CopyContent(void* from, void* to) {
  std::array<std::uint8_t, 65536> block{};
  for (;;) {
    DWORD size = 0;
    const HRESULT read = ResultOf(ReadFile(from, block.data(), block.size(), &size, nullptr));
    if (FAILED(read) || size == 0) {
      return read;
    }
    const HRESULT written = ResultOf(WriteFile(to, block.data(), size, &size, nullptr));
    if (FAILED(written)) {
      return written;
    }
  }
}

/// Gives the file that size and goes to its start.
HRESULT Resize(void* file, LARGE_INTEGER size) {
  const bool resized = SetFilePointerEx(file, size, nullptr, FILE_BEGIN) != FALSE &&
                       SetEndOfFile(file) != FALSE &&
                       SetFilePointerEx(file, {}, nullptr, FILE_BEGIN) != FALSE;
  return ResultOf(resized ? TRUE : FALSE);
}

/// Writes the content of one file into another, which must be there.
HRESULT Overwrite(const std::wstring& path, const std::wstring& content) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  // A file server may let write into a file that is marked as read-only.
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    return HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED);
  }
  Handle from;
  Handle to;
  LARGE_INTEGER size{};
  HRESULT result = Open(content, GENERIC_READ, OPEN_EXISTING, from);
  result = FAILED(result) ? result : Open(path, GENERIC_WRITE, OPEN_EXISTING, to);
  result = FAILED(result) ? result : ResultOf(GetFileSizeEx(from.get(), &size));
  // First what can fail, while the old content is still there: room on the disk, the mappings of others.
  result = FAILED(result) ? result : Resize(to.get(), size);
  return FAILED(result) ? result : CopyContent(from.get(), to.get());
}

}  // namespace

ReplacedFile::~ReplacedFile() {
  if (!temporary_.empty()) {
    DeleteFileW(temporary_.c_str());
  }
}

HRESULT ReplacedFile::Reserve(const std::string& filePath) {
  // Text behind a NUL would not be seen by the system.
  if (filePath.empty() || filePath.find('\0') != std::string::npos) {
    return HRESULT_FROM_WIN32(ERROR_INVALID_NAME);
  }
  path_ = FullFilePath(filePath).native();
  const auto nameBegin = path_.find_last_of(L'\\') + 1;
  if (nameBegin == path_.size()) {
    return HRESULT_FROM_WIN32(ERROR_INVALID_NAME);
  }
  const HRESULT opened =
      CallPatiently(patience_, [this] { return TryToOpen(path_, GENERIC_WRITE, OPEN_EXISTING); });
  const bool usable = SUCCEEDED(opened) || opened == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  return usable ? CreateTemporary(path_.substr(0, nameBegin)) : opened;
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
  const HRESULT moved = CallPatiently(patience_, [this] {
    return ResultOf(MoveFileExW(temporary_.c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING));
  });
  if (SUCCEEDED(moved)) {
    temporary_.clear();
  }
  // Nothing takes the place of a file that somebody has open, but who shares it for writing lets it change.
  const bool done = SUCCEEDED(moved) || (MayBeHeld(moved) && SUCCEEDED(Overwrite(path_, temporary_)));
  return done ? S_OK : moved;
}

}  // namespace brisolte
