#include <gtest/gtest.h>
#include <mfapi.h>
#include <mferror.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <future>
#include <string>

#include "shared/com_object.h"
#include "sink_writer/aac_formats.h"

namespace brisolte::standins {
namespace {

constexpr UINT32 kRate = 48'000;
constexpr LONGLONG kSecond = 10'000'000;

/// Sound of `rate` and `channels`, in 16 bits.
ComPtr<IMFMediaType> Pcm(UINT32 rate = kRate, UINT32 channels = 2) {
  ComPtr<IMFMediaType> type;
  EXPECT_EQ(MFCreateMediaType(type.GetAddressOf()), S_OK);
  type->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio);
  type->SetGUID(MF_MT_SUBTYPE, MFAudioFormat_PCM);
  type->SetUINT32(MF_MT_AUDIO_NUM_CHANNELS, channels);
  type->SetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, rate);
  type->SetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, 16);
  type->SetUINT32(MF_MT_AUDIO_BLOCK_ALIGNMENT, 2 * channels);
  type->SetUINT32(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, 2 * channels * rate);
  return type;
}

ComPtr<IMFMediaType> Aac(const AacFormat& format = {kRate, 2, 16'000}) {
  ComPtr<IMFMediaType> type;
  EXPECT_EQ(MFCreateMediaType(type.GetAddressOf()), S_OK);
  type->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio);
  type->SetGUID(MF_MT_SUBTYPE, MFAudioFormat_AAC);
  type->SetUINT32(MF_MT_AUDIO_NUM_CHANNELS, format.channels);
  type->SetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, format.sampleRate);
  type->SetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, 16);
  type->SetUINT32(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, format.bytesPerSecond);
  return type;
}

/// A tenth of a second of silence.
ComPtr<IMFSample> Silence(LONGLONG time) {
  constexpr DWORD kBytes = kRate / 10 * 4;
  ComPtr<IMFMediaBuffer> buffer;
  ComPtr<IMFSample> sample;
  EXPECT_EQ(MFCreateMemoryBuffer(kBytes, buffer.GetAddressOf()), S_OK);
  BYTE* bytes = nullptr;
  EXPECT_EQ(buffer->Lock(&bytes, nullptr, nullptr), S_OK);
  std::fill(bytes, bytes + kBytes, BYTE{0});
  buffer->Unlock();
  buffer->SetCurrentLength(kBytes);
  EXPECT_EQ(MFCreateSample(sample.GetAddressOf()), S_OK);
  sample->AddBuffer(buffer.Get());
  sample->SetSampleTime(time);
  sample->SetSampleDuration(kSecond / 10);
  return sample;
}

class SinkWriterTest : public ::testing::Test {
 protected:
  SinkWriterTest() {
    EXPECT_EQ(MFStartup(MF_VERSION, MFSTARTUP_FULL), S_OK);
    ComPtr<IMFAttributes> attributes;
    EXPECT_EQ(MFCreateAttributes(attributes.GetAddressOf(), 1), S_OK);
    attributes->SetGUID(MF_TRANSCODE_CONTAINERTYPE, MFTranscodeContainerType_MPEG4);
    EXPECT_EQ(
        MFCreateSinkWriterFromURL(file_.c_str(), nullptr, attributes.Get(), writer_.ReleaseAndGetAddressOf()),
        S_OK);
  }
  ~SinkWriterTest() override {
    if (const auto sink = Sink()) {
      sink->Shutdown();
    }
    writer_.Reset();
    EXPECT_TRUE(std::filesystem::remove(file_)) << "nobody has it open";
    EXPECT_EQ(MFShutdown(), S_OK);
  }

  /// A stream of sound; its index.
  DWORD AddSound() {
    DWORD index = 0;
    EXPECT_EQ(writer_->AddStream(Aac().Get(), &index), S_OK);
    EXPECT_EQ(writer_->SetInputMediaType(index, Pcm().Get(), nullptr), S_OK);
    return index;
  }

  /// Null when there is none yet.
  ComPtr<IMFMediaSink> Sink() {
    ComPtr<IMFMediaSink> sink;
    sinkResult_ =
        writer_->GetServiceForStream(static_cast<DWORD>(MF_SINK_WRITER_MEDIASINK), GUID_NULL,
                                     __uuidof(IMFMediaSink), reinterpret_cast<void**>(sink.GetAddressOf()));
    return sink;
  }

