#include "encoder/ffmpeg/movie_index.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace brisolte {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kHeadBytes = 8;
constexpr std::size_t kFourBytes = 4;
constexpr std::size_t kEightBytes = 8;
/// The boxes of which an index is made that have nothing but boxes in them.
constexpr std::array<std::string_view, 6> kFolders = {"moov", "trak", "mdia", "minf", "stbl", "edts"};

/// The file is not what it should be.
struct Malformed : std::runtime_error {
  Malformed() : std::runtime_error("malformed") {}
};

/// The number, most significant byte first, in so many bytes at this place. @throws Malformed
std::uint64_t NumberAt(Bytes bytes, std::size_t at, std::size_t size) {
  if (bytes.size() < size || at > bytes.size() - size) {
    throw Malformed();
  }
  std::uint64_t value = 0;
  for (const std::uint8_t byte : bytes.subspan(at, size)) {
    value = value << 8 | byte;
  }
  return value;
}

void Append(std::vector<std::uint8_t>& bytes, std::uint64_t value, std::size_t size) {
  for (std::size_t i = size; i > 0; --i) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8 * (i - 1)));
  }
}

/// A box, with what is in it either as bytes or as boxes.
struct Box {
  std::string type;
  std::vector<std::uint8_t> content;
  std::vector<Box> boxes;

  // NOLINTNEXTLINE(misc-no-recursion): boxes have boxes in them.
  std::uint64_t size() const {
    std::uint64_t sum = kHeadBytes + content.size();
    for (const Box& box : boxes) {
      sum += box.size();
    }
    return sum;
  }

  Box* Find(std::string_view wanted) {
    const auto found = std::ranges::find(boxes, wanted, &Box::type);
    return found == boxes.end() ? nullptr : &*found;
  }
};

/// @throws Malformed
// NOLINTNEXTLINE(misc-no-recursion): boxes have boxes in them.
std::vector<Box> ReadBoxes(Bytes bytes) {
  std::vector<Box> boxes;
  while (!bytes.empty()) {
    const std::uint64_t size = NumberAt(bytes, 0, kFourBytes);
    if (size < kHeadBytes || size > bytes.size()) {
      throw Malformed();
    }
    Box box{std::string(bytes.begin() + kFourBytes, bytes.begin() + kHeadBytes), {}, {}};
    const Bytes inside = bytes.subspan(kHeadBytes, size - kHeadBytes);
    if (std::ranges::find(kFolders, box.type) != kFolders.end()) {
      box.boxes = ReadBoxes(inside);
    } else {
      box.content.assign(inside.begin(), inside.end());
    }
    boxes.push_back(std::move(box));
    bytes = bytes.subspan(size);
  }
  return boxes;
}

// NOLINTNEXTLINE(misc-no-recursion): boxes have boxes in them.
void WriteBox(const Box& box, std::vector<std::uint8_t>& bytes) {
  Append(bytes, box.size(), kFourBytes);
  bytes.insert(bytes.end(), box.type.begin(), box.type.end());
  bytes.insert(bytes.end(), box.content.begin(), box.content.end());
  for (const Box& inside : box.boxes) {
    WriteBox(inside, bytes);
  }
}

/// How long a track is shown, in the file's own time. @throws Malformed
std::uint64_t DurationOf(const Box& trackHeader) {
  const bool large = NumberAt(trackHeader.content, 0, 1) == 1;
  return large ? NumberAt(trackHeader.content, 28, kEightBytes)
               : NumberAt(trackHeader.content, 20, kFourBytes);
}

/// The last entry of a track's edit list says how long its samples are shown: of one that was fragmented,
/// nothing. @throws Malformed
void CompleteEdits(Box& edits, std::uint64_t trackDuration) {
  constexpr std::size_t kEntries = 8;
  const bool large = NumberAt(edits.content, 0, 1) == 1;
  const std::size_t width = large ? kEightBytes : kFourBytes;
  const std::size_t entrySize = 2 * width + kFourBytes;
  const std::uint64_t count = NumberAt(edits.content, kFourBytes, kFourBytes);
  if (edits.content.size() != kEntries + count * entrySize || count == 0) {
    throw Malformed();
  }
  const Bytes content = edits.content;
  const Bytes head = content.first(kEntries);
  std::vector<std::uint8_t> completed(head.begin(), head.end());
  std::uint64_t left = trackDuration;
  for (std::uint64_t i = 0; i < count; ++i) {
    const Bytes entry = content.subspan(kEntries + i * entrySize, entrySize);
    const std::uint64_t told = NumberAt(entry, 0, width);
    const std::uint64_t duration = told == 0 && i + 1 == count ? left : told;
    left -= std::min(left, duration);
    Append(completed, duration, width);
    const Bytes rest = entry.subspan(width);
    completed.insert(completed.end(), rest.begin(), rest.end());
  }
  edits.content = std::move(completed);
}

