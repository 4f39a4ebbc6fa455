#pragma once

#include <windows.h>
// After windows.h, which declares what it needs.
#include <shellapi.h>

#include <memory>
#include <string>
#include <vector>

namespace brisolte::testing {

/// This program's arguments, without its name, in any Unicode text.
inline std::vector<std::wstring> CommandLineArguments() {
  struct LocalFreeDeleter {
    void operator()(wchar_t** list) const { LocalFree(static_cast<HLOCAL>(list)); }
  };
  int count = 0;
  const std::unique_ptr<wchar_t*, LocalFreeDeleter> list(CommandLineToArgvW(GetCommandLineW(), &count));
  return list ? std::vector<std::wstring>(list.get() + 1, list.get() + count) : std::vector<std::wstring>();
}

}  // namespace brisolte::testing
