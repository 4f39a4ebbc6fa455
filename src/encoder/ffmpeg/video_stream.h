#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "capture/capture_settings.h"
#include "capture/recording_options.h"
#include "encoder/ffmpeg/bgra_scaler.h"
#include "encoder/ffmpeg/ffmpeg_types.h"
#include "encoder/ffmpeg/output_file.h"
#include "encoder/ffmpeg/video_timestamps.h"
#include "encoder/video_frame.h"

namespace brisolte {

/// The video of one recording: an encoder, its stream in the output file, and the one frame and packet that
/// all pictures pass through. Not synchronised: one thread at a time.
class VideoStream {
 public:
  /// Takes one encoded packet, stamped for the file. False when it was refused.
  using Enqueue = std::function<bool(const AVPacket&)>;

  /// Sets the stream up for pictures of `width` by `height` pixels; an odd height loses its last row to
  /// scaling, and what is larger than the options allow is made smaller. A later call replaces the encoder of
  /// an earlier one and keeps its stream. A call that fails before it has found the encoder changes nothing;
  /// one that fails afterwards leaves none.
  bool Initialize(OutputFile& file, const CaptureSettings& settings, const RecordingOptions& options,
                  std::uint32_t width, std::uint32_t height);

  /// Whether pictures are wanted as NV12. False, with an ERROR line, without an encoder.
  bool GetPixelFormat() const;

  /// Encodes one picture, after the one before it once more where there was a long pause. True when at least
  /// one packet of it was taken; false also for a picture that finds no time of its own.
  bool EncodeFrame(const VideoFrame& frame, const Enqueue& enqueue);

  /// Shows the last picture until this time, in milliseconds since the first, by encoding it once more.
  /// Without a picture, or when the encoder refused the last one, nothing happens.
  void ShowUntil(std::int64_t milliseconds, const Enqueue& enqueue);

  /// Ends the encoding: hands over what the encoder still holds. It takes no picture afterwards. Without an
  /// encoder, or when it was given no picture, nothing happens.
  void Drain(const Enqueue& enqueue);

  /// Frees everything but the stream, which is the file's.
  void Release();

 private:
  bool OpenEncoder(const AVOutputFormat& container, const CaptureSettings& settings,
                   const RecordingOptions& options, const AVCodec& codec, PictureSize size);
  bool CreateFrame();
  bool DescribeStream(const AVOutputFormat& container);

  /// Whether pictures come as the encoder takes them, or nearly.
  bool TakesNv12() const;
  bool FillVideoFrame(const VideoFrame& frame);
  bool FillFromNv12(const MappedPixels& pixels);
  bool FillFromBgra(const MappedPixels& pixels);
  void FillPause(std::int64_t milliseconds, const Enqueue& enqueue);
  bool EncodeAt(std::int64_t pts, const Enqueue& enqueue);
  bool ReceivePackets(const Enqueue& enqueue);

  AVStream* stream_ = nullptr;  ///< the file's; kept when the encoder is replaced
  CodecContextPtr context_;
  std::optional<BgraScaler> scaler_;
  bool makesSmaller_ = false;
  PacketPtr packet_;
  FramePtr frame_;
  VideoTimestamps timestamps_;
  bool holdsFrames_ = false;  ///< the encoder was given a picture and not drained since
  bool repeatable_ = false;   ///< the encoder took the picture in `frame_`, or the one before, and may again
};

}  // namespace brisolte
