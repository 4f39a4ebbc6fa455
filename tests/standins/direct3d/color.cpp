#include "direct3d/color.h"

#include <emmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace brisolte::standins {

namespace {

constexpr double kOne = 32768.0;
constexpr int kLumaShift = 15;
// Four pixels are summed for chroma, so there are two more bits behind the point.
constexpr int kChromaShift = 17;

std::uint8_t Byte(int value) {
  return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

int Fixed(double value) {
  return static_cast<int>(std::lround(value * kOne));
}

template <typename Weights>
std::uint8_t Mix(const Weights& by, int blue, int green, int red, int shift) {
  return Byte((by.blue * blue + by.green * green + by.red * red + by.bias) >> shift);
}

/// Four BGRA pixels as 16-bit numbers, two a register.
struct FourPixels {
  explicit FourPixels(const std::uint8_t* bgra) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bgra));
    left = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
    right = _mm_unpackhi_epi8(bytes, _mm_setzero_si128());
  }

  __m128i left{};
  __m128i right{};
};

/// Eight pixels of a row.
struct Pixels {
  explicit Pixels(const std::uint8_t* bgra) : first(bgra), second(bgra + 16) {}

  FourPixels first;
  FourPixels second;
};

/// One set of weights, applied to many pixels.
class Eight {
 public:
  template <typename Weights>
  explicit Eight(const Weights& by)
      : factors_(_mm_setr_epi16(static_cast<short>(by.blue), static_cast<short>(by.green),
                                static_cast<short>(by.red), 0, static_cast<short>(by.blue),
                                static_cast<short>(by.green), static_cast<short>(by.red), 0)),
        bias_(_mm_set1_epi32(by.bias)) {}

  /// The weighted sums of the four pixels in two registers.
  [[nodiscard]] __m128i Sums(__m128i first, __m128i second, int shift) const {
    const __m128 one = _mm_castsi128_ps(_mm_madd_epi16(first, factors_));
    const __m128 two = _mm_castsi128_ps(_mm_madd_epi16(second, factors_));
    const __m128i blueGreen = _mm_castps_si128(_mm_shuffle_ps(one, two, _MM_SHUFFLE(2, 0, 2, 0)));
    const __m128i red = _mm_castps_si128(_mm_shuffle_ps(one, two, _MM_SHUFFLE(3, 1, 3, 1)));
    return _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(blueGreen, red), bias_), shift);
  }

  void StoreLuma(const Pixels& in, std::uint8_t* luma) const {
    const __m128i words = _mm_packs_epi32(Sums(in.first.left, in.first.right, kLumaShift),
                                          Sums(in.second.left, in.second.right, kLumaShift));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(luma), _mm_packus_epi16(words, words));
  }

 private:
  __m128i factors_;
  __m128i bias_;
};

/// The sum of a block of four pixels, in the lower half.
__m128i BlockSum(__m128i above, __m128i below) {
  const __m128i columns = _mm_add_epi16(above, below);
  return _mm_add_epi16(columns, _mm_srli_si128(columns, 8));
}

/// The sums of two blocks of four pixels beside each other.
__m128i BlockSums(const FourPixels& above, const FourPixels& below) {
  return _mm_unpacklo_epi64(BlockSum(above.left, below.left), BlockSum(above.right, below.right));
}

void StoreChroma(const Eight& cb, const Eight& cr, const Pixels& above, const Pixels& below,
                 std::uint8_t* chroma) {
  const __m128i first = BlockSums(above.first, below.first);
  const __m128i second = BlockSums(above.second, below.second);
  const __m128i blue = cb.Sums(first, second, kChromaShift);
  const __m128i red = cr.Sums(first, second, kChromaShift);
  const __m128i words = _mm_packs_epi32(_mm_unpacklo_epi32(blue, red), _mm_unpackhi_epi32(blue, red));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(chroma), _mm_packus_epi16(words, words));
}

}  // namespace

Rectangle Intersection(const Rectangle& one, const Rectangle& other) {
  Rectangle shared{std::max(one.left, other.left), std::max(one.top, other.top),
                   std::min(one.right, other.right), std::min(one.bottom, other.bottom)};
  shared.right = std::max(shared.left, shared.right);
  shared.bottom = std::max(shared.top, shared.bottom);
  return shared;
}