  /// A sample of the first stream two seconds on, while the second has nothing yet, is written on a thread.
  std::future<HRESULT> WriteAhead() {
    AddSound();
    AddSound();
    EXPECT_EQ(writer_->BeginWriting(), S_OK);
    auto written = std::async(std::launch::async,
                              [this] { return writer_->WriteSample(0, Silence(2 * kSecond).Get()); });
    EXPECT_EQ(written.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    return written;
  }

  const std::filesystem::path file_ = std::filesystem::temp_directory_path() /
                                      ("sink-writer-" + std::to_string(GetCurrentProcessId()) + ".mp4");
  ComPtr<IMFSinkWriter> writer_;
  HRESULT sinkResult_ = S_OK;
};

TEST_F(SinkWriterTest, HasNoMediaSinkBeforeWritingHasBegun) {
  AddSound();
  EXPECT_TRUE(Sink() == nullptr);
  EXPECT_EQ(sinkResult_, MF_E_UNSUPPORTED_SERVICE);
  EXPECT_EQ(writer_->BeginWriting(), S_OK);
  EXPECT_TRUE(Sink() != nullptr);
}

TEST_F(SinkWriterTest, DoesNotBeginWithoutAStream) {
  EXPECT_EQ(writer_->BeginWriting(), MF_E_INVALIDREQUEST);
}

TEST_F(SinkWriterTest, DoesNotBeginWithAStreamThatHasNoInput) {
  AddSound();
  DWORD index = 0;
  EXPECT_EQ(writer_->AddStream(Aac().Get(), &index), S_OK);
  EXPECT_EQ(writer_->BeginWriting(), MF_E_INVALIDREQUEST);
}

TEST_F(SinkWriterTest, HasNoOtherAacThanTheSystem) {
  const auto accepts = [this](const AacFormat& format) {
    DWORD index = 0;
    EXPECT_EQ(writer_->AddStream(Aac(format).Get(), &index), S_OK);
    return writer_->SetInputMediaType(index, Pcm().Get(), nullptr);
  };
  for (const AacFormat& format : {AacFormat{44'100, 1, 12'000}, {48'000, 2, 24'000}, {48'000, 6, 96'000}}) {
    EXPECT_EQ(accepts(format), S_OK);
  }
  for (const AacFormat& format : {AacFormat{16'000, 1, 12'000},
                                  {96'000, 2, 16'000},
                                  {48'000, 8, 16'000},
                                  {48'000, 2, 40'000},
                                  {48'000, 6, 16'000}}) {
    EXPECT_EQ(accepts(format), MF_E_INVALIDMEDIATYPE);
  }
}

TEST_F(SinkWriterTest, ConvertsSoundOfOtherRatesAndChannels) {
  DWORD index = 0;
  EXPECT_EQ(writer_->AddStream(Aac().Get(), &index), S_OK);
  EXPECT_EQ(writer_->SetInputMediaType(index, Pcm(16'000, 1).Get(), nullptr), S_OK);
  EXPECT_EQ(writer_->BeginWriting(), S_OK);
  EXPECT_EQ(writer_->WriteSample(index, Silence(0).Get()), S_OK);
  EXPECT_EQ(writer_->Finalize(), S_OK);
}

TEST_F(SinkWriterTest, HoldsBackWhatRunsAheadUntilATick) {
  auto written = WriteAhead();
  EXPECT_EQ(writer_->SendStreamTick(1, kSecond), S_OK);
  EXPECT_EQ(written.get(), S_OK);
}

TEST_F(SinkWriterTest, HoldsBackWhatRunsAheadUntilASample) {
  auto written = WriteAhead();
  EXPECT_EQ(writer_->WriteSample(1, Silence(kSecond).Get()), S_OK);
  EXPECT_EQ(written.get(), S_OK);
}

TEST_F(SinkWriterTest, LetsAWriteGoWhenItsSinkIsShutDown) {
  auto written = WriteAhead();
  EXPECT_EQ(Sink()->Shutdown(), S_OK);
  EXPECT_EQ(written.get(), MF_E_SHUTDOWN);
  EXPECT_EQ(Sink()->Shutdown(), MF_E_SHUTDOWN);
}

TEST_F(SinkWriterTest, DoesNotFinalizeWhatHasNotBegun) {
  AddSound();
  EXPECT_EQ(writer_->Finalize(), MF_E_INVALIDREQUEST);
}

TEST_F(SinkWriterTest, DoesNotFinalizeWithoutASample) {
  AddSound();
  EXPECT_EQ(writer_->BeginWriting(), S_OK);
  EXPECT_EQ(writer_->Finalize(), MF_E_SINK_NO_SAMPLES_PROCESSED);
  EXPECT_EQ(Sink()->Shutdown(), MF_E_SHUTDOWN);
}

}  // namespace
}  // namespace brisolte::standins
