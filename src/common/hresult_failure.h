#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/logger.h"
#include "common/text.h"

namespace brisolte {

/// A number as codes are written: "0x" and lower-case hexadecimal digits, without leading zeros.
inline std::string HexadecimalCode(std::uint32_t number) {
  std::array<char, 8> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16);
  return std::string("0x").append(digits.data(), end.ptr);
}

/// The line for a platform call that failed: what was tried, the system's text, and the code once more at the
/// end, where it is found below texts that break the line.
inline std::string HResultFailure(std::string_view step, std::int32_t hresult) {
  return std::string(step)
      .append(HResultText(hresult))
      .append(" (HRESULT: ")
      .append(HexadecimalCode(static_cast<std::uint32_t>(hresult)))
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
