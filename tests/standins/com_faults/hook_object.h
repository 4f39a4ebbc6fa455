#pragma once

#include <windows.h>

namespace brisolte::standins {

/// From now on the methods of this object, and of all of its kind, ask for faults. Harmless to repeat, with
/// null, and with interfaces whose methods nobody replaces. `giver` is the object whose method gave it.
void HookObject(REFIID iid, void* object, const void* giver);

}  // namespace brisolte::standins
