#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/logger.h"
#include "common/text.h"

namespace brisolte {

/// The line for a platform call that failed: what was tried, the system's text, and the code once more at the
/// end, where it is found below texts that break the line.
inline std::string HResultFailure(std::string_view step, std::int32_t hresult) {
  std::array<char, 8> digits{};
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<std::uint32_t>(hresult), 16);
  return std::string(step)
      .append(HResultText(hresult))
      .append(" (HRESULT: 0x")
      .append(digits.data(), end.ptr)
      .append(")");
}

/// Whether a platform call succeeded; when it did not, an ERROR line has `failure` and the HRESULT's text.
inline bool CheckResult(std::int32_t hresult, std::string_view failure) {
  if (hresult >= 0) {
    return true;
  }
  Logger::Error(std::string(failure).append(HResultText(hresult)));
  return false;
}

/// The same with the line of HResultFailure.
inline bool SucceededOrLog(std::int32_t hresult, std::string_view step) {
  if (hresult >= 0) {
    return true;
  }
  Logger::Error(HResultFailure(step, hresult));
  return false;
}

}  // namespace brisolte
