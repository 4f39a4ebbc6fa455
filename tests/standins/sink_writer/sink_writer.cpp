#include "sink_writer/sink_writer.h"

#include <mfapi.h>
#include <mferror.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "shared/com_object.h"
#include "shared/faults.h"
#include "shared/media_sink_object.h"
#include "sink_writer/frame_pixels.h"
#include "sink_writer/media_types.h"
#include "sink_writer/mp4_file.h"

namespace brisolte::standins {
namespace {

using Microsoft::WRL::ComPtr;

/// How far one stream may be ahead of another that has given neither a sample nor a tick, in units of 100 ns.
constexpr LONGLONG kMostAhead = 10'000'000;

/// The state of a writer, which its media sink knows as well. Any thread.
class Recording {
 public:
  explicit Recording(std::string path) : path_(std::move(path)) {}

  bool Open() { return file_.Open(path_); }

  HRESULT AddStream(IMFMediaType& type, DWORD& index) {
    const std::scoped_lock lock(mutex_);
    if (state_ != State::kAddingStreams) {
      return MF_E_INVALIDREQUEST;
    }
    if (!IsStreamType(type)) {
      return MF_E_INVALIDMEDIATYPE;
    }
    index = static_cast<DWORD>(streams_.size());
    streams_.emplace_back().output = &type;
    return S_OK;
  }

  HRESULT SetInputMediaType(DWORD index, IMFMediaType& type) {
    const std::scoped_lock lock(mutex_);
    if (index >= streams_.size()) {
      return MF_E_INVALIDSTREAMNUMBER;
    }
    Stream& stream = streams_[index];
    stream.videoType = VideoTypeOf(*stream.output.Get(), type);
    stream.audioType = AudioTypeOf(*stream.output.Get(), type);
    return stream.HasInput() ? S_OK : MF_E_INVALIDMEDIATYPE;
  }

  HRESULT Begin() {
    const std::scoped_lock lock(mutex_);
    if (state_ != State::kAddingStreams || streams_.empty() ||
        !std::ranges::all_of(streams_, &Stream::HasInput)) {
      return MF_E_INVALIDREQUEST;
    }
    for (Stream& stream : streams_) {
      if (stream.videoType) {
        stream.video = file_.AddVideo(*stream.videoType);
      } else {
        stream.audio = file_.AddAudio(*stream.audioType);
      }
      if (stream.video == nullptr && stream.audio == nullptr) {
        return MF_E_INVALIDMEDIATYPE;
      }
    }
    if (!file_.Begin()) {
      return E_FAIL;
    }
    state_ = State::kWriting;
    return S_OK;
  }

  HRESULT Write(DWORD index, IMFSample& sample) {
    LONGLONG time = 0;
    LONGLONG duration = 0;
    if (FAILED(sample.GetSampleTime(&time)) || FAILED(sample.GetSampleDuration(&duration))) {
      return MF_E_INVALIDREQUEST;
    }
    std::unique_lock lock(mutex_);
    if (const HRESULT result = Check(index); FAILED(result)) {
      return result;
    }
    changed_.wait(lock, [&] { return state_ != State::kWriting || !IsAhead(index, time); });
    if (state_ != State::kWriting) {
      return MF_E_SHUTDOWN;
    }
    Stream& stream = streams_[index];
    if (const HRESULT result =
            stream.video != nullptr ? WriteFrame(stream, sample, time) : WriteSound(stream, sample);
        FAILED(result)) {
      return result;
    }
    ++samples_;
    Advance(stream, time + duration);
    return S_OK;
  }

  HRESULT Tick(DWORD index, LONGLONG time) {
    const std::scoped_lock lock(mutex_);
    if (const HRESULT result = Check(index); FAILED(result)) {
      return result;
    }
    Advance(streams_[index], time);
    return S_OK;
  }

  HRESULT Finalize() {
    const std::scoped_lock lock(mutex_);
    if (state_ == State::kShutDown) {
      return MF_E_SHUTDOWN;
    }
    if (state_ != State::kWriting) {
      return MF_E_INVALIDREQUEST;
    }
    End();
    streams_.clear();  // and what they hold of the device
    if (samples_ == 0) {
      file_.Close();
      return MF_E_SINK_NO_SAMPLES_PROCESSED;
    }
    return file_.Finish() ? S_OK : E_FAIL;
  }

  /// There is a media sink once writing has begun.
  bool HasSink() const {
    const std::scoped_lock lock(mutex_);
    return state_ != State::kAddingStreams;
  }

  HRESULT Shutdown() {
    const std::scoped_lock lock(mutex_);
    if (state_ == State::kShutDown) {
      return MF_E_SHUTDOWN;
    }
    End();
    streams_.clear();
    file_.Close();
    return S_OK;
  }

 private:
  enum class State { kAddingStreams, kWriting, kShutDown };

  struct Stream {
    ComPtr<IMFMediaType> output;
    std::optional<VideoTrackType> videoType;
    std::optional<AudioTrackType> audioType;
    VideoTrack* video = nullptr;
    FramePixels pixels;  ///< of its last frame
    AudioTrack* audio = nullptr;
    LONGLONG until = 0;  ///< up to here there is a sample or a tick

    bool HasInput() const { return videoType || audioType; }
  };

