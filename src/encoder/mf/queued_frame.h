#pragma once

#include <cstdint>
#include <memory>

struct ID3D11Texture2D;

namespace brisolte {

/// A texture of a pool, to which it returns when the last copy of this goes. Outlives the pool if need be.
using PooledTexture = std::shared_ptr<ID3D11Texture2D>;

/// A frame that waits to be written, with a picture of its own. Times as in `VideoFrame`.
struct QueuedFrame {
  PooledTexture texture;
  std::int64_t timestamp = 0;
  std::int64_t duration = 0;
};

}  // namespace brisolte
