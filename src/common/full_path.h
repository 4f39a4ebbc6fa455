#pragma once

#include <filesystem>
#include <string>

namespace brisolte {

/// Everything before the last run of separators of either kind.
std::string ParentDirectory(const std::string& path);

/// The folder that a text (UTF-8) names in front of a separator, as an absolute path that the system's
/// functions take at any length. A relative one begins at the current directory of this moment; a drive alone
/// is its root.
std::filesystem::path FullFolderPath(const std::string& path);

/// The same for a file. Its folder is the one that the text in front of its name would be alone.
std::filesystem::path FullFilePath(const std::string& path);

}  // namespace brisolte
