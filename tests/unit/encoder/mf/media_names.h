#pragma once

#include <guiddef.h>

#include <string>

namespace brisolte::testing {

/// What the platform's headers call a GUID; its digits when it is none of theirs.
std::string MediaGuidText(const GUID& guid);

}  // namespace brisolte::testing
