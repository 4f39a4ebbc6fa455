#pragma once

#include <cstdint>
#include <stdexcept>

#include "common/text.h"

namespace brisolte {

/// A platform call that failed where no result can say so; its text is the HRESULT's.
class HResultError : public std::runtime_error {
 public:
  explicit HResultError(std::int32_t hresult) : std::runtime_error(HResultText(hresult)), hresult_(hresult) {}

  std::int32_t hresult() const { return hresult_; }

 private:
  std::int32_t hresult_;
};

/// Raises an HResultError for a failing HRESULT.
inline void ThrowIfFailed(std::int32_t hresult) {
  if (hresult < 0) {
    throw HResultError(hresult);
  }
}

}  // namespace brisolte
