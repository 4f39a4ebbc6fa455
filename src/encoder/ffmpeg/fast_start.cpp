#include "encoder/ffmpeg/fast_start.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "common/file_system.h"
#include "common/text.h"
#include "encoder/ffmpeg/ffmpeg_types.h"
#include "encoder/ffmpeg/free_space.h"
#include "encoder/ffmpeg/movie_index.h"

namespace brisolte {
namespace {

constexpr std::int64_t kHeadBytes = 8;
constexpr std::int64_t kLargeHeadBytes = 16;
constexpr std::int64_t kLargestIndex = std::int64_t{1} << 30;
constexpr int kBlockBytes = 1 << 20;

/// Why the index stays where it is.
struct Refusal {
  std::string text;
};

void Require(bool holds, const char* text) {
  if (!holds) {
    throw Refusal{text};
  }
}

struct IoCloser {
  void operator()(AVIOContext* io) const { avio_close(io); }
};
using IoPtr = std::unique_ptr<AVIOContext, IoCloser>;

IoPtr Open(const std::filesystem::path& file, int flags) {
  AVIOContext* io = nullptr;
  const int result = avio_open(&io, PathToUtf8(file).c_str(), flags);
  if (result < 0) {
    throw Refusal{ErrorText(result)};
  }
  return IoPtr(io);
}

struct BoxPlace {
  std::uint32_t type = 0;
  std::int64_t begin = 0;
  std::int64_t end = 0;
};

/// The boxes of which the file is made.
std::vector<BoxPlace> BoxesOf(AVIOContext& io) {
  const std::int64_t size = avio_size(&io);
  std::vector<BoxPlace> boxes;
  for (std::int64_t at = 0; at < size;) {
    avio_seek(&io, at, SEEK_SET);
    auto length = static_cast<std::int64_t>(avio_rb32(&io));
    const std::uint32_t type = avio_rb32(&io);
    if (length == 1) {
      length = static_cast<std::int64_t>(avio_rb64(&io));
      Require(length >= kLargeHeadBytes, "a part of the file has no length");
    }
    Require(io.error == 0 && length >= kHeadBytes && length <= size - at, "a part of the file is not whole");
    boxes.push_back({type, at, at + length});
    at += length;
  }
  return boxes;
}

std::vector<std::uint8_t> Read(AVIOContext& io, std::int64_t begin, std::int64_t end) {
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(end - begin));
  avio_seek(&io, begin, SEEK_SET);
  const int size = static_cast<int>(bytes.size());
  Require(avio_read(&io, bytes.data(), size) == size, "the file cannot be read");
  return bytes;
}

void Copy(AVIOContext& from, std::int64_t begin, std::int64_t end, AVIOContext& to) {
  while (begin < end) {
    const std::int64_t next = std::min<std::int64_t>(end, begin + kBlockBytes);
    const std::vector<std::uint8_t> block = Read(from, begin, next);
    avio_write(&to, block.data(), static_cast<int>(block.size()));
    Require(to.error == 0, "the second file cannot be written");
    begin = next;
  }
}

/// Writes the file with its index in front.
void WriteReordered(AVIOContext& from, AVIOContext& to) {
  const std::vector<BoxPlace> boxes = BoxesOf(from);
  Require(boxes.size() >= 3 && boxes.front().type == MKBETAG('f', 't', 'y', 'p') &&
              boxes.back().type == MKBETAG('m', 'o', 'o', 'v'),
          "the file does not end with its index");
  const BoxPlace& head = boxes.front();
  const BoxPlace& index = boxes.back();
  Require(index.end - index.begin <= kLargestIndex, "the index is too large");
  const auto inFront = IndexInFront(Read(from, index.begin, index.end));
  if (!inFront) {
    throw Refusal{"the index is not as expected"};
  }
  Copy(from, head.begin, head.end, to);
  avio_write(&to, inFront->data(), static_cast<int>(inFront->size()));
  Copy(from, head.end, index.begin, to);
  avio_flush(&to);
  Require(to.error == 0, "the second file cannot be written");
}

void RequireRoomBeside(const std::filesystem::path& file, AVIOContext& io) {
  // For what others write meanwhile.
  constexpr std::uint64_t kReserve = std::uint64_t{16} * 1024 * 1024;
  const auto size = static_cast<std::uint64_t>(std::max<std::int64_t>(avio_size(&io), 0));
  const auto free = FreeSpaceBeside(file);
  Require(!free || *free >= size + kReserve, "the disk has no room for a second file");
}

/// A file that is gone with this object.
class Temporary {
 public:
  explicit Temporary(std::filesystem::path path) : path_(std::move(path)) {}
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;
  ~Temporary() {
    std::error_code error;
    std::filesystem::remove(path_, error);
  }

  const std::filesystem::path& path() const { return path_; }

 private:
  const std::filesystem::path path_;
};

void MoveOrRefuse(const std::filesystem::path& file) {
  std::filesystem::path beside = file;
  beside += ".tmp";
  IoPtr from = Open(file, AVIO_FLAG_READ);
  RequireRoomBeside(file, *from);
  const Temporary second(beside);
  {
    const IoPtr to = Open(second.path(), AVIO_FLAG_WRITE);
    WriteReordered(*from, *to);
  }
  from.reset();
  std::error_code error = FlushToDisk(second.path());
  if (!error) {
    error = MoveOver(second.path(), file);
  }
  if (error) {
    throw Refusal{error.message()};
  }
}

}  // namespace

std::string MoveIndexToFront(const std::filesystem::path& file) {
  try {
    MoveOrRefuse(file);
    return {};
  } catch (const Refusal& refusal) {
    return refusal.text;
  } catch (const std::exception& error) {
    // No memory for the index, for instance. The recording is complete all the same.
    return error.what();
  }
}

}  // namespace brisolte
