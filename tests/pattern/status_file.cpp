#include "status_file.h"

#include <iomanip>
#include <iterator>
#include <sstream>
#include <utility>

namespace brisolte {

void ReplaceFileText(const std::filesystem::path& file, const std::string& text) {
  std::filesystem::path whole = file;
  whole += L".part";
  std::ofstream(whole, std::ios::binary | std::ios::trunc) << text;
  std::filesystem::rename(whole, file);
}

ProgressFile::ProgressFile(const std::filesystem::path& file) {
  if (!file.empty()) {
    stream_.open(file, std::ios::binary | std::ios::trunc);
  }
}

void ProgressFile::Write(std::uint32_t count) {
  if (stream_.is_open()) {
    stream_.seekp(0);
    stream_ << std::setw(8) << std::setfill('0') << count;
    stream_.flush();
  }
}

CommandFile::CommandFile(std::filesystem::path file) : file_(std::move(file)) {}

std::vector<std::string> CommandFile::NewLines() {
  std::vector<std::string> lines;
  if (file_.empty()) {
    return lines;
  }
  std::ifstream stream(file_, std::ios::binary);
  stream.seekg(read_);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  const std::size_t end = text.rfind('\n');
  if (end == std::string::npos) {
    return lines;
  }
  read_ += static_cast<std::streamoff>(end + 1);
  std::istringstream whole(text.substr(0, end));
  for (std::string line; std::getline(whole, line);) {
    lines.push_back(line);
  }
  return lines;
}

}  // namespace brisolte
