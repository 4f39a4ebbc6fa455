#include "usage/gui_objects.h"

#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace brisolte {
namespace {

// The table of GDI objects in the process's own memory, as Wine has it: GetGuiResources gives 0 there.
constexpr std::ptrdiff_t kTableInPeb = 0xF8;
constexpr std::size_t kEntries = 0x4000;

struct GdiEntry {
  std::uint64_t object;
  std::uint32_t owner;
  std::uint16_t unique;
  std::uint8_t type;
  std::uint8_t flags;
  std::uint64_t userPointer;
};
static_assert(sizeof(GdiEntry) == 24);

/// `from` lies in the other process.
bool Read(HANDLE process, const void* from, void* to, std::size_t size) {
  SIZE_T read = 0;
  return ReadProcessMemory(process, from, to, size, &read) != FALSE && read == size;
}

bool IsDeviceWindow(HWND window) {
  std::array<wchar_t, 32> title{};
  GetWindowTextW(window, title.data(), static_cast<int>(title.size()));
  return std::wstring_view(title.data()) == L"DXGI device window";
}

}  // namespace

std::optional<std::uint64_t> CountGdiObjects(HANDLE process) {
  if (const DWORD count = GetGuiResources(process, GR_GDIOBJECTS); count != 0) {
    return count;
  }
  PROCESS_BASIC_INFORMATION basic{};
  const void* table = nullptr;
  std::vector<GdiEntry> entries(kEntries);
  if (NtQueryInformationProcess(process, ProcessBasicInformation, &basic, sizeof(basic), nullptr) < 0 ||
      !Read(process, reinterpret_cast<const std::byte*>(basic.PebBaseAddress) + kTableInPeb,
            static_cast<void*>(&table), sizeof(table)) ||
      !Read(process, table, entries.data(), entries.size() * sizeof(GdiEntry))) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(
      std::count_if(entries.begin(), entries.end(), [](const GdiEntry& entry) { return entry.type != 0; }));
}

WindowCounts CountWindows(DWORD pid) {
  WindowCounts counts;
  for (HWND parent : {HWND{nullptr}, HWND_MESSAGE}) {
    for (HWND window = nullptr; (window = FindWindowExW(parent, window, nullptr, nullptr)) != nullptr;) {
      DWORD owner = 0;
      GetWindowThreadProcessId(window, &owner);
      if (owner == pid) {
        ++(IsDeviceWindow(window) ? counts.ofDevices : counts.others);
      }
    }
  }
  return counts;
}

}  // namespace brisolte
