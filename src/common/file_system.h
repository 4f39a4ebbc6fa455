#pragma once

#include <filesystem>
#include <memory>
#include <system_error>

namespace brisolte {

// What recordings ask of the file system, for paths in the form that full_path.h gives. On Windows this asks
// the system itself: of the C runtime, through which the standard library may go, every failure of a status
// is "not found".

/// Whether a directory is there; follows symbolic links. @throws std::filesystem::filesystem_error named
/// "status" when that cannot be told
bool IsDirectory(const std::filesystem::path& path);

/// Makes a directory with all that are missing above it. False when something is there already. @throws
/// std::filesystem::filesystem_error named "create_directories"
bool MakeDirectories(const std::filesystem::path& path);

/// Opens a file for writing, made or emptied, and closes it. On Windows nobody else may have it open, and
/// then it stays as it was. False when it cannot be opened. @throws std::ios_base::failure when it cannot be
/// closed
bool TestWriting(const std::filesystem::path& path);

/// Removes a file. False when there is none. @throws std::filesystem::filesystem_error named "remove"
bool RemoveFile(const std::filesystem::path& path);

/// Gives the file `from` the name `to`, in place of the file that has it. On Windows this waits for so long
/// that nobody has that open, as scanners and indexers have for a moment.
std::error_code MoveOver(const std::filesystem::path& from, const std::filesystem::path& to);

/// Waits until what was handed to the system for this file is on the disk, where it outlives the system.
std::error_code FlushToDisk(const std::filesystem::path& path);

/// A file made anew and held, so that no `TestWriting` succeeds on it (on Windows), but others may open it.
class NewFile {
 public:
  /// Makes it; `error` tells why not, also when a file is there already.
  explicit NewFile(const std::filesystem::path& path);

  const std::error_code& error() const { return error_; }

 private:
  struct Closer {
    void operator()(void* file) const;
  };

  std::unique_ptr<void, Closer> file_;
  std::error_code error_;
};

}  // namespace brisolte
