// The file system through the C++ library, where there are no share modes.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>

#include "common/file_system.h"

namespace brisolte {

bool IsDirectory(const std::filesystem::path& path) {
  return std::filesystem::is_directory(std::filesystem::status(path));
}

bool MakeDirectories(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::exists(path, error)) {
    return false;
  }
  error.clear();
  std::filesystem::create_directories(path, error);
  if (error) {
    throw std::filesystem::filesystem_error("create_directories", path, error);
  }
  return true;
}

bool TestWriting(const std::filesystem::path& path) {
  std::ofstream file(path, std::ios::out | std::ios::trunc);
  if (!file.is_open()) {
    return false;
  }
  file.close();
  if (file.bad()) {
    throw std::ios_base::failure("ios_base::badbit set");
  }
  if (file.fail()) {
    throw std::ios_base::failure("ios_base::failbit set");
  }
  return true;
}

bool RemoveFile(const std::filesystem::path& path) {
  std::error_code error;
  const bool removed = std::filesystem::remove(path, error);
  if (error) {
    throw std::filesystem::filesystem_error("remove", path, error);
  }
  return removed;
}

std::error_code MoveOver(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::error_code error;
  std::filesystem::rename(from, to, error);
  return error;
}

std::error_code FlushToDisk(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const bool flushed = file >= 0 && fsync(file) == 0;
  const std::error_code error = flushed ? std::error_code() : std::error_code(errno, std::generic_category());
  if (file >= 0) {
    close(file);
  }
  return error;
}

NewFile::NewFile(const std::filesystem::path& path) : file_(std::fopen(path.c_str(), "wx")) {
  if (!file_) {
    error_.assign(errno, std::generic_category());
  }
}

void NewFile::Closer::operator()(void* file) const {
  // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the pointer whose deleter this is owned it.
  std::fclose(static_cast<std::FILE*>(file));
}

}  // namespace brisolte
