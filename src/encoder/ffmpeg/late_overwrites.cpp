#include "encoder/ffmpeg/late_overwrites.h"

#include <cstdio>
#include <new>

namespace brisolte {

void LateOverwrites::IoDeleter::operator()(AVIOContext* io) const {
  // FFmpeg may have exchanged the buffer for a larger one.
  av_free(io->buffer);
  avio_context_free(&io);
}

LateOverwrites::LateOverwrites(AVFormatContext& format)
    : format_(format), file_(format.pb), end_(avio_tell(file_)), position_(end_) {
  constexpr int kBufferBytes = 1 << 16;
  auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
  if (buffer == nullptr) {
    throw std::bad_alloc();
  }
  io_.reset(avio_alloc_context(buffer, kBufferBytes, 1, this, nullptr, WriteBytes, Seek));
  if (!io_) {
    av_free(buffer);
    throw std::bad_alloc();
  }
  // Where the file's own is.
  avio_seek(io_.get(), end_, SEEK_SET);
  format_.pb = io_.get();
}

LateOverwrites::~LateOverwrites() {
  format_.pb = file_;
}

int LateOverwrites::Flush() {
  avio_flush(io_.get());
  avio_flush(file_);
  return io_->error < 0 ? io_->error : file_->error;
}

int LateOverwrites::Apply() {
  for (const Overwrite& overwrite : held_) {
    WriteToFile(overwrite.at, overwrite.bytes.data(), static_cast<int>(overwrite.bytes.size()));
  }
  held_.clear();
  avio_flush(file_);
  return file_->error;
}

template <typename Byte>
int LateOverwrites::WriteBytes(void* self, Byte* bytes, int size) {
  return static_cast<LateOverwrites*>(self)->Write(bytes, size);
}

std::int64_t LateOverwrites::Seek(void* self, std::int64_t offset, int whence) {
  auto& overwrites = *static_cast<LateOverwrites*>(self);
  if (whence != SEEK_SET) {
    return whence == AVSEEK_SIZE ? avio_size(overwrites.file_) : AVERROR(EINVAL);
  }
  overwrites.position_ = offset;
  return offset;
}

int LateOverwrites::Write(const std::uint8_t* bytes, int size) {
  const std::int64_t at = position_;
  position_ += size;
  if (at >= end_) {
    return WriteToFile(at, bytes, size);
  }
  try {
    held_.push_back({at, {bytes, bytes + size}});
  } catch (const std::bad_alloc&) {
    return AVERROR(ENOMEM);
  }
  return size;
}

int LateOverwrites::WriteToFile(std::int64_t at, const std::uint8_t* bytes, int size) {
  if (avio_tell(file_) != at) {
    avio_seek(file_, at, SEEK_SET);
  }
  avio_write(file_, bytes, size);
  return file_->error < 0 ? file_->error : size;
}

}  // namespace brisolte
