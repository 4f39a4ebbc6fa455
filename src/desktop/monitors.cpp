#include "desktop/monitors.h"

#include <windows.h>

#include <new>

#include "common/text.h"
#include "desktop/physical_pixels.h"

namespace brisolte {
namespace {

struct Listing {
  std::vector<MonitorEntry> monitors;
  bool outOfMemory = false;
};

void Append(std::vector<MonitorEntry>& monitors, HMONITOR handle, const MONITORINFOEXW& info) {
  MonitorEntry entry;
  entry.index = static_cast<std::int32_t>(monitors.size());
  entry.name = ToUtf8(info.szDevice);
  entry.handle = reinterpret_cast<std::intptr_t>(handle);
  entry.rect = {info.rcMonitor.left, info.rcMonitor.top, info.rcMonitor.right, info.rcMonitor.bottom};
  entry.isPrimary = (info.dwFlags & MONITORINFOF_PRIMARY) != 0;
  monitors.push_back(std::move(entry));
}

BOOL CALLBACK OnMonitor(HMONITOR handle, HDC /*context*/, LPRECT /*clip*/, LPARAM listing) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the system hands pointers through as integers.
  auto& result = *reinterpret_cast<Listing*>(listing);
  MONITORINFOEXW info{};
  info.cbSize = sizeof(info);
  if (GetMonitorInfoW(handle, &info) != FALSE) {
    // The system's code lies between here and the caller, and no exception may pass through it.
    try {
      Append(result.monitors, handle, info);
    } catch (const std::bad_alloc&) {
      result.outOfMemory = true;
    }
  }
  return TRUE;
}

}  // namespace

std::vector<MonitorEntry> EnumerateMonitors() {
  const PhysicalPixels pixels;
  Listing listing;
  EnumDisplayMonitors(nullptr, nullptr, OnMonitor, reinterpret_cast<LPARAM>(&listing));
  if (listing.outOfMemory) {
    throw std::bad_alloc();
  }
  return std::move(listing.monitors);
}

}  // namespace brisolte
