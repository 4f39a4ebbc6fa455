#pragma once

#include <mfidl.h>
#include <mfreadwrite.h>
#include <wrl/client.h>

#include <string>

namespace brisolte::standins {

/// A sink writer of an MP4 file, as strict as the system's: see README.md. `path` is UTF-8. Null when the
/// file cannot be made.
Microsoft::WRL::ComPtr<IMFSinkWriter> MakeSinkWriter(const std::string& path);

}  // namespace brisolte::standins
