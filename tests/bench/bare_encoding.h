#pragma once

#include <string>

#include "moving_pictures.h"

namespace brisolte::bench {

/// Encodes the film's first `frames` pictures into `file` with nothing but FFmpeg's libraries, in one loop on
/// one thread and with the options that the recorder uses. @throws std::runtime_error
void EncodeBare(const MovingPictures& pictures, const std::string& encoderName, int width, int height,
                std::size_t frames, const std::string& file);

}  // namespace brisolte::bench
