#include "shared/path_limit.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <vector>

namespace brisolte::standins {
namespace {

constexpr DWORD kLongestFile = 259;
constexpr DWORD kLongestDirectory = 247;

bool IsTooLong(const wchar_t* path, DWORD longest) {
  if (path == nullptr || std::wstring_view(path).starts_with(LR"(\\?\)")) {
    return false;
  }
  // The needed size counts the NUL.
  return GetFullPathNameW(path, 0, nullptr, nullptr) > longest + 1;
}

template <typename Result>
Result Refuse(DWORD error, Result result) {
  SetLastError(error);
  return result;
}

HANDLE WINAPI LimitedCreateFile(const wchar_t* path, DWORD access, DWORD sharing,
                                SECURITY_ATTRIBUTES* security, DWORD disposition, DWORD flags, HANDLE model) {
  return IsTooLong(path, kLongestFile)
             ? Refuse(ERROR_PATH_NOT_FOUND, INVALID_HANDLE_VALUE)
             : CreateFileW(path, access, sharing, security, disposition, flags, model);
}

DWORD WINAPI LimitedGetFileAttributes(const wchar_t* path) {
  return IsTooLong(path, kLongestFile) ? Refuse(ERROR_PATH_NOT_FOUND, INVALID_FILE_ATTRIBUTES)
                                       : GetFileAttributesW(path);
}

BOOL WINAPI LimitedGetFileAttributesEx(const wchar_t* path, GET_FILEEX_INFO_LEVELS level, void* information) {
  return IsTooLong(path, kLongestFile) ? Refuse(ERROR_PATH_NOT_FOUND, FALSE)
                                       : GetFileAttributesExW(path, level, information);
}

BOOL WINAPI LimitedCreateDirectory(const wchar_t* path, SECURITY_ATTRIBUTES* security) {
  return IsTooLong(path, kLongestDirectory) ? Refuse(ERROR_FILENAME_EXCED_RANGE, FALSE)
                                            : CreateDirectoryW(path, security);
}

BOOL WINAPI LimitedDeleteFile(const wchar_t* path) {
  return IsTooLong(path, kLongestFile) ? Refuse(ERROR_PATH_NOT_FOUND, FALSE) : DeleteFileW(path);
}

BOOL WINAPI LimitedMoveFileEx(const wchar_t* from, const wchar_t* to, DWORD flags) {
  return IsTooLong(from, kLongestFile) || IsTooLong(to, kLongestFile) ? Refuse(ERROR_PATH_NOT_FOUND, FALSE)
                                                                      : MoveFileExW(from, to, flags);
}

/// A function and what stands in for it.
struct Replacement {
  std::uintptr_t original;
  std::uintptr_t limited;
};

template <typename Function>
Replacement Replace(const char* name, Function* limited) {
  return {reinterpret_cast<std::uintptr_t>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name)),
          reinterpret_cast<std::uintptr_t>(limited)};
}

void Exchange(IMAGE_THUNK_DATA& thunk, const std::vector<Replacement>& replacements) {
  for (const Replacement& each : replacements) {
    DWORD protection = 0;
    if (thunk.u1.Function == each.original &&
        VirtualProtect(&thunk, sizeof(thunk), PAGE_READWRITE, &protection) != FALSE) {
      thunk.u1.Function = each.limited;
      VirtualProtect(&thunk, sizeof(thunk), protection, &protection);
      return;
    }
  }
}

void LimitModule(std::byte* base, const std::vector<Replacement>& replacements) {
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  if (imports.VirtualAddress == 0) {
    return;
  }
  for (const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
       library->Name != 0; ++library) {
    for (auto* thunk = reinterpret_cast<IMAGE_THUNK_DATA*>(base + library->FirstThunk);
         thunk->u1.Function != 0; ++thunk) {
      Exchange(*thunk, replacements);
    }
  }
}

/// This DLL calls the originals, and the host and the system's core are not what is tested.
bool IsLimited(HMODULE module) {
  HMODULE own = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<const wchar_t*>(&LimitPaths), &own);
  const std::array exempt = {own, GetModuleHandleW(nullptr), GetModuleHandleW(L"kernel32.dll"),
                             GetModuleHandleW(L"kernelbase.dll"), GetModuleHandleW(L"ntdll.dll")};
  return std::ranges::find(exempt, module) == exempt.end();
}

void LimitLoadedModules() {
  const std::vector<Replacement> replacements = {
      Replace("CreateFileW", LimitedCreateFile),
      Replace("GetFileAttributesW", LimitedGetFileAttributes),
      Replace("GetFileAttributesExW", LimitedGetFileAttributesEx),
      Replace("CreateDirectoryW", LimitedCreateDirectory),
      Replace("DeleteFileW", LimitedDeleteFile),
      Replace("MoveFileExW", LimitedMoveFileEx),
  };
  std::array<HMODULE, 512> modules{};
  DWORD size = 0;
  EnumProcessModules(GetCurrentProcess(), modules.data(), sizeof(modules), &size);
  const std::size_t count = std::min(modules.size(), size / sizeof(HMODULE));
  for (std::size_t i = 0; i < count; ++i) {
    if (IsLimited(modules[i])) {
      LimitModule(reinterpret_cast<std::byte*>(modules[i]), replacements);
    }
  }
}

}  // namespace

void LimitPaths() {
  static std::once_flag once;
  std::call_once(once, LimitLoadedModules);
}

}  // namespace brisolte::standins
