#pragma once

#include "capture/recording_options.h"

namespace brisolte {

/// The size in which a picture of `source` is encoded where none may be larger than `largest`: with the same
/// ratio, as nearly as even sizes allow. `source` itself when it fits. Sizes are positive.
PictureSize FitInto(PictureSize source, PictureSize largest);

}  // namespace brisolte
