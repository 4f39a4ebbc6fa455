#include <gtest/gtest.h>

#include <vector>

#include "shared/com_object.h"
#include "tests/service.h"

namespace brisolte::standins {

namespace {

template <typename Interface>
void** Out(ComPtr<Interface>& pointer) {
  return reinterpret_cast<void**>(pointer.ReleaseAndGetAddressOf());
}

constexpr UINT kWidth = 64;
constexpr UINT kHeight = 32;
constexpr UINT kTarget = D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE;
constexpr std::uint32_t kRed = 0xFFFF0000;
constexpr std::uint32_t kBlue = 0xFF0000FF;

struct Ycbcr {
  int y, cb, cr;
  friend bool operator==(const Ycbcr&, const Ycbcr&) = default;
  friend void PrintTo(const Ycbcr& color, std::ostream* out) {
    *out << color.y << ' ' << color.cb << ' ' << color.cr;
  }
};
constexpr Ycbcr kRed601{81, 90, 240};
constexpr Ycbcr kBlue601{41, 240, 110};
constexpr Ycbcr kRed709{63, 102, 240};
constexpr Ycbcr kBlack{16, 128, 128};

/// A video processor with a picture whose left half is red and whose right half is blue.
class VideoProcessorTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(device_.device.As(&video_), S_OK);
    ASSERT_EQ(device_.context.As(&context_), S_OK);
    ASSERT_EQ(video_->CreateVideoProcessorEnumerator(&content_, enumerator_.GetAddressOf()), S_OK);
    ASSERT_EQ(video_->CreateVideoProcessor(enumerator_.Get(), 0, processor_.GetAddressOf()), S_OK);
    context_->VideoProcessorSetStreamAutoProcessingMode(processor_.Get(), 0, FALSE);
    std::vector<std::uint32_t> pixels(kWidth * kHeight, kRed);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
      pixels[i] = i % kWidth < kWidth / 2 ? kRed : kBlue;
    }
    source_ = Texture(DXGI_FORMAT_B8G8R8A8_UNORM, kTarget, pixels.data());
    destination_ = Texture(DXGI_FORMAT_NV12, kTarget);
    ASSERT_EQ(MakeInput(source_.Get(), input_.GetAddressOf()), S_OK);
    ASSERT_EQ(MakeOutput(destination_.Get(), output_.GetAddressOf()), S_OK);
  }

  ComPtr<ID3D11Texture2D> Texture(DXGI_FORMAT format, UINT bind, const void* pixels = nullptr) const {
    const D3D11_TEXTURE2D_DESC desc{kWidth, kHeight, 1, 1, format, {1, 0}, D3D11_USAGE_DEFAULT, bind, 0, 0};
    const D3D11_SUBRESOURCE_DATA data{pixels, kWidth * 4, 0};
    ComPtr<ID3D11Texture2D> texture;
    device_.device->CreateTexture2D(&desc, pixels != nullptr ? &data : nullptr, texture.GetAddressOf());
    return texture;
  }

  HRESULT MakeInput(ID3D11Resource* resource, ID3D11VideoProcessorInputView** view) const {
    const D3D11_VIDEO_PROCESSOR_INPUT_VIEW_DESC desc{0, D3D11_VPIV_DIMENSION_TEXTURE2D, {{0, 0}}};
    return video_->CreateVideoProcessorInputView(resource, enumerator_.Get(), &desc, view);
  }

  HRESULT MakeOutput(ID3D11Resource* resource, ID3D11VideoProcessorOutputView** view) const {
    const D3D11_VIDEO_PROCESSOR_OUTPUT_VIEW_DESC desc{D3D11_VPOV_DIMENSION_TEXTURE2D, {{0}}};
    return video_->CreateVideoProcessorOutputView(resource, enumerator_.Get(), &desc, view);
  }

  HRESULT Blt() const {
    D3D11_VIDEO_PROCESSOR_STREAM stream{};
    stream.Enable = TRUE;
    stream.pInputSurface = input_.Get();
    return context_->VideoProcessorBlt(processor_.Get(), output_.Get(), 0, 1, &stream);
  }

  Ycbcr At(int x, int y) const {
    const auto picture = Read(device_, destination_.Get());
    const auto luma = static_cast<std::size_t>(y) * picture.pitch + static_cast<std::size_t>(x);
    const auto chroma =
        (kHeight + static_cast<std::size_t>(y) / 2) * picture.pitch + static_cast<std::size_t>(x & ~1);
    return {picture.bytes[luma], picture.bytes[chroma], picture.bytes[chroma + 1]};
  }

  const D3D11_VIDEO_PROCESSOR_CONTENT_DESC content_{
      D3D11_VIDEO_FRAME_FORMAT_PROGRESSIVE, {30, 1}, kWidth, kHeight, {30, 1}, kWidth, kHeight,
      D3D11_VIDEO_USAGE_PLAYBACK_NORMAL};
  Device device_ = MakeDevice();
  ComPtr<ID3D11VideoDevice> video_;
  ComPtr<ID3D11VideoContext> context_;
  ComPtr<ID3D11VideoProcessorEnumerator> enumerator_;
  ComPtr<ID3D11VideoProcessor> processor_;
  ComPtr<ID3D11Texture2D> source_;
  ComPtr<ID3D11Texture2D> destination_;
  ComPtr<ID3D11VideoProcessorInputView> input_;
  ComPtr<ID3D11VideoProcessorOutputView> output_;
};

