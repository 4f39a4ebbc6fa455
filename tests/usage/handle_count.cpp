#include "usage/handle_count.h"

#include <winternl.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

namespace brisolte {
namespace {

constexpr auto kExtendedHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(64);
constexpr auto kTooSmall = static_cast<NTSTATUS>(0xC0000004);

struct SystemHandle {
  void* object;
  std::uintptr_t pid;
  std::uintptr_t handle;
  std::uint32_t access;
  std::uint16_t creatorIndex;
  std::uint16_t type;
  std::uint32_t attributes;
  std::uint32_t reserved;
};

struct SystemHandlesHeader {
  std::uintptr_t count;
  std::uintptr_t reserved;
};

std::vector<SystemHandle> AllHandles() {
  std::vector<std::byte> list(1 << 20);
  NTSTATUS status = kTooSmall;
  while (status == kTooSmall) {
    list.resize(list.size() * 2);
    status = NtQuerySystemInformation(kExtendedHandleInformation, list.data(),
                                      static_cast<ULONG>(list.size()), nullptr);
  }
  SystemHandlesHeader header{};
  std::memcpy(&header, list.data(), sizeof(header));
  std::vector<SystemHandle> handles(status < 0 ? 0 : header.count);
  if (!handles.empty()) {
    std::memcpy(handles.data(), list.data() + sizeof(header), handles.size() * sizeof(SystemHandle));
  }
  return handles;
}

}  // namespace

// Not GetProcessHandleCount: Wine's gives 0, and its list of processes the size of the handle table.
std::optional<std::uint64_t> CountHandles(DWORD pid) {
  const std::vector<SystemHandle> handles = AllHandles();
  if (handles.empty()) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(
      std::ranges::count_if(handles, [pid](const SystemHandle& handle) { return handle.pid == pid; }));
}

}  // namespace brisolte