RgbToYcbcr::RgbToYcbcr(Matrix matrix, Range input, Range output) {
  const double kr = matrix == Matrix::kBt709 ? 0.2126 : 0.299;
  const double kb = matrix == Matrix::kBt709 ? 0.0722 : 0.114;
  const double spread = input == Range::kLimited ? 255.0 / 219.0 : 1.0;
  const double black = input == Range::kLimited ? 16.0 : 0.0;
  const double luma = (output == Range::kLimited ? 219.0 / 255.0 : 1.0) * spread;
  const double chroma = (output == Range::kLimited ? 224.0 / 255.0 : 1.0) * spread;

  const auto weights = [](double red, double blue, double sum, double bias) {
    const int all = Fixed(sum);
    return Weights{Fixed(red), all - Fixed(red) - Fixed(blue), Fixed(blue), Fixed(bias + 0.5)};
  };
  const double zero = (output == Range::kLimited ? 16.0 : 0.0) - luma * black;
  y_ = weights(kr * luma, kb * luma, luma, zero);
  // Of four pixels together, hence four times what is added.
  cb_ = weights(-0.5 * kr / (1.0 - kb) * chroma, 0.5 * chroma, 0.0, 4 * 128.0 + 1.5);
  cr_ = weights(0.5 * chroma, -0.5 * kb / (1.0 - kr) * chroma, 0.0, 4 * 128.0 + 1.5);
}

// A frame has to be converted while an encoder needs the same two cores; eight pixels at a time take a
// quarter of the time that one at a time takes.
void RgbToYcbcr::ConvertRows(const std::uint8_t* upper, const std::uint8_t* lower, int pixels,
                             std::uint8_t* upperLuma, std::uint8_t* lowerLuma, std::uint8_t* chroma) const {
  const Eight y(y_);
  const Eight cb(cb_);
  const Eight cr(cr_);
  int x = 0;
  for (; x + 8 <= pixels; x += 8) {
    const Pixels above(upper + static_cast<std::ptrdiff_t>(x) * 4);
    const Pixels below(lower + static_cast<std::ptrdiff_t>(x) * 4);
    y.StoreLuma(above, upperLuma + x);
    y.StoreLuma(below, lowerLuma + x);
    StoreChroma(cb, cr, above, below, chroma + x);
  }
  for (; x < pixels; x += 2) {
    const std::uint8_t* a = upper + static_cast<std::ptrdiff_t>(x) * 4;
    const std::uint8_t* b = lower + static_cast<std::ptrdiff_t>(x) * 4;
    upperLuma[x] = Mix(y_, a[0], a[1], a[2], kLumaShift);
    upperLuma[x + 1] = Mix(y_, a[4], a[5], a[6], kLumaShift);
    lowerLuma[x] = Mix(y_, b[0], b[1], b[2], kLumaShift);
    lowerLuma[x + 1] = Mix(y_, b[4], b[5], b[6], kLumaShift);
    const int blue = a[0] + a[4] + b[0] + b[4];
    const int green = a[1] + a[5] + b[1] + b[5];
    const int red = a[2] + a[6] + b[2] + b[6];
    chroma[x] = Mix(cb_, blue, green, red, kChromaShift);
    chroma[x + 1] = Mix(cr_, blue, green, red, kChromaShift);
  }
}

ComposedRows::ComposedRows(const BgraPicture& picture, const Rectangle& source, const Rectangle& destination,
                           const Rectangle& target, std::uint32_t background)
    : picture_(picture),
      source_(source),
      destination_(destination),
      target_(target),
      background_(background) {
  for (auto& row : rows_) {
    row.resize(static_cast<std::size_t>(target.width()));
  }
}

const std::uint8_t* ComposedRows::Row(int y) {
  const bool within = y >= destination_.top && y < destination_.bottom && destination_.width() > 0;
  const std::uint8_t* from = within ? SourceRow(y) : nullptr;
  const bool whole = destination_.left == target_.left && destination_.right == target_.right;
  if (within && whole && source_.width() == destination_.width()) {
    return from + static_cast<std::ptrdiff_t>(source_.left) * 4;
  }
  auto& row = rows_[next_];
  next_ = 1 - next_;
  std::ranges::fill(row, background_);
  if (within) {
    FillPiece(from, row.data());
  }
  return reinterpret_cast<const std::uint8_t*>(row.data());
}

const std::uint8_t* ComposedRows::SourceRow(int y) const {
  const std::int64_t step = y - destination_.top;
  const std::int64_t row = source_.top + step * source_.height() / destination_.height();
  return picture_.pixels + static_cast<std::size_t>(row) * picture_.pitch;
}

void ComposedRows::FillPiece(const std::uint8_t* from, std::uint32_t* row) const {
  const Rectangle shown = Intersection(destination_, target_);
  for (int x = shown.left; x < shown.right; ++x) {
    const std::int64_t step = x - destination_.left;
    const std::int64_t column = source_.left + step * source_.width() / destination_.width();
    std::memcpy(row + (x - target_.left), from + column * 4, 4);
  }
}

}  // namespace brisolte::standins
