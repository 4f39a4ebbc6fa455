#include "desktop/windows.h"

#include <windows.h>

#include <array>
#include <new>

#include "common/text.h"
#include "desktop/physical_pixels.h"
#include "desktop/window_filter.h"

namespace brisolte {
namespace {

using TextBuffer = std::array<wchar_t, 256>;

struct Listing {
  std::vector<WindowEntry> windows;
  bool outOfMemory = false;
};

void AppendIfListed(std::vector<WindowEntry>& windows, HWND handle) {
  if (IsWindowVisible(handle) == FALSE) {
    return;
  }
  TextBuffer title{};
  if (GetWindowTextW(handle, title.data(), static_cast<int>(title.size())) == 0) {
    return;
  }
  TextBuffer className{};
  GetClassNameW(handle, className.data(), static_cast<int>(className.size()));
  // A window that is gone by now has no size and is left out with the small ones.
  RECT rect{};
  GetWindowRect(handle, &rect);
  const Rectangle bounds{rect.left, rect.top, rect.right, rect.bottom};
  if (!IsWorthListing(bounds)) {
    return;
  }
  windows.push_back(
      {reinterpret_cast<std::intptr_t>(handle), ToUtf8(title.data()), ToUtf8(className.data()), bounds});
}

BOOL CALLBACK OnWindow(HWND handle, LPARAM listing) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the system hands pointers through as integers.
  auto& result = *reinterpret_cast<Listing*>(listing);
  // The system's code lies between here and the caller, and no exception may pass through it.
  try {
    AppendIfListed(result.windows, handle);
  } catch (const std::bad_alloc&) {
    result.outOfMemory = true;
  }
  return TRUE;
}

}  // namespace

std::vector<WindowEntry> EnumerateWindows() {
  const PhysicalPixels pixels;
  Listing listing;
  EnumWindows(OnWindow, reinterpret_cast<LPARAM>(&listing));
  if (listing.outOfMemory) {
    throw std::bad_alloc();
  }
  return std::move(listing.windows);
}

}  // namespace brisolte
