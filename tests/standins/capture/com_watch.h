#pragma once

namespace brisolte::standins {

/// From now on it is noticed when the process lets go of COM: then the system unloads the library of the
/// service while threads of the service are still in it, which ends the process sooner or later. Each time is
/// told on standard error and counted. Called whenever the process asks for a class.
void WatchCom();

/// How often that happened.
long ComLetGoCount();

}  // namespace brisolte::standins
