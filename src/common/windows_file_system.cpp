// The file system through the functions of Windows.

#include <windows.h>

#include <algorithm>
#include <array>
#include <ios>
#include <string>
#include <vector>

#include "common/file_system.h"
#include "common/handle.h"

namespace brisolte {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Null when the file cannot be opened; GetLastError tells why.
Handle Open(const std::filesystem::path& path, DWORD access, DWORD sharing, DWORD disposition, DWORD flags) {
  void* const handle = CreateFileW(path.c_str(), access, sharing, nullptr, disposition, flags, nullptr);
  return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

std::error_code SystemError(DWORD error) {
  return {static_cast<int>(error), std::system_category()};
}

/// What stands at a path, behind symbolic links: its attributes, or the system's error.
struct Status {
  DWORD attributes = INVALID_FILE_ATTRIBUTES;
  DWORD error = ERROR_SUCCESS;

  bool IsDirectory() const { return error == ERROR_SUCCESS && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
};

Status StatusOfTarget(const std::filesystem::path& link) {
  const Handle target =
      Open(link, FILE_READ_ATTRIBUTES, kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  BY_HANDLE_FILE_INFORMATION information{};
  if (!target || GetFileInformationByHandle(target.get(), &information) == FALSE) {
    return {.error = GetLastError()};
  }
  return {.attributes = information.dwFileAttributes};
}

Status StatusOf(const std::filesystem::path& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return {.error = GetLastError()};
  }
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ? StatusOfTarget(path) : Status{attributes};
}

bool IsNotFound(DWORD error) {
  // A server that does not answer and a name that no file can have are places where nothing is.
  constexpr std::array kNotFound = {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_BAD_NETPATH,
                                    ERROR_INVALID_NAME};
  return std::ranges::find(kNotFound, static_cast<long>(error)) != kNotFound.end();
}

/// Makes one directory, unless something of its name is there.
DWORD MakeDirectory(const std::wstring& path) {
  const DWORD error = CreateDirectoryW(path.c_str(), nullptr) != FALSE ? ERROR_SUCCESS : GetLastError();
  return error == ERROR_ALREADY_EXISTS ? ERROR_SUCCESS : error;
}

/// Goes up to the first that has a place, and down again.
DWORD MakeDirectoryAndParents(const std::wstring& path) {
  std::vector<std::size_t> below;  // where the beginnings of the path end that name a directory
  std::wstring directory = path;
  DWORD error = MakeDirectory(directory);
  while (error == ERROR_PATH_NOT_FOUND && directory.find(L'\\') != std::wstring::npos) {
    below.push_back(directory.size());
    directory.resize(directory.find_last_of(L'\\'));
    error = MakeDirectory(directory);
  }
  for (; error == ERROR_SUCCESS && !below.empty(); below.pop_back()) {
    error = MakeDirectory(path.substr(0, below.back()));
  }
  return error;
}

}  // namespace

bool IsDirectory(const std::filesystem::path& path) {
  const Status status = StatusOf(path);
  if (status.error != ERROR_SUCCESS && !IsNotFound(status.error)) {
    throw std::filesystem::filesystem_error("status", path, SystemError(status.error));
  }
  return status.IsDirectory();
}

bool MakeDirectories(const std::filesystem::path& path) {
  if (StatusOf(path).error == ERROR_SUCCESS) {
    return false;
  }
  if (const DWORD error = MakeDirectoryAndParents(path.native()); error != ERROR_SUCCESS) {
    throw std::filesystem::filesystem_error("create_directories", path, SystemError(error));
  }
  return true;
}

bool TestWriting(const std::filesystem::path& path) {
  Handle file = Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL);
  if (!file) {
    return false;
  }
  if (CloseHandle(file.release()) == FALSE) {
    throw std::ios_base::failure("ios_base::badbit set");
  }
  return true;
}

bool RemoveFile(const std::filesystem::path& path) {
  if (DeleteFileW(path.c_str()) != FALSE) {
    return true;
  }
  const DWORD error = GetLastError();
  if (error != ERROR_FILE_NOT_FOUND) {
    throw std::filesystem::filesystem_error("remove", path, SystemError(error));
  }
  return false;
}

std::error_code MoveOver(const std::filesystem::path& from, const std::filesystem::path& to) {
  constexpr int kAttempts = 50;
  constexpr DWORD kPause = 20;
  DWORD error = ERROR_SUCCESS;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE) {
      return {};
    }
    error = GetLastError();
    if (error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED) {
      break;
    }
    Sleep(kPause);
  }
  return SystemError(error);
}

std::error_code FlushToDisk(const std::filesystem::path& path) {
  const Handle file = Open(path, GENERIC_WRITE, kShareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
  if (!file || FlushFileBuffers(file.get()) == FALSE) {
    return SystemError(GetLastError());
  }
  return {};
}

NewFile::NewFile(const std::filesystem::path& path)
    : file_(Open(path, GENERIC_WRITE, kShareAll, CREATE_NEW, FILE_ATTRIBUTE_NORMAL).release()) {
  if (!file_) {
    error_ = SystemError(GetLastError());
  }
}

void NewFile::Closer::operator()(void* file) const {
  CloseHandle(file);
}

}  // namespace brisolte
