#pragma once

#include <mfidl.h>
#include <mfreadwrite.h>
#include <wrl/client.h>

#include "mf/media_stage.h"

namespace brisolte::testing {

/// A sink writer that encodes nothing: it writes down what it is given.
Microsoft::WRL::ComPtr<IMFSinkWriter> MakeRecordingSinkWriter(MediaStage& stage);

/// The sample as it is now.
WrittenSample ReadSample(DWORD stream, IMFSample& sample);

/// The attributes as "key = value", in their order.
std::string AttributesText(IMFAttributes& attributes);

}  // namespace brisolte::testing
