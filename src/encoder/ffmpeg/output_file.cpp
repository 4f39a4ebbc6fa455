#include "encoder/ffmpeg/output_file.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <span>

#include "common/file_system.h"
#include "common/full_path.h"
#include "common/logger.h"
#include "common/text.h"
#include "encoder/ffmpeg/container_limits.h"
#include "encoder/ffmpeg/fast_start.h"
#include "encoder/ffmpeg/free_space.h"
#include "encoder/ffmpeg/late_overwrites.h"

namespace brisolte {
namespace {

/// Whether the description of a stream, which begins a file of fragments, is known before its first packet.
bool IsDescribed(const AVStream* stream) {
  constexpr std::array kNeedDescription = {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_AV1,
                                           AV_CODEC_ID_MPEG4};
  const AVCodecParameters& codec = *stream->codecpar;
  return codec.extradata_size > 0 ||
         std::ranges::find(kNeedDescription, codec.codec_id) == kNeedDescription.end();
}

const char* KindName(AVMediaType type) {
  switch (type) {
    case AVMEDIA_TYPE_VIDEO:
      return "video";
    case AVMEDIA_TYPE_AUDIO:
      return "audio";
    default:
      return "unknown";
  }
}

void LogStreams(const AVFormatContext& format) {
  Logger::Info("FFmpegEncoder: Writing file header with " + std::to_string(format.nb_streams) + " streams");
  for (unsigned i = 0; i < format.nb_streams; ++i) {
    const AVCodecParameters& codec = *format.streams[i]->codecpar;
    Logger::Info("FFmpegEncoder: Stream #" + std::to_string(i) + " is " + KindName(codec.codec_type) +
                 " codec_id: " + std::to_string(static_cast<int>(codec.codec_id)));
  }
}

/// FFmpeg alone would empty a file that another recording made since it was removed here.
int OpenNewFile(AVIOContext*& io, const std::filesystem::path& file, const std::string& url) {
  const NewFile made(file);
  return made.error() ? AVERROR(made.error().default_error_condition().value())
                      : avio_open(&io, url.c_str(), AVIO_FLAG_WRITE);
}

}  // namespace

bool PrepareOutputFile(const std::string& path) {
  if (const std::string directory = ParentDirectory(path); !directory.empty()) {
    Logger::Info("Creating output directory: " + directory);
    Logger::Info(MakeDirectories(FullFolderPath(directory)) ? "Output directory created successfully"
                                                            : "Output directory already exists");
  }
  const std::filesystem::path file = FullFilePath(path);
  if (!TestWriting(file)) {
    Logger::Error("Cannot write to output file: " + path);
    return false;
  }
  if (RemoveFile(file)) {
    Logger::Info("Existing output file removed");
  }
  return true;
}

FormatContextPtr CreateFormatContext(const std::string& path) {
  Logger::Info("FFmpegEncoder: Creating format context, output file: " + path);
  // FFmpeg opens the file once more, to move the index of an MP4 to the front, whatever the current directory
  // is by then.
  const std::filesystem::path file = FullFilePath(path);
  const std::string url = PathToUtf8(file);
  AVFormatContext* raw = nullptr;
  int result = avformat_alloc_output_context2(&raw, nullptr, nullptr, url.c_str());
  FormatContextPtr format(raw);
  if (result < 0 || !format) {
    Logger::Error("FFmpegEncoder: Unable to create FFMPEG output context: " + ErrorText(result));
    return nullptr;
  }
  if ((format->oformat->flags & AVFMT_NOFILE) == 0) {
    result = OpenNewFile(format->pb, file, url);
    if (result < 0) {
      Logger::Error("FFmpegEncoder: Unable to open output file: " + ErrorText(result));
      return nullptr;
    }
  }
  Logger::Info("FFmpegEncoder: Format context created successfully");
  return format;
}

bool OutputFile::Initialize(const std::string& path) {
  // Preparing the file again would remove what has been recorded into it.
  if (initialized()) {
    return true;
  }
  Logger::Info("FFmpegEncoder: Initialization with configuration: " + path);
  if (!PrepareOutputFile(path)) {
    Logger::Error("Cannot write to output file: " + path);
    return false;
  }
  format_ = CreateFormatContext(path);
  if (!format_) {
    Logger::Error("FFmpegEncoder: Failed to create format context");
    return false;
  }
  Logger::Info("FFmpegEncoder: Initialization successful");
  return true;
}

AVStream* OutputFile::AddStream() {
  // A muxer sets its streams up with the header and cannot work on one that comes later.
  if (!AcceptsStreams()) {
    return nullptr;
  }
  return avformat_new_stream(format_.get(), nullptr);
}

void OutputFile::AllowUnofficial() {
  if (format_) {
    format_->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
  }
}

bool OutputFile::CanBeFragmented() const {
  if (!IsQuickTimeLike(container())) {
    return false;
  }
  const std::span<AVStream* const> streams(format_->streams, format_->nb_streams);
  if (std::ranges::all_of(streams, IsDescribed)) {
    return true;
  }
  Logger::Warning(
      "FFmpegEncoder: The encoder describes its stream with the first picture; the file can be "
      "played when it is complete");
  return false;
}

int OutputFile::TryHeader() {
  // Neither a half-made header nor a finished file can be begun anew.
  if (stage_ != Stage::kAddingStreams) {
    return AVERROR(EINVAL);
  }
  OptionDictionary options;
  fragmented_ = options_.playableThroughout && CanBeFragmented();
  if (fragmented_) {
    // Fragments are what `Flush` makes, none besides. With "faststart" their data would get wrong places.
    options.Set("movflags", "hybrid_fragmented+frag_custom");
    // Without a list of edits all streams of the complete file would begin at the same time.
    options.Set("use_editlist", "1");
  } else {
    options.Set("movflags", "faststart");
  }
  const int result = avformat_write_header(format_.get(), options.address());
  stage_ = result < 0 ? Stage::kHeaderFailed : Stage::kWriting;
  return result;
}

bool OutputFile::WriteHeader() {
  if (!format_) {
    Logger::Error("FFmpegEncoder: Format context is null, cannot write file header");
    return false;
  }
  LogStreams(*format_);
  if (const int result = TryHeader(); result < 0) {
    Logger::Error("FFmpegEncoder: Failed to write file header: " + ErrorText(result));
    if (const std::string reason = WhyContainerRefuses(*format_); !reason.empty()) {
      Logger::Error("FFmpegEncoder: " + reason);
    }
    return false;
  }
  Logger::Info("FFmpegEncoder: File header written successfully");
  Flush();
  return true;
}

int OutputFile::WritePacket(AVPacket& packet) {
  // Without a header, and after the trailer, a muxer has no state to write a packet with.
  if (stage_ != Stage::kWriting || completed_) {
    return AVERROR(EINVAL);
  }
  if (!budget_.Admit(static_cast<std::uint64_t>(packet.size))) {
    Logger::Warning("FFmpegEncoder: The disk is nearly full, the recording ends here");
    completed_ = Complete();
    options_.report(RecordingEvent::kDiskFull);
    return AVERROR(ENOSPC);
  }
  if (fragmented_) {
    return WriteFragmentPacket(packet);
  }
  return av_interleaved_write_frame(format_.get(), &packet);
}

int OutputFile::WriteFragmentPacket(AVPacket& packet) {
  // What an encoder of sound puts in front of the first sample has no time that a fragment could tell.
  if (packet.pts < 0) {
    return 0;
  }
  PacketPtr& last = last_[packet.stream_index];
  int result = 0;
  if (last) {
    last->duration = packet.dts - last->dts;
    result = av_interleaved_write_frame(format_.get(), last.get());
  }
  last.reset(av_packet_clone(&packet));
  return last ? result : AVERROR(ENOMEM);
}

void OutputFile::Flush() {
  if (stage_ != Stage::kWriting || completed_) {
    return;
  }
  // In this order: what waits to be sorted among the streams, what the muxer collects before it writes, and
  // what is on its way to the system. A failure shows in the next packet.
  av_interleaved_write_frame(format_.get(), nullptr);
  if (fragmented_) {
    EndFragment();
  } else {
    av_write_frame(format_.get(), nullptr);
  }
  if (format_->pb != nullptr) {
    avio_flush(format_->pb);
  }
  const std::filesystem::path file = PathFromUtf8(format_->url);
  if (fragmented_) {
    static_cast<void>(FlushToDisk(file));
  }
  budget_.Look(FreeSpaceBeside(file));
}

void OutputFile::EndFragment() {
  av_write_frame(format_.get(), nullptr);
  // Unless it is told otherwise, the muxer takes streams that begin later to begin with the file.
  av_opt_set(format_->priv_data, "movflags", "+frag_discont", 0);
}

bool OutputFile::Complete() {
  for (const auto& [stream, packet] : last_) {
    av_interleaved_write_frame(format_.get(), packet.get());
  }
  last_.clear();
  if ((fragmented_ ? WriteTrailerBehind() : av_write_trailer(format_.get())) < 0) {
    return false;
  }
  if ((format_->oformat->flags & AVFMT_NOFILE) == 0) {
    avio_closep(&format_->pb);
  }
  return true;
}

int OutputFile::WriteTrailerBehind() {
  LateOverwrites overwrites(*format_);
  if (const int result = av_write_trailer(format_.get()); result < 0) {
    return result;
  }
  if (const int result = overwrites.Flush(); result < 0) {
    return result;
  }
  static_cast<void>(FlushToDisk(PathFromUtf8(format_->url)));
  return overwrites.Apply();
}

bool OutputFile::Finalize() {
  if (!format_) {
    Logger::Error("FFmpegEncoder: Not initialized or format context is null");
    return false;
  }
  // The muxer frees its state with the trailer, so there is one trailer a header, even if it fails.
  const bool hasHeader = stage_ == Stage::kWriting;
  if (hasHeader) {
    stage_ = Stage::kEnded;
  }
  if (!hasHeader || !(completed_ ? *completed_ : Complete())) {
    Logger::Error("FFmpegEncoder: Failed to write trailer!!!!!");
    return false;
  }
  Logger::Info("FFmpegEncoder: Trailer written successfully, output file closed");
  if (fragmented_) {
    PutIndexInFront();
  }
  return true;
}

void OutputFile::PutIndexInFront() {
  const std::string problem = MoveIndexToFront(PathFromUtf8(format_->url));
  if (!problem.empty()) {
    Logger::Warning("FFmpegEncoder: The index stays at the end of the file: " + problem);
  }
}

}  // namespace brisolte
