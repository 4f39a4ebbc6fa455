#pragma once

#include <string_view>

namespace brisolte::standins {

/// Whose an object of the sound system is: "microphone", "speaker" or "player"; empty for those that belong
/// to no endpoint. Any thread.
std::string_view OwnerOf(const void* object);

/// `owner` must be a literal.
void SetOwner(const void* object, std::string_view owner);

}  // namespace brisolte::standins
