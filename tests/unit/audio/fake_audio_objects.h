#pragma once

#include <objbase.h>
#include <wrl/client.h>

#include "fake_audio_service.h"

namespace brisolte::testing {

/// The factory of the enumerator's class; everything else is reached from it.
Microsoft::WRL::ComPtr<IClassFactory> MakeEnumeratorFactory(FakeAudioService& service);

}  // namespace brisolte::testing
