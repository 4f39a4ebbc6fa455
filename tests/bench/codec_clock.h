#pragma once

namespace brisolte::bench {

/// Seconds that the calling thread has spent within the codec.
double CodecSeconds();

}  // namespace brisolte::bench
