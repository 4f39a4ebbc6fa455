#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace brisolte {

/// UTF-8 to UTF-16; text that is not valid UTF-8 is read in the system's ANSI code page. Text ends at its
/// first NUL. Empty when nothing can be converted, with an ERROR line. Windows only.
std::wstring ToWide(const std::string& text);

/// UTF-16 to UTF-8. Text ends at its first NUL. Empty when it cannot be converted, with an ERROR line.
/// Windows only.
std::string ToUtf8(const std::wstring& text);

/// The text of an exception as UTF-8: the C++ runtime has the system's words in the ANSI code page. UTF-8
/// stays as it is. Windows only.
std::string SystemTextToUtf8(const std::string& text);

/// The file-system path that a UTF-8 text names, in any script.
std::filesystem::path PathFromUtf8(const std::string& text);

/// A path as UTF-8 text.
std::string PathToUtf8(const std::filesystem::path& path);

/// "HRESULT: 0x" and the code, then " - " and the system's message if it has one (with the line break it ends
/// in), as UTF-8 in the user's language. `hresult` is an HRESULT, whose type only Windows headers name.
std::string HResultText(std::int32_t hresult);

}  // namespace brisolte
