#include "bare_encoding.h"

#include <array>
#include <stdexcept>

#include "encoder/ffmpeg/encoder_options.h"
#include "encoder/ffmpeg/ffmpeg_types.h"
#include "encoder/ffmpeg/pixel_formats.h"

namespace brisolte::bench {
namespace {

constexpr int kFrameRate = 30;
constexpr std::int64_t kBitRate = 5'000'000;

void Check(int result, const char* call) {
  if (result < 0) {
    throw std::runtime_error(std::string(call) + ": " + ErrorText(result));
  }
}

class BareEncoding {
 public:
  BareEncoding(const std::string& encoderName, int width, int height, const std::string& file)
      : width_(width), height_(height), frame_(av_frame_alloc()), packet_(av_packet_alloc()) {
    AVFormatContext* format = nullptr;
    Check(avformat_alloc_output_context2(&format, nullptr, nullptr, file.c_str()), "output context");
    format_.reset(format);
    Check(avio_open(&format->pb, file.c_str(), AVIO_FLAG_WRITE), "avio_open");
    OpenEncoder(encoderName);
    MakeFrame();
    stream_ = avformat_new_stream(format, nullptr);
    Check(avcodec_parameters_from_context(stream_->codecpar, context_.get()), "parameters");
    stream_->time_base = context_->time_base;
    OptionDictionary options;
    options.Set("movflags", "faststart");
    Check(avformat_write_header(format, options.address()), "header");
  }

  void Encode(const MovingPictures& pictures, std::size_t number) {
    Check(av_frame_make_writable(frame_.get()), "writable");
    Fill(pictures.Picture(number), static_cast<int>(pictures.rowPitch()));
    frame_->pts = av_rescale_q(static_cast<std::int64_t>(number), {1, kFrameRate}, context_->time_base);
    Send(frame_.get());
  }

  void Finish() {
    Send(nullptr);
    Check(av_write_trailer(format_.get()), "trailer");
  }

 private:
  void OpenEncoder(const std::string& name) {
    const AVCodec* const codec = avcodec_find_encoder_by_name(name.c_str());
    context_.reset(avcodec_alloc_context3(codec));
    context_->width = width_;
    context_->height = height_;
    context_->time_base = {1, 60'000};
    context_->framerate = {kFrameRate, 1};
    context_->gop_size = kFrameRate;
    context_->bit_rate = kBitRate;
    context_->pix_fmt = SelectPixelFormat(*codec);
    OptionDictionary options;
    ApplyEncoderOptions(name, kFrameRate, *context_, options);
    Check(avcodec_open2(context_.get(), codec, options.address()), "avcodec_open2");
  }

  void MakeFrame() {
    frame_->format = context_->pix_fmt;
    frame_->width = width_;
    frame_->height = height_;
    Check(av_frame_get_buffer(frame_.get(), 32), "frame");
    scaler_.reset(sws_getContext(width_, height_, sourceFormat(), width_, height_, context_->pix_fmt,
                                 SWS_FAST_BILINEAR, nullptr, nullptr, nullptr));
  }

  bool takesNv12() const {
    return context_->pix_fmt == AV_PIX_FMT_NV12 || context_->pix_fmt == AV_PIX_FMT_YUV420P;
  }
  AVPixelFormat sourceFormat() const { return takesNv12() ? AV_PIX_FMT_NV12 : AV_PIX_FMT_BGRA; }

  void Fill(const std::uint8_t* picture, int pitch) {
    const std::ptrdiff_t lumaBytes = std::ptrdiff_t{pitch} * height_;
    const std::array<const std::uint8_t*, 4> planes{picture, takesNv12() ? picture + lumaBytes : nullptr};
    const std::array<int, 4> strides{pitch, takesNv12() ? pitch : 0};
    if (context_->pix_fmt == AV_PIX_FMT_NV12) {
      av_image_copy_plane(frame_->data[0], frame_->linesize[0], planes[0], pitch, width_, height_);
      av_image_copy_plane(frame_->data[1], frame_->linesize[1], planes[1], pitch, width_, height_ / 2);
    } else {
      sws_scale(scaler_.get(), planes.data(), strides.data(), 0, height_, frame_->data, frame_->linesize);
    }
  }

  void Send(const AVFrame* frame) {
    Check(avcodec_send_frame(context_.get(), frame), "send");
    while (avcodec_receive_packet(context_.get(), packet_.get()) >= 0) {
      av_packet_rescale_ts(packet_.get(), context_->time_base, stream_->time_base);
      packet_->stream_index = stream_->index;
      Check(av_interleaved_write_frame(format_.get(), packet_.get()), "write");
    }
  }

  const int width_;
  const int height_;
  FormatContextPtr format_;
  CodecContextPtr context_;
  FramePtr frame_;
  PacketPtr packet_;
  ScalerPtr scaler_;
  AVStream* stream_ = nullptr;
};

}  // namespace

void EncodeBare(const MovingPictures& pictures, const std::string& encoderName, int width, int height,
                std::size_t frames, const std::string& file) {
  BareEncoding encoding(encoderName, width, height, file);
  for (std::size_t number = 0; number < frames; ++number) {
    encoding.Encode(pictures, number);
  }
  encoding.Finish();
}

}  // namespace brisolte::bench
