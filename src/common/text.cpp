#include "common/text.h"

#include <array>
#include <charconv>

#ifdef _WIN32
#include <windows.h>

#include "common/logger.h"
#include "common/system_message.h"
#endif

namespace brisolte {
namespace {

#ifdef _WIN32

/// Converts NUL-terminated text, into nothing when `capacity` is 0. Gives the length with the NUL, or 0.
int ConvertToWide(const std::string& text, wchar_t* wide, int capacity) {
  const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.c_str(), -1, wide, capacity);
  return length != 0 ? length : MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, wide, capacity);
}

int ConvertToUtf8(const std::wstring& text, char* bytes, int capacity) {
  return WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, bytes, capacity, nullptr, nullptr);
}

#else

std::string SystemMessage(std::int32_t /*hresult*/) {
  return {};
}

#endif

}  // namespace

#ifdef _WIN32

std::wstring ToWide(const std::string& text) {
  if (text.empty()) {
    return {};
  }
  const int length = ConvertToWide(text, nullptr, 0);
  if (length == 0) {
    Logger::Error("Failed to convert string to wide string");
    return {};
  }
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  if (ConvertToWide(text, wide.data(), length) == 0) {
    Logger::Error("Failed to write wide string");
    return {};
  }
  wide.pop_back();
  return wide;
}

std::string ToUtf8(const std::wstring& text) {
  if (text.empty()) {
    return {};
  }
  const int length = ConvertToUtf8(text, nullptr, 0);
  if (length == 0) {
    Logger::Error("Failed to calculate UTF-8 buffer size");
    return {};
  }
  std::string bytes(static_cast<std::size_t>(length), '\0');
  if (ConvertToUtf8(text, bytes.data(), length) == 0) {
    Logger::Error("Failed to write UTF-8 string");
    return {};
  }
  bytes.pop_back();
  return bytes;
}

std::string SystemTextToUtf8(const std::string& text) {
  return ToUtf8(ToWide(text));
}

std::filesystem::path PathFromUtf8(const std::string& text) {
  return ToWide(text);
}
std::string PathToUtf8(const std::filesystem::path& path) {
  return ToUtf8(path.wstring());
}

#else

// The text ends at its first NUL here too, as file-system calls read it.
std::filesystem::path PathFromUtf8(const std::string& text) {
  return text.c_str();
}
std::string PathToUtf8(const std::filesystem::path& path) {
  return path.string();
}

#endif

std::string HResultText(std::int32_t hresult) {
  std::array<char, 8> digits{};
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<std::uint32_t>(hresult), 16);
  std::string text = "HRESULT: 0x";
  text.append(digits.data(), end.ptr);
  if (const std::string message = SystemMessage(hresult); !message.empty()) {
    text += " - " + message;
  }
  return text;
}

}  // namespace brisolte
