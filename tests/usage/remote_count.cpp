#include "usage/remote_count.h"

#include <psapi.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "common/handle.h"

namespace brisolte {
namespace {

constexpr DWORD kCallLimitMs = 10'000;

struct LibraryFreer {
  using pointer = HMODULE;
  void operator()(HMODULE module) const { FreeLibrary(module); }
};
using Library = std::unique_ptr<HMODULE, LibraryFreer>;

/// The module in the other process and where its file is.
struct RemoteModule {
  std::byte* base = nullptr;
  std::filesystem::path file;
};

std::optional<RemoteModule> FindModule(HANDLE process, const std::wstring& name) {
  std::vector<HMODULE> modules(1024);
  DWORD size = 0;
  if (EnumProcessModules(process, modules.data(), static_cast<DWORD>(modules.size() * sizeof(HMODULE)),
                         &size) == FALSE) {
    return std::nullopt;
  }
  modules.resize(std::min(modules.size(), std::size_t{size} / sizeof(HMODULE)));
  for (const HMODULE module : modules) {
    std::array<wchar_t, 1024> text{};
    GetModuleFileNameExW(process, module, text.data(), static_cast<DWORD>(text.size()));
    std::filesystem::path file(text.data());
    if (lstrcmpiW(file.filename().c_str(), name.c_str()) == 0) {
      return RemoteModule{reinterpret_cast<std::byte*>(module), std::move(file)};
    }
  }
  return std::nullopt;
}

/// How far the function lies behind the start of its module, which is the same in each process.
std::optional<std::ptrdiff_t> OffsetOf(const std::filesystem::path& file, const char* function) {
  const Library library(LoadLibraryExW(file.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES));
  if (library == nullptr) {
    return std::nullopt;
  }
  const auto found = reinterpret_cast<std::uintptr_t>(GetProcAddress(library.get(), function));
  return found == 0 ? std::nullopt : std::optional(found - reinterpret_cast<std::uintptr_t>(library.get()));
}

}  // namespace

std::optional<DWORD> CallRemoteCount(HANDLE process, const std::wstring& module, const char* function) {
  const auto remote = FindModule(process, module);
  const auto offset = remote ? OffsetOf(remote->file, function) : std::nullopt;
  if (!offset) {
    return std::nullopt;
  }
  // The count comes back as the thread's exit code.
  const auto start = reinterpret_cast<LPTHREAD_START_ROUTINE>(remote->base + *offset);
  const Handle thread(CreateRemoteThread(process, nullptr, 0, start, nullptr, 0, nullptr));
  DWORD count = 0;
  if (thread == nullptr || WaitForSingleObject(thread.get(), kCallLimitMs) != WAIT_OBJECT_0 ||
      GetExitCodeThread(thread.get(), &count) == FALSE) {
    return std::nullopt;
  }
  return count;
}

}  // namespace brisolte
