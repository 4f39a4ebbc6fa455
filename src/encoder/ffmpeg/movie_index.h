#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace brisolte {

/// The index (`moov` box) of an MP4 or MOV file as it is to be when the file's data follow it in place of
/// preceding it: they then lie further back by the size of what is returned.
///
/// What the index says of fragments is left out, and what it leaves to them is filled in, so that the file is
/// an ordinary one. None when the index is not as it should be.
std::optional<std::vector<std::uint8_t>> IndexInFront(std::span<const std::uint8_t> index);

}  // namespace brisolte
