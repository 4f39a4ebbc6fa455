#pragma once

#include <windows.h>

#include <chrono>
#include <string>

namespace brisolte {

/// A file that is written under a temporary name beside its place and takes it only when it is complete.
/// Until then, and when it never is, what stands in the place stays as it is, and the temporary file goes
/// with this object. Windows only.
///
/// When somebody has the file in the place open, each of the two steps waits for so long that it is closed.
class ReplacedFile {
 public:
  explicit ReplacedFile(std::chrono::milliseconds patience = std::chrono::milliseconds(500))
      : patience_(patience) {}
  ReplacedFile(const ReplacedFile&) = delete;
  ReplacedFile& operator=(const ReplacedFile&) = delete;
  ~ReplacedFile();

  /// Makes the empty temporary file for the place `filePath` (UTF-8, of any length); once. Fails also where a
  /// file exists that could not be written. Nothing is made in the place.
  HRESULT Reserve(const std::string& filePath);

  /// The file to write into; valid after `Reserve`.
  const std::wstring& temporaryPath() const { return temporary_; }

  /// Moves the file to its place. Nobody may have it open any more. Where the file in the place stays open to
  /// somebody who shares it for writing, its content is exchanged.
  HRESULT Commit();

 private:
  HRESULT CreateTemporary(const std::wstring& directory);

  const std::chrono::milliseconds patience_;
  std::wstring path_;
  std::wstring temporary_;  ///< empty when there is no temporary file
};

}  // namespace brisolte
