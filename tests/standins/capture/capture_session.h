#pragma once

#include <memory>

#include "capture/capture_item.h"
#include "capture/frame_pool.h"

namespace brisolte::standins {

/// A session that copies an item's picture into a pool's buffers from `StartCapture` until it is closed or
/// released.
ComPtr<abi::IGraphicsCaptureSession> MakeCaptureSession(ComPtr<IOwnItem> item,
                                                        std::shared_ptr<FrameBuffers> buffers,
                                                        std::shared_ptr<FramePool::Anchor> pool);

}  // namespace brisolte::standins
