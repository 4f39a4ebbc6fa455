#pragma once

namespace brisolte {

/// Keeps this module in the process until that ends, however often it is called. Node.js unloads a module
/// with the last worker thread that loaded it, when threads of the system may still have to return through
/// our functions, or hold our objects. Any thread. @throws HResultError
void PinModule();

}  // namespace brisolte
