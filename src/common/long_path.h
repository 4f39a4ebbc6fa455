#pragma once

#include <string>

namespace brisolte {

/// Whether a path of Windows is in the form `\\?\…`, which file functions take as it stands, at any length.
bool IsVerbatim(const std::wstring& path);

/// A full path of Windows in the form that file functions take at any length: behind `\\?\` when it is too
/// long for them without. Any other path stays as it is, also one that is too long for anything to be there.
std::wstring LongPath(const std::wstring& path);

}  // namespace brisolte
