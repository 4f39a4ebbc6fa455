#include "video/capture_geometry.h"

#include <gmock/gmock.h>

#include <limits>
#include <vector>

namespace brisolte {
namespace {

using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
constexpr auto kHighest = std::numeric_limits<std::int32_t>::max();
constexpr Rectangle kMonitor{0, 0, 1920, 1080};
constexpr PixelSize kItem{1920, 1080};

CaptureGeometry Region(const CaptureRegion& region, const Rectangle& monitor = kMonitor) {
  const auto result = RegionGeometry(kItem, monitor, region);
  EXPECT_THAT(result.error, IsEmpty());
  return result.geometry;
}

std::string RegionError(const CaptureRegion& region) {
  return RegionGeometry(kItem, kMonitor, region).error;
}

/// The index of the monitor that a region is recorded from, `preferred` being that of the settings.
std::int32_t MonitorOfRegion(const CaptureRegion& region, std::size_t preferred = 0) {
  const std::vector<MonitorEntry> monitors{{0, "primary", 1, {0, 0, 1920, 1080}, true},
                                           {1, "left", 2, {-1280, 100, 0, 1124}, false},
                                           {2, "right", 3, {1920, 0, 5760, 2160}, false}};
  return MonitorForRegion(monitors, monitors[preferred], region).index;
}

TEST(MonitorForRegion, IsTheOneOfTheSettingsAsLongAsItShowsAnyOfTheRegion) {
  EXPECT_EQ(MonitorOfRegion({100, 100, 200, 100}), 0);
  EXPECT_EQ(MonitorOfRegion({1919, 1079, 800, 600}), 0);
  EXPECT_EQ(MonitorOfRegion({-100, 200, 101, 50}), 0);
}

TEST(MonitorForRegion, IsTheOneThatShowsMostOtherwise) {
  EXPECT_EQ(MonitorOfRegion({1920, 0, 640, 480}), 2);
  EXPECT_EQ(MonitorOfRegion({-640, 200, 640, 480}), 1);
  EXPECT_EQ(MonitorOfRegion({-100, 200, 1000, 50}, 2), 0);
  EXPECT_EQ(MonitorOfRegion({-500, 200, 600, 50}, 2), 1);
}

TEST(MonitorForRegion, StaysWhereNoMonitorIs) {
  EXPECT_EQ(MonitorOfRegion({-100, 0, 100, 100}), 0);
  EXPECT_EQ(MonitorOfRegion({50000, 50000, 640, 360}, 1), 1);
  EXPECT_EQ(MonitorOfRegion({kHighest, kHighest, kHighest, kHighest}, 2), 2);
  EXPECT_EQ(MonitorOfRegion({kLowest, kLowest, kHighest, kHighest}, 2), 2);
}

TEST(RoundUpToEven, HoldsOverTheWholeRange) {
  EXPECT_EQ(RoundUpToEven(0), 0);
  EXPECT_EQ(RoundUpToEven(767), 768);
  EXPECT_EQ(RoundUpToEven(768), 768);
  EXPECT_EQ(RoundUpToEven(kHighest), std::int64_t{kHighest} + 1);
  EXPECT_EQ(RoundUpToEven(-3), -2);
}

TEST(WholeItem, IsRoundedUpToEven) {
  const auto geometry = WholeItemGeometry({1366, 767}).geometry;
  EXPECT_EQ(geometry.pool, (PixelSize{1366, 768}));
  EXPECT_EQ(geometry.frame, (PixelSize{1366, 768}));
  EXPECT_EQ(geometry.origin, (PixelPoint{0, 0}));
}

TEST(WholeItem, MustHaveASizeThatTexturesCanHave) {
  EXPECT_THAT(WholeItemGeometry({16384, 16383}).error, IsEmpty());
  EXPECT_EQ(WholeItemGeometry({16385, 2}).error, "Capture size is not supported: 16386x2");
  EXPECT_THAT(WholeItemGeometry({kHighest, kHighest}).error, StartsWith("Capture size is not supported"));
  EXPECT_THAT(WholeItemGeometry({0, 100}).error, StartsWith("Capture size is not supported"));
  EXPECT_THAT(WholeItemGeometry({100, kLowest}).error, StartsWith("Capture size is not supported"));
}

TEST(Region, AtTheOriginIsAPoolOfItsEvenSize) {
  const auto geometry = Region({0, 0, 101, 51});
  EXPECT_EQ(geometry.pool, (PixelSize{102, 52}));
  EXPECT_EQ(geometry.frame, (PixelSize{102, 52}));
  EXPECT_EQ(geometry.origin, (PixelPoint{0, 0}));
}

TEST(Region, ElsewhereNeedsAPoolToItsFarCorner) {
  const auto geometry = Region({301, 200, 640, 480});
  EXPECT_EQ(geometry.pool, (PixelSize{942, 680}));
  EXPECT_EQ(geometry.frame, (PixelSize{640, 480}));
  EXPECT_EQ(geometry.origin, (PixelPoint{301, 200}));
}

TEST(Region, IsRelativeToItsMonitor) {
  EXPECT_EQ(Region({-1900, 30, 100, 100}, {-1920, 0, 0, 1080}).origin, (PixelPoint{20, 30}));
  EXPECT_EQ(Region({2000, -500, 100, 100}, {1920, -540, 3840, 540}).origin, (PixelPoint{80, 40}));
}

TEST(Region, MayReachBeyondTheMonitor) {
  EXPECT_EQ(Region({-50, -20, 200, 100}).origin, (PixelPoint{-50, -20}));
  EXPECT_EQ(Region({-50, -20, 200, 100}).pool, (PixelSize{150, 80}));
  EXPECT_EQ(Region({1900, 1000, 200, 200}).pool, (PixelSize{2100, 1200}));
  EXPECT_EQ(Region({1919, 1079, 2, 2}).frame, (PixelSize{2, 2}));
  EXPECT_EQ(Region({-1, -1, 2, 2}).frame, (PixelSize{2, 2}));
}

TEST(Region, MustNotLieOutside) {
  const std::string outside = "Region lies outside the monitor";
  EXPECT_EQ(RegionError({1920, 0, 100, 100}), outside);
  EXPECT_EQ(RegionError({0, 1080, 100, 100}), outside);
  EXPECT_EQ(RegionError({-100, 0, 100, 100}), outside);
  EXPECT_EQ(RegionError({0, -101, 100, 101}), outside);
  EXPECT_EQ(RegionError({kHighest, kHighest, kHighest, kHighest}), outside);
  EXPECT_EQ(RegionError({kLowest, kLowest, kHighest, kHighest}), outside);
}

TEST(Region, MustHaveASizeThatTexturesCanHave) {
  EXPECT_EQ(RegionError({0, 0, 16386, 100}), "Capture size is not supported: 16386x100");
  EXPECT_THAT(RegionError({0, 0, kHighest, kHighest}), StartsWith("Capture size is not supported"));
  EXPECT_THAT(RegionError({-20000, 0, 20100, 100}), StartsWith("Capture size is not supported"));
  EXPECT_THAT(RegionError({1900, 0, 16384, 100}), StartsWith("Capture size is not supported"));
}

TEST(Region, HoldsForMonitorsAtTheEndsOfTheRange) {
  const Rectangle far{kHighest - 1920, kHighest - 1080, kHighest, kHighest};
  EXPECT_EQ(Region({kHighest - 100, kHighest - 100, 200, 200}, far).origin, (PixelPoint{1820, 980}));
  EXPECT_EQ(RegionGeometry(kItem, far, {kLowest, kLowest, 2, 2}).error, "Region lies outside the monitor");
  const Rectangle near{kLowest, kLowest, kLowest + 1920, kLowest + 1080};
  EXPECT_EQ(Region({kLowest, kLowest, 100, 100}, near).origin, (PixelPoint{0, 0}));
  EXPECT_EQ(RegionGeometry(kItem, near, {kHighest, kHighest, 2, 2}).error, "Region lies outside the monitor");
}

TEST(ShowsRegion, NeedsTheModeAndASize) {
  CaptureSettings settings;
  settings.region = {10, 10, 100, 100};
  EXPECT_FALSE(ShowsRegion(settings));
  settings.mode = CaptureMode::kRegion;
  EXPECT_TRUE(ShowsRegion(settings));
  settings.region.width = 0;
  EXPECT_FALSE(ShowsRegion(settings));
  settings.region = {10, 10, 100, -1};
  EXPECT_FALSE(ShowsRegion(settings));
}

TEST(PlaceContent, CoversTheFrameWithAWholeItem) {
  const CaptureGeometry whole{{640, 480}, {640, 480}, {0, 0}};
  EXPECT_EQ(PlaceContent(whole, {640, 480}, {640, 480}), (Placement{{0, 0}, {0, 0}, {640, 480}}));
}

TEST(PlaceContent, LeavesOutWhatIsNotContent) {
  const CaptureGeometry whole{{640, 480}, {640, 480}, {0, 0}};
  EXPECT_EQ(PlaceContent(whole, {640, 480}, {639, 479}), (Placement{{0, 0}, {0, 0}, {639, 479}}));
  EXPECT_EQ(PlaceContent(whole, {640, 480}, {9000, 9000}), (Placement{{0, 0}, {0, 0}, {640, 480}}));
  EXPECT_EQ(PlaceContent(whole, {320, 240}, {640, 480}), (Placement{{0, 0}, {0, 0}, {320, 240}}));
}

TEST(PlaceContent, TakesARegionFromItsPlace) {
  const CaptureGeometry region{{942, 680}, {640, 480}, {301, 200}};
  EXPECT_EQ(PlaceContent(region, {942, 680}, {942, 680}), (Placement{{301, 200}, {0, 0}, {640, 480}}));
  EXPECT_EQ(PlaceContent(region, {942, 680}, {500, 600}), (Placement{{301, 200}, {0, 0}, {199, 400}}));
}

TEST(PlaceContent, MovesARegionThatBeginsOutside) {
  const CaptureGeometry region{{150, 80}, {200, 100}, {-50, -20}};
  EXPECT_EQ(PlaceContent(region, {150, 80}, {150, 80}), (Placement{{0, 0}, {50, 20}, {150, 80}}));
}

TEST(PlaceContent, IsNothingWithoutContentInTheFrame) {
  const CaptureGeometry region{{942, 680}, {640, 480}, {301, 200}};
  EXPECT_EQ(PlaceContent(region, {942, 680}, {301, 600}), Placement{});
  EXPECT_EQ(PlaceContent(region, {942, 680}, {0, 0}), Placement{});
  EXPECT_EQ(PlaceContent(region, {942, 680}, {kLowest, kHighest}), Placement{});
}

}  // namespace
}  // namespace brisolte
