#include "mf/recording_sink_writer.h"

#include <d3d11.h>
#include <gtest/gtest.h>
#include <propidl.h>

#include <atomic>
#include <string>

#include "mf/media_names.h"
#include "mf/nv12_textures.h"
#include "shared/com_object.h"
#include "shared/media_sink_object.h"

namespace brisolte::testing {
namespace {

using Microsoft::WRL::ComPtr;

/// Frees what a PROPVARIANT holds.
struct Variant : PROPVARIANT {
  Variant() : PROPVARIANT{} {}
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  ~Variant() { PropVariantClear(this); }
};

std::string ValueText(const PROPVARIANT& value) {
  switch (value.vt) {
    case VT_UI4:
      return std::to_string(value.ulVal);
    case VT_UI8:
      return std::to_string(value.uhVal.QuadPart >> 32) + " : " +
             std::to_string(value.uhVal.QuadPart & 0xFFFFFFFF);
    case VT_CLSID:
      return MediaGuidText(*value.puuid);
    case VT_UNKNOWN:
      return "an object";
    default:
      return "a value of kind " + std::to_string(value.vt);
  }
}

/// What holds the file of a sink writer.
class RecordingMediaSink final : public standins::MediaSinkObject {
 public:
  explicit RecordingMediaSink(MediaStage& stage) : stage_(stage) {}

  /// Ends the writes that wait, too.
  HRESULT STDMETHODCALLTYPE Shutdown() override {
    return stage_.Call("Shutdown of the media sink", "", [this] {
      stage_.HoldWrites(false);
      return S_OK;
    });
  }

 private:
  MediaStage& stage_;
};

class RecordingSinkWriter final : public standins::ComObject<IMFSinkWriter> {
 public:
  explicit RecordingSinkWriter(MediaStage& stage) : stage_(stage) {}
  RecordingSinkWriter(const RecordingSinkWriter&) = delete;
  RecordingSinkWriter& operator=(const RecordingSinkWriter&) = delete;

  HRESULT STDMETHODCALLTYPE AddStream(IMFMediaType* type, DWORD* index) override {
    const auto number = std::to_string(streams_);
    return stage_.Call("AddStream", "the type; it becomes stream " + number, [&] {
      stage_.AddType("output " + number + ": " + AttributesText(*type));
      *index = streams_++;
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE SetInputMediaType(DWORD index, IMFMediaType* type,
                                              IMFAttributes* parameters) override {
    const auto number = std::to_string(index);
    const std::string with = parameters != nullptr ? "with the attributes" : "without attributes";
    return stage_.Call("SetInputMediaType", "stream " + number + ", the type, " + with, [&] {
      stage_.AddType("input " + number + ": " + AttributesText(*type));
      if (parameters != nullptr) {
        stage_.AddType("parameters " + number + ": " + AttributesText(*parameters));
      }
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE BeginWriting() override { return stage_.Enter("BeginWriting"); }

  HRESULT STDMETHODCALLTYPE WriteSample(DWORD index, IMFSample* sample) override {
    return stage_.Call("WriteSample", "stream " + std::to_string(index) + ", the sample", [&] {
      stage_.Offer(*sample);
      stage_.Write(ReadSample(index, *sample));
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE Finalize() override { return stage_.Enter("Finalize"); }

  HRESULT STDMETHODCALLTYPE SendStreamTick(DWORD index, LONGLONG timestamp) override {
    return stage_.Enter("SendStreamTick",
                        "stream " + std::to_string(index) + ", " + std::to_string(timestamp));
  }
  HRESULT STDMETHODCALLTYPE PlaceMarker(DWORD /*index*/, void* /*context*/) override {
    return stage_.Enter("PlaceMarker");
  }
  HRESULT STDMETHODCALLTYPE NotifyEndOfSegment(DWORD /*index*/) override {
    return stage_.Enter("NotifyEndOfSegment");
  }
  HRESULT STDMETHODCALLTYPE Flush(DWORD /*index*/) override { return stage_.Enter("Flush"); }
  HRESULT STDMETHODCALLTYPE GetServiceForStream(DWORD index, REFGUID service, REFIID iid,
                                                void** object) override {
    EXPECT_EQ(index, static_cast<DWORD>(MF_SINK_WRITER_MEDIASINK));
    EXPECT_EQ(service, GUID_NULL);
    return stage_.Call("GetServiceForStream", "the media sink", [&] {
      return standins::Make<RecordingMediaSink>(stage_)->QueryInterface(iid, object);
    });
  }
  HRESULT STDMETHODCALLTYPE GetStatistics(DWORD /*index*/, MF_SINK_WRITER_STATISTICS* /*stats*/) override {
    return stage_.Enter("GetStatistics");
  }

 private:
  ~RecordingSinkWriter() override { stage_.Enter("Release the sink writer"); }

  MediaStage& stage_;
  DWORD streams_ = 0;
};

}  // namespace

WrittenSample ReadSample(DWORD stream, IMFSample& sample) {
  const MediaStage::Aside aside;
  WrittenSample written;
  written.stream = stream;
  DWORD buffers = 0;
  EXPECT_EQ(sample.GetBufferCount(&buffers), S_OK);
  EXPECT_EQ(buffers, 1U);
  ComPtr<IMFMediaBuffer> buffer;
  EXPECT_EQ(sample.GetSampleTime(&written.time), S_OK);
  EXPECT_EQ(sample.GetSampleDuration(&written.duration), S_OK);
  EXPECT_EQ(sample.GetBufferByIndex(0, buffer.GetAddressOf()), S_OK);
  DWORD length = 0;
  EXPECT_EQ(buffer->GetCurrentLength(&length), S_OK);
  written.length = length;
  ComPtr<IMFDXGIBuffer> surface;
  if (SUCCEEDED(buffer.As(&surface))) {
    ComPtr<ID3D11Texture2D> texture;
    UINT index = 1;
    EXPECT_EQ(surface->GetSubresourceIndex(&index), S_OK);
    EXPECT_EQ(index, 0U);
    EXPECT_EQ(
        surface->GetResource(__uuidof(ID3D11Texture2D), reinterpret_cast<void**>(texture.GetAddressOf())),
        S_OK);
    written.luma = LumaOf(*texture.Get());
    return written;
  }
  BYTE* bytes = nullptr;
  EXPECT_EQ(buffer->Lock(&bytes, nullptr, &length), S_OK);
  written.bytes.assign(bytes, bytes + length);
  EXPECT_EQ(buffer->Unlock(), S_OK);
  return written;
}

std::string AttributesText(IMFAttributes& attributes) {
  UINT32 count = 0;
  EXPECT_EQ(attributes.GetCount(&count), S_OK);
  std::string text;
  for (UINT32 i = 0; i < count; ++i) {
    GUID key{};
    Variant value;
    EXPECT_EQ(attributes.GetItemByIndex(i, &key, &value), S_OK);
    text += (text.empty() ? "" : ", ") + MediaGuidText(key) + " = " + ValueText(value);
  }
  return text;
}

ComPtr<IMFSinkWriter> MakeRecordingSinkWriter(MediaStage& stage) {
  return standins::Make<RecordingSinkWriter>(stage);
}

}  // namespace brisolte::testing
