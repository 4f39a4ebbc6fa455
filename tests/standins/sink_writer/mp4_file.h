#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "sink_writer/ffmpeg_owners.h"

namespace brisolte::standins {

/// NV12 frames, and what becomes of them.
struct VideoTrackType {
  bool hevc = false;
  int width = 0;
  int height = 0;
  int frameRate = 0;
  std::int64_t bitrate = 0;
};

/// Interleaved samples, and the AAC that they become.
struct AudioTrackType {
  bool floatingPoint = false;
  int bitsPerSample = 0;
  int inputChannels = 0;
  int inputRate = 0;
  int channels = 0;
  int rate = 0;
  std::int64_t bitrate = 0;
};

/// A picture in memory: `height` rows of luma, then half as many of interleaved colour, all `pitch` apart.
struct Nv12Picture {
  const std::uint8_t* data = nullptr;
  int pitch = 0;
};

/// One encoder and its stream in a file.
class Mp4Track {
 public:
  Mp4Track() = default;
  Mp4Track(const Mp4Track&) = delete;
  Mp4Track& operator=(const Mp4Track&) = delete;
  virtual ~Mp4Track() = default;

  /// Encodes what is still held and writes it.
  bool Finish();

 protected:
  bool Open(AVFormatContext& file, const AVCodec* codec, CodecPtr context);
  /// Hands a frame to the encoder, null to end, and what comes out to the file.
  bool Encode(const AVFrame* frame);
  AVCodecContext& context() const { return *context_; }

 private:
  /// Ends the input; for a track that holds some itself.
  virtual bool FlushInput() { return true; }

  AVFormatContext* file_ = nullptr;
  AVStream* stream_ = nullptr;
  CodecPtr context_;
};

class VideoTrack final : public Mp4Track {
 public:
  bool Open(AVFormatContext& file, const VideoTrackType& type);
  /// `time` in units of 100 ns. One that is not later than the last is left out.
  bool Write(const Nv12Picture& picture, std::int64_t time);

 private:
  FramePtr frame_;
  std::int64_t lastTime_ = -1;
};

class AudioTrack final : public Mp4Track {
 public:
  bool Open(AVFormatContext& file, const AudioTrackType& type);
  /// The samples follow those before, whatever their time.
  bool Write(std::span<const std::uint8_t> samples);

 private:
  bool FlushInput() override;
  bool Convert(const std::uint8_t* samples, int count);
  bool EncodeQueued(bool all);

  std::size_t blockBytes_ = 1;
  bool packed24_ = false;
  ResamplerPtr resampler_;
  SampleQueuePtr queue_;
  FramePtr frame_;
  std::int64_t encoded_ = 0;
};

/// An MP4 file with any number of tracks: opened, tracks added, header, samples, end.
class Mp4File {
 public:
  /// `path` is UTF-8.
  bool Open(const std::string& path);
  VideoTrack* AddVideo(const VideoTrackType& type) { return Add<VideoTrack>(type); }
  AudioTrack* AddAudio(const AudioTrackType& type) { return Add<AudioTrack>(type); }
  bool Begin();
  /// Completes the file and closes it.
  bool Finish();
  /// Closes the file as it is.
  void Close() { file_.reset(); }

 private:
  template <typename Track, typename Type>
  Track* Add(const Type& type) {
    auto track = std::make_unique<Track>();
    if (!file_ || !track->Open(*file_, type)) {
      return nullptr;
    }
    Track* const added = track.get();
    tracks_.push_back(std::move(track));
    return added;
  }

  OutputPtr file_;
  std::vector<std::unique_ptr<Mp4Track>> tracks_;
};

}  // namespace brisolte::standins
