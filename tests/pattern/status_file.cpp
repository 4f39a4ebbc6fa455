#include "status_file.h"

#include <chrono>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <system_error>
#include <thread>
#include <utility>

namespace brisolte {

void ReplaceFileText(const std::filesystem::path& file, const std::string& text) {
  std::filesystem::path whole = file;
  whole += L".part";
  std::ofstream(whole, std::ios::binary | std::ios::trunc) << text;
  // A reader may have the old file open at this moment, and Windows lets nobody replace it then.
  std::error_code failure;
  for (int attempt = 0; attempt < 2000; ++attempt) {
    std::filesystem::rename(whole, file, failure);
    if (!failure) {
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  throw std::filesystem::filesystem_error("rename", whole, file, failure);
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
