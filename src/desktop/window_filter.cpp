#include "desktop/window_filter.h"

namespace brisolte {
namespace {

constexpr std::int64_t kLargestUnlistedSide = 50;

}  // namespace

bool IsWorthListing(const Rectangle& window) {
  return window.width() > kLargestUnlistedSide && window.height() > kLargestUnlistedSide;
}

}  // namespace brisolte
