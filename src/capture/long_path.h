#pragma once

#include <string>

namespace brisolte {

/// A full path of Windows in the form that file functions take at any length: behind `\\?\` when it is too
/// long for them without.
std::wstring LongPath(const std::wstring& fullPath);

}  // namespace brisolte
