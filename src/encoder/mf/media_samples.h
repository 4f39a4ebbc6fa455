#pragma once

#include <wrl/client.h>

#include <cstdint>
#include <span>

#include "encoder/mf/mf_platform.h"
#include "encoder/mf/sample_worker.h"

namespace brisolte {

/// When a sample begins, and how long it lasts, in units of 100 nanoseconds.
struct SampleTiming {
  std::int64_t time = 0;
  std::int64_t duration = 0;
};

/// A sample over an NV12 texture, which the sample keeps from being used for another frame. Null when a call
/// fails, with an ERROR line.
Microsoft::WRL::ComPtr<IMFSample> MakeVideoSample(MFPlatform& platform, const PooledTexture& texture,
                                                  const SampleTiming& timing);

/// A sample with a copy of these bytes. Null when a call fails, with an ERROR line.
Microsoft::WRL::ComPtr<IMFSample> MakeAudioSample(MFPlatform& platform, std::span<const std::uint8_t> bytes,
                                                  const SampleTiming& timing);

}  // namespace brisolte
