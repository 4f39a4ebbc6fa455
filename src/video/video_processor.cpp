#include "video/video_processor.h"

#include <exception>
#include <string>

#include "common/given_object.h"
#include "common/hresult_error.h"
#include "common/logger.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

constexpr UINT kStream = 0;

D3D11_VIDEO_PROCESSOR_COLOR_SPACE FullRangeRgb() {
  D3D11_VIDEO_PROCESSOR_COLOR_SPACE space{};
  space.RGB_Range = 0;
  space.Nominal_Range = D3D11_VIDEO_PROCESSOR_NOMINAL_RANGE_0_255;
  return space;
}

D3D11_VIDEO_PROCESSOR_COLOR_SPACE LimitedRangeBt709() {
  D3D11_VIDEO_PROCESSOR_COLOR_SPACE space{};
  space.YCbCr_Matrix = 1;
  space.Nominal_Range = D3D11_VIDEO_PROCESSOR_NOMINAL_RANGE_16_235;
  return space;
}

}  // namespace

HRESULT VideoProcessor::CreateEnumerator(const CaptureGeometry& geometry, std::int32_t frameRate) {
  frame_ = geometry.frame;
  const DXGI_RATIONAL rate{static_cast<UINT>(frameRate), 1};
  D3D11_VIDEO_PROCESSOR_CONTENT_DESC content{};
  content.InputFrameFormat = D3D11_VIDEO_FRAME_FORMAT_PROGRESSIVE;
  content.InputFrameRate = rate;
  content.InputWidth = static_cast<UINT>(geometry.pool.width);
  content.InputHeight = static_cast<UINT>(geometry.pool.height);
  content.OutputFrameRate = rate;
  content.OutputWidth = static_cast<UINT>(geometry.frame.width);
  content.OutputHeight = static_cast<UINT>(geometry.frame.height);
  content.Usage = D3D11_VIDEO_USAGE_PLAYBACK_NORMAL;
  return Given(
      graphics_.videoDevice->CreateVideoProcessorEnumerator(&content, enumerator_.ReleaseAndGetAddressOf()),
      enumerator_);
}

HRESULT VideoProcessor::CreateProcessor() {
  const HRESULT result = Given(
      graphics_.videoDevice->CreateVideoProcessor(enumerator_.Get(), 0, processor_.ReleaseAndGetAddressOf()),
      processor_);
  if (SUCCEEDED(result)) {
    Configure();
  }
  return result;
}

void VideoProcessor::Configure() {
  ID3D11VideoContext& context = *graphics_.videoContext.Get();
  ID3D11VideoProcessor* processor = processor_.Get();
  const RECT whole{0, 0, frame_.width, frame_.height};
  const D3D11_VIDEO_PROCESSOR_COLOR_SPACE input = FullRangeRgb();
  const D3D11_VIDEO_PROCESSOR_COLOR_SPACE output = LimitedRangeBt709();
  D3D11_VIDEO_COLOR black{};
  black.RGBA = {0.0F, 0.0F, 0.0F, 1.0F};
  context.VideoProcessorSetOutputTargetRect(processor, TRUE, &whole);
  context.VideoProcessorSetOutputBackgroundColor(processor, FALSE, &black);
  context.VideoProcessorSetOutputColorSpace(processor, &output);
  context.VideoProcessorSetStreamFrameFormat(processor, kStream, D3D11_VIDEO_FRAME_FORMAT_PROGRESSIVE);
  context.VideoProcessorSetStreamColorSpace(processor, kStream, &input);
  context.VideoProcessorSetStreamDestRect(processor, kStream, TRUE, &whole);
  // Left on, drivers sharpen and smooth as they would for films.
  context.VideoProcessorSetStreamAutoProcessingMode(processor, kStream, FALSE);
}

bool VideoProcessor::ProcessVideoFormat(ID3D11Texture2D* source, const RECT& part,
                                        ID3D11Texture2D* destination) {
  try {
    Blit(source, part, destination);
    return true;
  } catch (const std::exception& error) {
    Logger::Error(std::string("Exception in ProcessVideoFormat: ") + error.what());
  } catch (...) {
    Logger::Error("Unknown exception in ProcessVideoFormat");
  }
  return false;
}

void VideoProcessor::Blit(ID3D11Texture2D* source, const RECT& part, ID3D11Texture2D* destination) {
  D3D11_VIDEO_PROCESSOR_INPUT_VIEW_DESC inputDescription{};
  inputDescription.ViewDimension = D3D11_VPIV_DIMENSION_TEXTURE2D;
  ComPtr<ID3D11VideoProcessorInputView> input;
  ThrowIfFailed(Given(graphics_.videoDevice->CreateVideoProcessorInputView(
                          source, enumerator_.Get(), &inputDescription, input.GetAddressOf()),
                      input));
  D3D11_VIDEO_PROCESSOR_OUTPUT_VIEW_DESC outputDescription{};
  outputDescription.ViewDimension = D3D11_VPOV_DIMENSION_TEXTURE2D;
  ComPtr<ID3D11VideoProcessorOutputView> output;
  ThrowIfFailed(Given(graphics_.videoDevice->CreateVideoProcessorOutputView(
                          destination, enumerator_.Get(), &outputDescription, output.GetAddressOf()),
                      output));
  graphics_.videoContext->VideoProcessorSetStreamSourceRect(processor_.Get(), kStream, TRUE, &part);
  D3D11_VIDEO_PROCESSOR_STREAM stream{};
  stream.Enable = TRUE;
  stream.pInputSurface = input.Get();
  ThrowIfFailed(graphics_.videoContext->VideoProcessorBlt(processor_.Get(), output.Get(), 0, 1, &stream));
}

}  // namespace brisolte
