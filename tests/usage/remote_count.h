#pragma once

#include <windows.h>

#include <filesystem>
#include <optional>
#include <string>

namespace brisolte {

/// Calls a function without parameters that gives a count, in another process that has its module loaded.
///
/// @param process opened with all access
/// @param module the file name of the module, such as `d3d11.dll`; it is the one that exports `function`
/// @return nothing when no such module is loaded there, or when the call cannot be made
std::optional<DWORD> CallRemoteCount(HANDLE process, const std::wstring& module, const char* function);

}  // namespace brisolte