  HRESULT Check(DWORD index) const {
    if (state_ == State::kShutDown) {
      return MF_E_SHUTDOWN;
    }
    if (state_ != State::kWriting) {
      return MF_E_INVALIDREQUEST;
    }
    return index < streams_.size() ? S_OK : MF_E_INVALIDSTREAMNUMBER;
  }

  bool IsAhead(DWORD index, LONGLONG time) const {
    return std::ranges::any_of(streams_, [&](const Stream& other) {
      return &other != &streams_[index] && time > other.until + kMostAhead;
    });
  }

  void Advance(Stream& stream, LONGLONG until) {
    stream.until = std::max(stream.until, until);
    changed_.notify_all();
  }

  void End() {
    state_ = State::kShutDown;
    changed_.notify_all();
  }

  static HRESULT WriteFrame(Stream& stream, IMFSample& sample, LONGLONG time) {
    FramePixels& pixels = stream.pixels;
    const HRESULT result = ReadFrame(sample, static_cast<unsigned>(stream.videoType->width),
                                     static_cast<unsigned>(stream.videoType->height), pixels);
    if (FAILED(result)) {
      return result;
    }
    return stream.video->Write({pixels.bytes.data(), pixels.pitch}, time) ? S_OK : E_FAIL;
  }

  static HRESULT WriteSound(Stream& stream, IMFSample& sample) {
    ComPtr<IMFMediaBuffer> buffer;
    BYTE* bytes = nullptr;
    DWORD length = 0;
    HRESULT result = sample.ConvertToContiguousBuffer(buffer.GetAddressOf());
    if (SUCCEEDED(result)) {
      result = buffer->Lock(&bytes, nullptr, &length);
    }
    if (FAILED(result)) {
      return result;
    }
    const bool written = stream.audio->Write({bytes, length});
    buffer->Unlock();
    return written ? S_OK : E_FAIL;
  }

  const std::string path_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by `mutex_`.
  State state_ = State::kAddingStreams;
  Mp4File file_;
  std::vector<Stream> streams_;
  std::uint64_t samples_ = 0;
};

class MediaSink final : public MediaSinkObject {
 public:
  explicit MediaSink(std::shared_ptr<Recording> recording) : recording_(std::move(recording)) {}

  HRESULT STDMETHODCALLTYPE Shutdown() override { return recording_->Shutdown(); }

 private:
  const std::shared_ptr<Recording> recording_;
};

class SinkWriter final : public ComObject<IMFSinkWriter> {
 public:
  explicit SinkWriter(std::shared_ptr<Recording> recording) : recording_(std::move(recording)) {}

  HRESULT STDMETHODCALLTYPE AddStream(IMFMediaType* type, DWORD* index) override {
    if (type == nullptr || index == nullptr) {
      return E_INVALIDARG;
    }
    const auto fault = TakeFault("AddStream");
    return fault ? *fault : recording_->AddStream(*type, *index);
  }

  HRESULT STDMETHODCALLTYPE SetInputMediaType(DWORD index, IMFMediaType* type,
                                              IMFAttributes* /*parameters*/) override {
    if (type == nullptr) {
      return E_INVALIDARG;
    }
    const auto fault = TakeFault("SetInputMediaType");
    return fault ? *fault : recording_->SetInputMediaType(index, *type);
  }

  HRESULT STDMETHODCALLTYPE BeginWriting() override {
    const auto fault = TakeFault("BeginWriting");
    return fault ? *fault : recording_->Begin();
  }

  HRESULT STDMETHODCALLTYPE WriteSample(DWORD index, IMFSample* sample) override {
    if (sample == nullptr) {
      return E_INVALIDARG;
    }
    const auto fault = TakeFault("WriteSample");
    return fault ? *fault : recording_->Write(index, *sample);
  }

  HRESULT STDMETHODCALLTYPE SendStreamTick(DWORD index, LONGLONG timestamp) override {
    const auto fault = TakeFault("SendStreamTick");
    return fault ? *fault : recording_->Tick(index, timestamp);
  }

  HRESULT STDMETHODCALLTYPE Finalize() override {
    const auto fault = TakeFault("FinalizeWriter");
    return fault ? *fault : recording_->Finalize();
  }

  HRESULT STDMETHODCALLTYPE GetServiceForStream(DWORD index, REFGUID service, REFIID iid,
                                                void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (index != static_cast<DWORD>(MF_SINK_WRITER_MEDIASINK) || service != GUID_NULL ||
        !recording_->HasSink()) {
      return MF_E_UNSUPPORTED_SERVICE;
    }
    return Make<MediaSink>(recording_)->QueryInterface(iid, object);
  }

  HRESULT STDMETHODCALLTYPE PlaceMarker(DWORD /*index*/, void* /*context*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE NotifyEndOfSegment(DWORD /*index*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Flush(DWORD /*index*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetStatistics(DWORD /*index*/, MF_SINK_WRITER_STATISTICS* /*stats*/) override {
    return E_NOTIMPL;
  }

 private:
  // The sink keeps the file open until it is shut down, whoever lets go of the writer.
  const std::shared_ptr<Recording> recording_;
};

}  // namespace

ComPtr<IMFSinkWriter> MakeSinkWriter(const std::string& path) {
  auto recording = std::make_shared<Recording>(path);
  if (!recording->Open()) {
    return nullptr;
  }
  return Make<SinkWriter>(std::move(recording));
}

}  // namespace brisolte::standins
