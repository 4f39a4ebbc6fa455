#pragma once

namespace brisolte::standins {

/// Lets the file functions that the modules of this process import refuse what Windows refuses: a path of 260
/// characters and more, or of 248 for a new directory, that is not behind `\\?\`. Once, for the modules that
/// are loaded.
void LimitPaths();

}  // namespace brisolte::standins
