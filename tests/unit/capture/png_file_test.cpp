#include "capture/png_file.h"

#include <gmock/gmock.h>
#include <unknwn.h>
#include <wincodec.h>
#include <windows.h>
#include <wrl/client.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "common/com_apartment.h"
#include "common/hresult_error.h"
#include "standins/shared/com_object.h"
#include "support/apartment_state.h"
#include "support/captured_log.h"
#include "support/decoded_png.h"
#include "support/temporary_directory.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;
using testing::CapturedLog;
using testing::DecodedPng;
using testing::DecodePng;
using ::testing::HasSubstr;
using testing::TemporaryDirectory;

constexpr std::uint32_t kWidth = 7;
constexpr std::uint32_t kHeight = 5;
constexpr std::uint32_t kPitch = kWidth * 4 + 20;

/// An image in which every byte differs from its neighbours, with every kind of alpha.
std::vector<std::uint8_t> Bytes() {
  std::vector<std::uint8_t> bytes(std::size_t{kPitch} * kHeight, 0xEE);
  for (std::uint32_t y = 0; y < kHeight; ++y) {
    for (std::uint32_t i = 0; i < kWidth * 4; ++i) {
      bytes[y * kPitch + i] = static_cast<std::uint8_t>(y * 51 + i * 9);
    }
  }
  return bytes;
}

std::vector<std::uint8_t> PartOf(const std::vector<std::uint8_t>& bytes, const ImageArea& area) {
  std::vector<std::uint8_t> part;
  for (std::uint32_t y = area.y; y < area.y + area.height; ++y) {
    const std::uint8_t* row = bytes.data() + std::size_t{y} * kPitch + std::size_t{area.x} * 4;
    part.insert(part.end(), row, row + std::size_t{area.width} * 4);
  }
  return part;
}

std::string TextOf(const std::string& path) {
  std::ifstream file(std::filesystem::path(ToWide(path)), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class PngFile : public ::testing::Test {
 protected:
  bool Write(const std::optional<ImageArea>& area = std::nullopt) const {
    return WritePng({bytes_.data(), kPitch, kWidth, kHeight}, area, path_);
  }

  /// Nothing but the file may be in its directory.
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
      names.push_back(PathToUtf8(entry.path().filename()));
    }
    return names;
  }

  const std::vector<std::uint8_t> bytes_ = Bytes();
  const TemporaryDirectory directory_;
  const std::string path_ = directory_ / "picture.png";
};

TEST_F(PngFile, HoldsTheImageWithItsAlpha) {
  const CapturedLog log;
  ASSERT_TRUE(Write()) << log.text();
  const DecodedPng png = DecodePng(path_);
  EXPECT_EQ(png.width, kWidth);
  EXPECT_EQ(png.height, kHeight);
  EXPECT_EQ(png.bytes, PartOf(bytes_, {0, 0, kWidth, kHeight}));
  EXPECT_EQ(log.text(), "");
}

TEST_F(PngFile, HoldsAnAreaOfTheImage) {
  for (const ImageArea& area : {ImageArea{1, 2, 3, 2}, ImageArea{6, 4, 1, 1}, ImageArea{0, 0, 7, 5}}) {
    ASSERT_TRUE(Write(area));
    const DecodedPng png = DecodePng(path_);
    EXPECT_EQ(png.width, area.width);
    EXPECT_EQ(png.height, area.height);
    EXPECT_EQ(png.bytes, PartOf(bytes_, area));
    EXPECT_EQ(Files(), std::vector<std::string>{"picture.png"});
  }
}

TEST_F(PngFile, IsWrittenInEveryKindOfApartmentAndChangesNone) {
  for (const DWORD model : {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED}) {
    const ComApartment com(model);
    ASSERT_EQ(com.result(), S_OK);
    EXPECT_TRUE(Write());
  }
  const testing::ApartmentState before;
  EXPECT_TRUE(Write());
  EXPECT_EQ(testing::ApartmentState(), before);
}

HRESULT STDMETHODCALLTYPE Denied(void* /*self*/) {
  return E_ACCESSDENIED;
}

/// While it lives, a method answers E_ACCESSDENIED in all objects of the same kind, whatever its parameters:
/// on this platform the caller clears them away.
class FailingMethod {
 public:
  FailingMethod(IUnknown* object, std::size_t slot)
      : method_(*reinterpret_cast<void***>(object) + slot),
        original_(Replace(reinterpret_cast<void*>(&Denied))) {}
  FailingMethod(const FailingMethod&) = delete;
  FailingMethod& operator=(const FailingMethod&) = delete;
  ~FailingMethod() { Replace(original_); }

 private:
  void* Replace(void* replacement) {
    DWORD protection = 0;
    EXPECT_TRUE(VirtualProtect(static_cast<void*>(method_), sizeof(*method_), PAGE_READWRITE, &protection));
    void* const before = std::exchange(*method_, replacement);
    VirtualProtect(static_cast<void*>(method_), sizeof(*method_), protection, &protection);
    return before;
  }

  void** const method_;
  void* const original_;
};