/// The places of a track's data, which follow one another in its box. @throws Malformed
std::vector<std::uint64_t> PlacesIn(const Box& box) {
  constexpr std::size_t kPlaces = 8;
  const std::size_t width = box.type == "co64" ? kEightBytes : kFourBytes;
  const std::uint64_t count = NumberAt(box.content, kFourBytes, kFourBytes);
  if (box.content.size() != kPlaces + count * width) {
    throw Malformed();
  }
  std::vector<std::uint64_t> places(count);
  for (std::size_t i = 0; i < count; ++i) {
    places[i] = NumberAt(box.content, kPlaces + i * width, width);
  }
  return places;
}

void SetPlaces(Box& box, const std::vector<std::uint64_t>& places, std::uint64_t shift) {
  const std::size_t width = box.type == "co64" ? kEightBytes : kFourBytes;
  box.content.assign(kFourBytes, 0);
  Append(box.content, places.size(), kFourBytes);
  for (const std::uint64_t place : places) {
    Append(box.content, place + shift, width);
  }
}

/// What is in a track's box at the end of the path. @throws Malformed
Box& Inside(Box& box, std::initializer_list<std::string_view> path) {
  Box* found = &box;
  for (const std::string_view type : path) {
    found = found->Find(type);
    if (found == nullptr) {
      throw Malformed();
    }
  }
  return *found;
}

/// The box of a track that has its places. @throws Malformed
Box& PlacesOf(Box& track) {
  Box& table = Inside(track, {"mdia", "minf", "stbl"});
  Box* const places = table.Find("stco");
  return places != nullptr ? *places : Inside(table, {"co64"});
}

struct TrackPlaces {
  Box* box;
  std::vector<std::uint64_t> places;
};

/// Moves all places by the size of the index, which is larger when they need more bytes for that.
void MovePlaces(Box& movie) {
  std::vector<TrackPlaces> tracks;
  std::uint64_t last = 0;
  for (Box& box : movie.boxes) {
    if (box.type == "trak") {
      Box& places = PlacesOf(box);
      tracks.push_back({&places, PlacesIn(places)});
      for (const std::uint64_t place : tracks.back().places) {
        last = std::max(last, place);
      }
    }
  }
  if (last + movie.size() > std::numeric_limits<std::uint32_t>::max()) {
    for (const TrackPlaces& track : tracks) {
      track.box->type = "co64";
      SetPlaces(*track.box, track.places, 0);
    }
  }
  const std::uint64_t shift = movie.size();
  for (const TrackPlaces& track : tracks) {
    SetPlaces(*track.box, track.places, shift);
  }
}

std::vector<std::uint8_t> MovedToFront(Bytes index) {
  std::vector<Box> boxes = ReadBoxes(index);
  if (boxes.size() != 1 || boxes.front().type != "moov") {
    throw Malformed();
  }
  Box& movie = boxes.front();
  std::erase_if(movie.boxes, [](const Box& box) { return box.type == "mvex"; });
  for (Box& box : movie.boxes) {
    if (Box* const edits = box.type == "trak" ? box.Find("edts") : nullptr) {
      CompleteEdits(Inside(*edits, {"elst"}), DurationOf(Inside(box, {"tkhd"})));
    }
  }
  MovePlaces(movie);
  std::vector<std::uint8_t> bytes;
  bytes.reserve(movie.size());
  WriteBox(movie, bytes);
  return bytes;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> IndexInFront(std::span<const std::uint8_t> index) {
  try {
    return MovedToFront(index);
  } catch (const Malformed&) {
    return std::nullopt;
  }
}

}  // namespace brisolte
