#include "encoder/ffmpeg/movie_index.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

namespace brisolte {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Number(std::uint64_t value, std::size_t size) {
  Bytes bytes;
  for (std::size_t i = size; i > 0; --i) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8 * (i - 1)));
  }
  return bytes;
}

Bytes Joined(const std::vector<Bytes>& parts) {
  Bytes bytes;
  for (const Bytes& part : parts) {
    bytes.insert(bytes.end(), part.begin(), part.end());
  }
  return bytes;
}

Bytes Box(const std::string& type, const std::vector<Bytes>& content) {
  const Bytes inside = Joined(content);
  return Joined({Number(inside.size() + 8, 4), Bytes(type.begin(), type.end()), inside});
}

Bytes TrackHeader(std::uint32_t duration) {
  return Box("tkhd", {Bytes(20), Number(duration, 4), Bytes(60)});
}

/// An empty edit of so many milliseconds, and one of the samples.
Bytes Edits(std::uint32_t delay, std::uint32_t duration) {
  return Box("edts",
             {Box("elst", {Bytes(4), Number(2, 4), Number(delay, 4), Number(0xFFFFFFFF, 4),
                           Number(0x10000, 4), Number(duration, 4), Number(0, 4), Number(0x10000, 4)})});
}

Bytes Media(const Bytes& places) {
  return Box("mdia", {Box("minf", {Box("stbl", {Box("stsd", {Bytes(8)}), places})})});
}

Bytes Places(const std::string& type, const std::vector<std::uint64_t>& places) {
  std::vector<Bytes> content{Bytes(4), Number(places.size(), 4)};
  for (const std::uint64_t place : places) {
    content.push_back(Number(place, type == "co64" ? 8 : 4));
  }
  return Box(type, content);
}

Bytes Movie(const std::vector<Bytes>& boxes) {
  return Box("moov", boxes);
}

TEST(IndexInFront, MovesThePlacesAndLeavesOutTheFragments) {
  const auto movie = [](std::uint64_t shift, const Bytes& fragments, std::uint32_t duration) {
    return Movie({Box("mvhd", {Bytes(100)}),
                  Box("trak", {TrackHeader(7000), Edits(200, duration),
                               Media(Places("stco", {60 + shift, 900 + shift}))}),
                  Box("trak", {TrackHeader(7000), Media(Places("co64", {500 + shift}))}), fragments});
  };
  const Bytes expected = movie(movie(0, {}, 0).size(), {}, 6800);
  EXPECT_EQ(IndexInFront(movie(0, Box("mvex", {Bytes(32)}), 0)), expected);
}

TEST(IndexInFront, KeepsWhatIsToldOfEdits) {
  const Bytes index = Movie({Box("trak", {TrackHeader(7000), Edits(200, 5000), Media(Places("stco", {}))})});
  EXPECT_EQ(IndexInFront(index), index);
}

TEST(IndexInFront, MakesRoomForPlacesBeyondFourGigabytes) {
  const auto movie = [](const std::string& type, std::uint64_t first, std::uint64_t last) {
    return Movie({Box("trak", {TrackHeader(1), Media(Places(type, {first, last}))})});
  };
  const std::uint64_t size = movie("co64", 0, 0).size();
  EXPECT_EQ(IndexInFront(movie("stco", 100, 0xFFFFFFF0)), movie("co64", 100 + size, 0xFFFFFFF0 + size));
}

TEST(IndexInFront, RefusesWhatIsNotAsItShouldBe) {
  const Bytes good = Movie({Box("trak", {TrackHeader(7000), Edits(200, 0), Media(Places("stco", {60}))})});
  ASSERT_TRUE(IndexInFront(good));
  for (std::size_t size = 0; size < good.size(); ++size) {
    EXPECT_FALSE(IndexInFront(Bytes(good.begin(), good.begin() + size))) << size;
  }
  EXPECT_FALSE(IndexInFront(Box("mdat", {})));
  EXPECT_FALSE(IndexInFront(Movie({Box("trak", {TrackHeader(1)})})));
  EXPECT_FALSE(IndexInFront(
      Movie({Box("trak", {TrackHeader(1), Media(Box("stco", {Bytes(4), Number(2, 4), Bytes(4)}))})})));
  EXPECT_FALSE(IndexInFront(Movie({Box("trak", {Edits(1, 0), Media(Places("stco", {}))})})));
}

// Whatever is in it, nothing is read that is not there.
TEST(IndexInFront, SurvivesAnyByte) {
  const Bytes good = Movie({Box("trak", {TrackHeader(7000), Edits(200, 0), Media(Places("stco", {60}))})});
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (const std::uint8_t byte : {std::uint8_t{0}, std::uint8_t{1}, std::uint8_t{0xFF}}) {
      Bytes changed = good;
      changed[at] = byte;
      const auto moved = IndexInFront(changed);
      EXPECT_TRUE(!moved || moved->size() >= 8);
    }
  }
}

}  // namespace
}  // namespace brisolte
