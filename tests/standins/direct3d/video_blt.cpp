#include "direct3d/video_blt.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "shared/faults.h"

namespace brisolte::standins {

namespace {

/// A mapped texture, unmapped at the end.
class Mapping {
 public:
  Mapping(ID3D11DeviceContext& context, ID3D11Texture2D& texture, D3D11_MAP type)
      : context_(context), texture_(texture), result_(context.Map(&texture, 0, type, 0, &mapped_)) {}
  ~Mapping() {
    if (SUCCEEDED(result_)) {
      context_.Unmap(&texture_, 0);
    }
  }
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;
  Mapping(Mapping&&) = delete;
  Mapping& operator=(Mapping&&) = delete;

  [[nodiscard]] HRESULT result() const { return result_; }
  [[nodiscard]] std::uint8_t* data() const { return static_cast<std::uint8_t*>(mapped_.pData); }
  [[nodiscard]] std::size_t pitch() const { return mapped_.RowPitch; }

 private:
  ID3D11DeviceContext& context_;
  ID3D11Texture2D& texture_;
  D3D11_MAPPED_SUBRESOURCE mapped_{};
  HRESULT result_;
};

Rectangle From(const RECT& rect) {
  return {static_cast<int>(rect.left), static_cast<int>(rect.top), static_cast<int>(rect.right),
          static_cast<int>(rect.bottom)};
}

Rectangle Whole(const D3D11_TEXTURE2D_DESC& desc) {
  return {0, 0, static_cast<int>(desc.Width), static_cast<int>(desc.Height)};
}

bool Within(const Rectangle& inner, const Rectangle& outer) {
  return inner.width() > 0 && inner.height() > 0 && Intersection(inner, outer) == inner;
}

D3D11_TEXTURE2D_DESC DescOf(ID3D11Texture2D& texture) {
  D3D11_TEXTURE2D_DESC desc{};
  texture.GetDesc(&desc);
  return desc;
}

/// Where what goes: the state's rectangles, or the documented ones where it has none.
struct Geometry {
  Rectangle target;
  Rectangle source;
  Rectangle destination;
};

std::uint8_t Byte(float share) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(share, 0.0F, 1.0F) * 255.0F));
}

std::uint32_t BackgroundPixel(const ProcessorState& state) {
  const auto& rgba = state.background.RGBA;
  return static_cast<std::uint32_t>(Byte(rgba.A)) << 24 | static_cast<std::uint32_t>(Byte(rgba.R) << 16) |
         static_cast<std::uint32_t>(Byte(rgba.G) << 8) | Byte(rgba.B);
}

void FillYcbcr(const D3D11_VIDEO_COLOR_YCbCrA& color, const Rectangle& target, const Nv12Picture& out) {
  for (int y = target.top; y < target.bottom; ++y) {
    std::memset(out.luma + static_cast<std::size_t>(y) * out.pitch + target.left, Byte(color.Y),
                static_cast<std::size_t>(target.width()));
    std::uint8_t* chroma = out.chroma + static_cast<std::size_t>(y / 2) * out.pitch;
    for (int x = target.left; x < target.right; x += 2) {
      chroma[x] = Byte(color.Cb);
      chroma[x + 1] = Byte(color.Cr);
    }
  }
}

/// As a driver may that thinks a film is shown.
void Brighten(const Nv12Picture& out, const Rectangle& part) {
  constexpr int kMore = 24;
  static constexpr int kWhite = 235;
  for (int y = part.top; y < part.bottom; ++y) {
    std::uint8_t* row = out.luma + static_cast<std::size_t>(y) * out.pitch;
    std::transform(row + part.left, row + part.right, row + part.left,
                   [](int luma) { return static_cast<std::uint8_t>(std::min(luma + kMore, kWhite)); });
  }
}

void WriteNv12(const ProcessorState& state, const Geometry& where, const BgraPicture& in,
               const Nv12Picture& out) {
  const auto range = [](UINT nominal) {
    return nominal == D3D11_VIDEO_PROCESSOR_NOMINAL_RANGE_0_255 ? Range::kFull : Range::kLimited;
  };
  const RgbToYcbcr convert(state.outputSpace.YCbCr_Matrix == 1 ? Matrix::kBt709 : Matrix::kBt601,
                           state.streamSpace.RGB_Range == 1 ? Range::kLimited : Range::kFull,
                           range(state.outputSpace.Nominal_Range));
  Rectangle drawn = where.target;
  if (state.backgroundIsYcbcr) {
    FillYcbcr(state.background.YCbCr, where.target, out);
    drawn = Intersection(where.target, where.destination);
    drawn = {drawn.left & ~1, drawn.top & ~1, (drawn.right + 1) & ~1, (drawn.bottom + 1) & ~1};
  }
  ComposedRows rows(in, where.source, where.destination, drawn, BackgroundPixel(state));
  for (int y = drawn.top; y < drawn.bottom; y += 2) {
    const std::uint8_t* upper = rows.Row(y);
    const std::uint8_t* lower = rows.Row(y + 1);
    std::uint8_t* luma = out.luma + static_cast<std::size_t>(y) * out.pitch + drawn.left;
    convert.ConvertRows(upper, lower, drawn.width(), luma, luma + out.pitch,
                        out.chroma + static_cast<std::size_t>(y / 2) * out.pitch + drawn.left);
  }
  if (state.automatic) {
    Brighten(out, drawn);
  }
}

