#pragma once

#include <windows.h>

#include <string>

namespace brisolte {

/// A file that is written under a temporary name beside its place and takes it only when it is complete.
/// Until then, and when it never is, what stands in the place stays as it is, and the temporary file goes
/// with this object. Windows only.
class ReplacedFile {
 public:
  ReplacedFile() = default;
  ReplacedFile(const ReplacedFile&) = delete;
  ReplacedFile& operator=(const ReplacedFile&) = delete;
  ~ReplacedFile();

  /// Makes the empty temporary file for the place `filePath` (UTF-8, of any length); once. Fails also where a
  /// file exists that could not be replaced.
  HRESULT Reserve(const std::string& filePath);

  /// The file to write into; valid after `Reserve`.
  const std::wstring& temporaryPath() const { return temporary_; }

  /// Moves the file to its place. Nobody may have it open any more.
  HRESULT Commit();

 private:
  HRESULT CreateTemporary(const std::wstring& directory);

  std::wstring path_;
  std::wstring temporary_;  ///< empty when there is no temporary file
};

}  // namespace brisolte
