#pragma once

#include <string>
#include <string_view>

#include "encoder/wave_format.h"

namespace brisolte {

/// One line about a device's format; `label` says whose it is. `format` may be null.
std::string WaveFormatReport(std::string_view label, const WaveFormat* format);

}  // namespace brisolte
