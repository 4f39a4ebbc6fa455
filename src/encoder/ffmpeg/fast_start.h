#pragma once

#include <filesystem>
#include <string>

namespace brisolte {

/// Moves the index of a complete MP4 or MOV file from its end to its front, as players that fetch a file want
/// it, and makes an ordinary file of one that was written in fragments.
///
/// That is done in a second file beside it, which takes its place when it is complete: at any moment there is
/// a file that can be played. Gives why it could not be done, and leaves the file as it is then; empty when
/// it was.
std::string MoveIndexToFront(const std::filesystem::path& file);

}  // namespace brisolte
