#pragma once

#include <mfobjects.h>

#include "encoder/mf/sample_worker.h"

namespace brisolte {

/// Keeps a texture out of its pool as long as `buffer`, which is over that texture, exists: an encoder reads
/// it long after the sample was handed over.
HRESULT LeaseTexture(IMFMediaBuffer& buffer, PooledTexture texture);

}  // namespace brisolte
