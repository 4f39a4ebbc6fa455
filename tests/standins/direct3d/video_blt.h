#pragma once

#include "direct3d/video_objects.h"

namespace brisolte::standins {

/// Draws the input in the output as the processor's state says; no input leaves the background.
///
/// NV12 is written in blocks of two by two, so the target is widened to even edges there.
HRESULT Blit(ID3D11DeviceContext& context, VideoProcessor& processor, OutputView& output, InputView* input);

}  // namespace brisolte::standins
