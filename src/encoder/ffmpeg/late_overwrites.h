#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "encoder/ffmpeg/ffmpeg_types.h"

namespace brisolte {

/// Holds back what a muxer writes over what its file had already when this was made, until it has written all
/// the rest. A file in fragments has an index in front that its trailer gives up, and gets the last one
/// behind it: with this one of them is there at any moment.
///
/// The muxer's I/O is this while it lives, and the file's own before and after. One thread.
class LateOverwrites {
 public:
  /// @throws std::bad_alloc
  explicit LateOverwrites(AVFormatContext& format);
  LateOverwrites(const LateOverwrites&) = delete;
  LateOverwrites& operator=(const LateOverwrites&) = delete;
  ~LateOverwrites();

  /// Hands what is not held back to the system. Gives 0 or an error of FFmpeg's.
  int Flush();

  /// Writes what was held back, after `Flush`. Gives 0 or an error of FFmpeg's.
  int Apply();

 private:
  struct Overwrite {
    std::int64_t at;
    std::vector<std::uint8_t> bytes;
  };
  struct IoDeleter {
    void operator()(AVIOContext* io) const;
  };

  // FFmpeg's types for what may be written have changed between its versions.
  template <typename Byte>
  static int WriteBytes(void* self, Byte* bytes, int size);
  static std::int64_t Seek(void* self, std::int64_t offset, int whence);

  int Write(const std::uint8_t* bytes, int size);
  int WriteToFile(std::int64_t at, const std::uint8_t* bytes, int size);

  AVFormatContext& format_;
  AVIOContext* const file_;
  const std::int64_t end_;
  std::int64_t position_;
  std::vector<Overwrite> held_;
  std::unique_ptr<AVIOContext, IoDeleter> io_;
};

}  // namespace brisolte
