#pragma once

#include "desktop/rectangle.h"

namespace brisolte {

/// Whether a window of this size is worth listing: more than 50 pixels both ways.
bool IsWorthListing(const Rectangle& window);

}  // namespace brisolte
