#pragma once

#include <wrl/client.h>

#include "encoder/mf/media_attributes.h"
#include "encoder/mf/mf_platform.h"

namespace brisolte {

/// The platform's names.
REFGUID MediaKeyGuid(MediaKey key);
REFGUID MediaNameGuid(MediaName name);

/// A media type with these attributes. Null when a call fails, with an ERROR line: `creationFailure` or the
/// attribute's.
Microsoft::WRL::ComPtr<IMFMediaType> MakeMediaType(MFPlatform& platform, const MediaAttributes& attributes,
                                                   const char* creationFailure);

}  // namespace brisolte