TEST_F(VideoProcessorTest, ConvertsWithBt601UnlessToldOtherwise) {
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_EQ(At(0, 0), kRed601);
  EXPECT_EQ(At(31, 31), kRed601);
  EXPECT_EQ(At(32, 0), kBlue601);
  EXPECT_EQ(At(63, 31), kBlue601);
}

TEST_F(VideoProcessorTest, ConvertsWithBt709AndBothRanges) {
  D3D11_VIDEO_PROCESSOR_COLOR_SPACE space{};
  space.YCbCr_Matrix = 1;
  space.Nominal_Range = D3D11_VIDEO_PROCESSOR_NOMINAL_RANGE_16_235;
  context_->VideoProcessorSetOutputColorSpace(processor_.Get(), &space);
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_EQ(At(0, 0), kRed709);
  space.Nominal_Range = D3D11_VIDEO_PROCESSOR_NOMINAL_RANGE_0_255;
  context_->VideoProcessorSetOutputColorSpace(processor_.Get(), &space);
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_EQ(At(0, 0).y, 54);
}

TEST_F(VideoProcessorTest, DoesMoreThanItWasAskedUnlessThatIsSwitchedOff) {
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_EQ(At(0, 0), kRed601);
  context_->VideoProcessorSetStreamAutoProcessingMode(processor_.Get(), 0, TRUE);
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_NE(At(0, 0), kRed601);
}

TEST_F(VideoProcessorTest, TakesAPieceOfTheSource) {
  const RECT right{32, 0, 64, 32};
  context_->VideoProcessorSetStreamSourceRect(processor_.Get(), 0, TRUE, &right);
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_EQ(At(0, 0), kBlue601);
  EXPECT_EQ(At(63, 31), kBlue601);
  context_->VideoProcessorSetStreamSourceRect(processor_.Get(), 0, FALSE, nullptr);
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_EQ(At(0, 0), kRed601);
}

TEST_F(VideoProcessorTest, FillsTheRestOfTheTargetWithTheBackground) {
  const RECT middle{16, 8, 48, 24};
  context_->VideoProcessorSetStreamDestRect(processor_.Get(), 0, TRUE, &middle);
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_EQ(At(15, 16), kBlack);
  EXPECT_EQ(At(16, 7), kBlack);
  EXPECT_EQ(At(16, 8), kRed601);
  EXPECT_EQ(At(47, 23), kBlue601);
  EXPECT_EQ(At(48, 16), kBlack);

  D3D11_VIDEO_COLOR background{};
  background.YCbCr = {100 / 255.0F, 110 / 255.0F, 120 / 255.0F, 1.0F};
  context_->VideoProcessorSetOutputBackgroundColor(processor_.Get(), TRUE, &background);
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_EQ(At(0, 0), (Ycbcr{100, 110, 120}));
  EXPECT_EQ(At(16, 8), kRed601);
}

TEST_F(VideoProcessorTest, LeavesAloneWhatLiesOutsideTheTarget) {
  ASSERT_EQ(Blt(), S_OK);
  const RECT left{0, 0, 32, 32};
  const RECT right{32, 0, 64, 32};
  context_->VideoProcessorSetOutputTargetRect(processor_.Get(), TRUE, &left);
  context_->VideoProcessorSetStreamSourceRect(processor_.Get(), 0, TRUE, &right);
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_EQ(At(0, 0), kBlue601);
  EXPECT_EQ(At(40, 0), kBlue601);
  context_->VideoProcessorSetOutputTargetRect(processor_.Get(), TRUE, &right);
  ASSERT_EQ(context_->VideoProcessorBlt(processor_.Get(), output_.Get(), 0, 0, nullptr), S_OK);
  EXPECT_EQ(At(0, 0), kBlue601);
  EXPECT_EQ(At(40, 0), kBlack) << "no stream leaves the background";
}

TEST_F(VideoProcessorTest, RefusesWrongRectangles) {
  const RECT beyond{0, 0, 65, 32};
  const RECT empty{10, 10, 10, 20};
  for (const RECT& wrong : {beyond, empty}) {
    context_->VideoProcessorSetStreamSourceRect(processor_.Get(), 0, TRUE, &wrong);
    EXPECT_EQ(Blt(), E_INVALIDARG);
  }
  context_->VideoProcessorSetStreamSourceRect(processor_.Get(), 0, FALSE, nullptr);
  context_->VideoProcessorSetOutputTargetRect(processor_.Get(), TRUE, &beyond);
  EXPECT_EQ(Blt(), E_INVALIDARG);
}