void WriteBgra(const ProcessorState& state, const Geometry& where, const BgraPicture& in,
               const Mapping& out) {
  ComposedRows rows(in, where.source, where.destination, where.target, BackgroundPixel(state));
  for (int y = where.target.top; y < where.target.bottom; ++y) {
    std::memcpy(out.data() + static_cast<std::size_t>(y) * out.pitch() +
                    static_cast<std::size_t>(where.target.left) * 4,
                rows.Row(y), static_cast<std::size_t>(where.target.width()) * 4);
  }
}

HRESULT Place(const ProcessorState& state, const D3D11_TEXTURE2D_DESC& output, InputView* input,
              Geometry& where) {
  where.target = state.target ? From(*state.target) : Whole(output);
  if (!Within(where.target, Whole(output))) {
    return E_INVALIDARG;
  }
  if (output.Format == DXGI_FORMAT_NV12) {
    auto& target = where.target;
    target = {target.left & ~1, target.top & ~1, (target.right + 1) & ~1, (target.bottom + 1) & ~1};
  }
  if (input == nullptr) {
    return S_OK;
  }
  const Rectangle all = Whole(DescOf(*input->texture()));
  where.source = state.source ? From(*state.source) : all;
  where.destination = state.destination ? From(*state.destination) : Whole(output);
  return Within(where.source, all) && where.destination.width() >= 0 && where.destination.height() >= 0
             ? S_OK
             : E_INVALIDARG;
}

/// Subresource of the only mip level a view shows.
UINT SubresourceOf(const InputView& view) {
  return view.desc().Texture2D.MipSlice +
         view.desc().Texture2D.ArraySlice * DescOf(*view.texture()).MipLevels;
}

HRESULT Write(ID3D11DeviceContext& context, const ProcessorState& state, const Geometry& where,
              const BgraPicture& in, ID3D11Texture2D& staging, bool whole) {
  const auto desc = DescOf(staging);
  const Mapping out(context, staging, whole ? D3D11_MAP_WRITE : D3D11_MAP_READ_WRITE);
  if (FAILED(out.result())) {
    return out.result();
  }
  if (desc.Format == DXGI_FORMAT_NV12) {
    WriteNv12(state, where, in, {out.data(), out.data() + out.pitch() * desc.Height, out.pitch()});
  } else {
    WriteBgra(state, where, in, out);
  }
  return S_OK;
}

}  // namespace

HRESULT Blit(ID3D11DeviceContext& context, VideoProcessor& processor, OutputView& output, InputView* input) {
  const NoFaults ownWork;
  const auto desc = DescOf(*output.texture());
  Geometry where;
  if (const HRESULT placed = Place(processor.state(), desc, input, where); FAILED(placed)) {
    return placed;
  }
  ComPtr<ID3D11Texture2D> staging;
  if (const HRESULT made = processor.Staging(desc, false, staging); FAILED(made)) {
    return made;
  }
  const bool whole = where.target == Whole(desc);
  if (!whole) {
    context.CopyResource(staging.Get(), output.texture());
  }
  HRESULT result = S_OK;
  if (input == nullptr) {
    result = Write(context, processor.state(), where, {}, *staging.Get(), whole);
  } else {
    ComPtr<ID3D11Texture2D> source;
    result = processor.Staging(DescOf(*input->texture()), true, source);
    if (SUCCEEDED(result)) {
      context.CopySubresourceRegion(source.Get(), 0, 0, 0, 0, input->texture(), SubresourceOf(*input),
                                    nullptr);
      const Mapping in(context, *source.Get(), D3D11_MAP_READ);
      result = FAILED(in.result())
                   ? in.result()
                   : Write(context, processor.state(), where, {in.data(), in.pitch()}, *staging.Get(), whole);
    }
  }
  if (SUCCEEDED(result)) {
    // A staging texture goes into a default one whole or not at all in NV12, which is why views of parts are
    // refused.
    context.CopyResource(output.texture(), staging.Get());
  }
  return result;
}

}  // namespace brisolte::standins
