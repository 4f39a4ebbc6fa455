#include "desktop/windows.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <optional>

#include "support/test_window.h"

namespace brisolte {
namespace {

using testing::TestWindow;

std::optional<WindowEntry> Listed(const TestWindow& window) {
  const auto all = EnumerateWindows();
  const auto found =
      std::ranges::find_if(all, [&](const WindowEntry& entry) { return entry.handle == window.number(); });
  return found == all.end() ? std::nullopt : std::optional(*found);
}

TEST(EnumerateWindows, DescribesAWindow) {
  const TestWindow window(L"Fenster \u00FC \u6F22", {40, 30, 240, 130});
  const auto entry = Listed(window);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->title, "Fenster \xC3\xBC \xE6\xBC\xA2");
  EXPECT_EQ(entry->className, "BrisolteTestWindow");
  EXPECT_EQ(entry->rect.left, 40);
  EXPECT_EQ(entry->rect.top, 30);
  EXPECT_EQ(entry->rect.right, 240);
  EXPECT_EQ(entry->rect.bottom, 130);
}

TEST(EnumerateWindows, ListsFromFiftyOnePixels) {
  EXPECT_TRUE(Listed(TestWindow(L"small", {0, 0, 51, 51})));
  EXPECT_FALSE(Listed(TestWindow(L"narrow", {0, 0, 50, 200})));
  EXPECT_FALSE(Listed(TestWindow(L"flat", {0, 0, 200, 50})));
}

TEST(EnumerateWindows, LeavesOutHiddenAndUntitledOnes) {
  EXPECT_FALSE(Listed(TestWindow(L"hidden", {0, 0, 200, 200}, WS_POPUP)));
  EXPECT_FALSE(Listed(TestWindow(L"", {0, 0, 200, 200})));
}

TEST(EnumerateWindows, CutsALongTitle) {
  const TestWindow window(std::wstring(300, L'x'), {0, 0, 200, 200});
  const auto entry = Listed(window);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->title, std::string(255, 'x'));
}

}  // namespace
}  // namespace brisolte