TEST_F(VideoProcessorTest, RefusesContentWithoutSense) {
  auto content = content_;
  content.InputWidth = 0;
  EXPECT_EQ(video_->CreateVideoProcessorEnumerator(&content, enumerator_.ReleaseAndGetAddressOf()),
            E_INVALIDARG);
  content = content_;
  content.OutputFrameRate.Denominator = 0;
  EXPECT_EQ(video_->CreateVideoProcessorEnumerator(&content, enumerator_.ReleaseAndGetAddressOf()),
            E_INVALIDARG);
  EXPECT_EQ(video_->CreateVideoProcessorEnumerator(nullptr, enumerator_.ReleaseAndGetAddressOf()),
            E_INVALIDARG);
  EXPECT_EQ(video_->CreateVideoProcessor(nullptr, 0, processor_.ReleaseAndGetAddressOf()), E_INVALIDARG);
}

TEST_F(VideoProcessorTest, RefusesViewsOfWhatItCannotUse) {
  ComPtr<ID3D11VideoProcessorInputView> input;
  ComPtr<ID3D11VideoProcessorOutputView> output;
  const auto other = MakeDevice();
  const D3D11_TEXTURE2D_DESC desc{
      kWidth, kHeight, 1, 1, DXGI_FORMAT_B8G8R8A8_UNORM, {1, 0}, D3D11_USAGE_DEFAULT, kTarget, 0, 0};
  ComPtr<ID3D11Texture2D> foreign;
  ASSERT_EQ(other.device->CreateTexture2D(&desc, nullptr, foreign.GetAddressOf()), S_OK);

  EXPECT_EQ(MakeInput(nullptr, input.GetAddressOf()), E_INVALIDARG);
  EXPECT_EQ(MakeInput(foreign.Get(), input.GetAddressOf()), E_INVALIDARG);
  EXPECT_EQ(MakeInput(destination_.Get(), input.GetAddressOf()), E_INVALIDARG) << "NV12 is no input";
  EXPECT_EQ(MakeInput(source_.Get(), nullptr), S_FALSE) << "a question without a place for the view";
  EXPECT_EQ(MakeOutput(nullptr, output.GetAddressOf()), E_INVALIDARG);
  EXPECT_EQ(MakeOutput(foreign.Get(), output.GetAddressOf()), E_INVALIDARG);
  EXPECT_EQ(MakeOutput(Texture(DXGI_FORMAT_NV12, D3D11_BIND_SHADER_RESOURCE).Get(), output.GetAddressOf()),
            E_INVALIDARG)
      << "an output is a render target";
}

TEST_F(VideoProcessorTest, RefusesABltWithoutWhatItNeeds) {
  D3D11_VIDEO_PROCESSOR_STREAM stream{};
  stream.Enable = TRUE;
  EXPECT_EQ(context_->VideoProcessorBlt(processor_.Get(), output_.Get(), 0, 1, &stream), E_INVALIDARG);
  EXPECT_EQ(context_->VideoProcessorBlt(processor_.Get(), output_.Get(), 0, 1, nullptr), E_INVALIDARG);
  stream.pInputSurface = input_.Get();
  EXPECT_EQ(context_->VideoProcessorBlt(nullptr, output_.Get(), 0, 1, &stream), E_INVALIDARG);
  EXPECT_EQ(context_->VideoProcessorBlt(processor_.Get(), nullptr, 0, 1, &stream), E_INVALIDARG);
}

TEST_F(VideoProcessorTest, ConvertsToBgraAsWell) {
  const auto bgra = Texture(DXGI_FORMAT_B8G8R8A8_UNORM, kTarget);
  ASSERT_EQ(MakeOutput(bgra.Get(), output_.ReleaseAndGetAddressOf()), S_OK);
  ASSERT_EQ(Blt(), S_OK);
  EXPECT_EQ(Read(device_, bgra.Get()).Rgb(0, 0), kRed & 0xFFFFFF);
  EXPECT_EQ(Read(device_, bgra.Get()).Rgb(63, 31), kBlue & 0xFFFFFF);
}

TEST_F(VideoProcessorTest, FailsWhatItIsToldToFail) {
  ComPtr<ID3D11VideoProcessorInputView> input;
  ComPtr<ID3D11VideoProcessorOutputView> output;
  const Faults faults(
      "CreateVideoProcessorEnumerator 0x80004005\nCreateVideoProcessor 0x80004005\nCreateInputView "
      "0x80004005\n"
      "CreateOutputView 0x80004005\nVideoProcessorBlt 0x80004005\n");
  EXPECT_EQ(video_->CreateVideoProcessor(enumerator_.Get(), 0, ComPtr<ID3D11VideoProcessor>().GetAddressOf()),
            E_FAIL);
  EXPECT_EQ(MakeInput(source_.Get(), input.GetAddressOf()), E_FAIL);
  EXPECT_EQ(MakeOutput(destination_.Get(), output.GetAddressOf()), E_FAIL);
  EXPECT_EQ(Blt(), E_FAIL);
  EXPECT_EQ(video_->CreateVideoProcessorEnumerator(&content_, enumerator_.ReleaseAndGetAddressOf()), E_FAIL);
}

}  // namespace

}  // namespace brisolte::standins
