#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace brisolte {

/// Replaces `file` by one with this text; a reader sees the old text or the new, never a part.
void ReplaceFileText(const std::filesystem::path& file, const std::string& text);

/// A count in a file, eight digits written in place, cheap enough for every picture.
class ProgressFile {
 public:
  /// An empty path: nothing is written.
  explicit ProgressFile(const std::filesystem::path& file);

  void Write(std::uint32_t count);

 private:
  std::ofstream stream_;
};

/// Commands from a file to which others append lines.
class CommandFile {
 public:
  /// An empty path: there are never commands. The file may appear later.
  explicit CommandFile(std::filesystem::path file);

  /// The whole lines that were appended since the last call.
  std::vector<std::string> NewLines();

 private:
  std::filesystem::path file_;
  std::streamoff read_ = 0;
};

}  // namespace brisolte
