#pragma once

#include <cstdint>
#include <string>

namespace brisolte {

/// The system's message for an HRESULT or an error code, as UTF-8, with the line break it ends in; empty when
/// it has none. `language` is a LANGID; 1024 is the user's. Windows only.
std::string SystemMessage(std::int32_t code, std::uint16_t language = 1024);

}  // namespace brisolte