/// One of each kind of object that writing a PNG uses.
struct ImagingObjects {
  ComPtr<IWICImagingFactory> factory;
  ComPtr<IWICBitmap> bitmap;
  ComPtr<IWICBitmapLock> lock;
  ComPtr<IWICStream> stream;
  ComPtr<IWICBitmapEncoder> encoder;
  ComPtr<IWICBitmapFrameEncode> frame;

  explicit ImagingObjects(const std::string& scratchFile) {
    ThrowIfFailed(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                   __uuidof(IWICImagingFactory),
                                   reinterpret_cast<void**>(factory.GetAddressOf())));
    ThrowIfFailed(factory->CreateBitmap(1, 1, GUID_WICPixelFormat32bppBGRA, WICBitmapCacheOnLoad,
                                        bitmap.GetAddressOf()));
    ThrowIfFailed(bitmap->Lock(nullptr, WICBitmapLockWrite, lock.GetAddressOf()));
    ThrowIfFailed(factory->CreateStream(stream.GetAddressOf()));
    ThrowIfFailed(stream->InitializeFromFilename(ToWide(scratchFile).c_str(), GENERIC_WRITE));
    ThrowIfFailed(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.GetAddressOf()));
    ThrowIfFailed(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache));
    ThrowIfFailed(encoder->CreateNewFrame(frame.GetAddressOf(), nullptr));
  }
};

class PngFileFaults : public PngFile {
 protected:
  /// A method, by an object of its kind and its slot in the table, and the text of its failure.
  struct MethodFault {
    IUnknown* object;
    std::size_t slot;
    std::string text;
  };

  void ExpectEach(const std::vector<MethodFault>& faults,
                  const std::optional<ImageArea>& area = std::nullopt) const {
    for (const auto& [object, slot, text] : faults) {
      const FailingMethod fault(object, slot);
      ExpectFailure(text, area);
    }
  }

  /// Writing fails with this text, whether there was a file or not, and changes nothing.
  void ExpectFailure(const std::string& text, const std::optional<ImageArea>& area = std::nullopt) const {
    for (const bool existing : {false, true}) {
      if (existing) {
        std::ofstream(std::filesystem::path(ToWide(path_))) << "old";
      }
      const CapturedLog log;
      EXPECT_FALSE(Write(area)) << text;
      EXPECT_THAT(log.text(), HasSubstr("[ERROR] " + text + HResultText(E_ACCESSDENIED)));
      EXPECT_EQ(Files(), existing ? std::vector<std::string>{"picture.png"} : std::vector<std::string>{});
      EXPECT_EQ(TextOf(path_), existing ? "old" : "");
    }
    std::filesystem::remove(std::filesystem::path(ToWide(path_)));
  }

  const ComApartment com_{COINIT_APARTMENTTHREADED};
  const TemporaryDirectory scratch_;
  const ImagingObjects objects_{scratch_ / "scratch.png"};
};

TEST_F(PngFileFaults, OfTheWholeImageAreNamed) {
  ExpectEach({
      {objects_.factory.Get(), 20, "Failed to create bitmap from memory: "},
      {objects_.factory.Get(), 8, "Failed to create PNG encoder: "},
      {objects_.factory.Get(), 14, "Failed to create stream: "},
      {objects_.stream.Get(), 15, "Failed to initialize stream from filename: "},
      {objects_.encoder.Get(), 3, "Failed to initialize encoder: "},
      {objects_.encoder.Get(), 10, "Failed to create frame: "},
      {objects_.frame.Get(), 3, "Failed to initialize frame: "},
      {objects_.frame.Get(), 4, "Failed to set frame size: "},
      {objects_.frame.Get(), 6, "Failed to set pixel format: "},
      {objects_.frame.Get(), 11, "Failed to write source: "},
      {objects_.frame.Get(), 12, "Failed to commit frame: "},
      {objects_.encoder.Get(), 11, "Failed to commit encoder: "},
  });
  EXPECT_TRUE(Write());
}

TEST_F(PngFileFaults, OfAnAreaAreNamed) {
  constexpr ImageArea kArea{1, 1, 2, 2};
  ExpectEach(
      {
          {objects_.factory.Get(), 17, "Failed to create crop bitmap: "},
          {objects_.bitmap.Get(), 8, "Failed to lock bitmap: "},
          {objects_.lock.Get(), 4, "Failed to get bitmap data pointer: "},
          {objects_.lock.Get(), 5, "Failed to get bitmap data pointer: "},
      },
      kArea);
  EXPECT_TRUE(Write(kArea));
}

class RefusingClass final : public standins::ComObject<IClassFactory> {
 public:
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* /*outer*/, REFIID /*iid*/, void** object) override {
    *object = nullptr;
    return E_ACCESSDENIED;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL /*lock*/) override { return S_OK; }
};

TEST_F(PngFileFaults, OfTheFactoryAreNamed) {
  DWORD registration = 0;
  ASSERT_EQ(CoRegisterClassObject(CLSID_WICImagingFactory, standins::Make<RefusingClass>().Get(),
                                  CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration),
            S_OK);
  ExpectFailure("Failed to create WIC factory: ");
  EXPECT_EQ(CoRevokeClassObject(registration), S_OK);
  EXPECT_TRUE(Write());
}

}  // namespace
}  // namespace brisolte
