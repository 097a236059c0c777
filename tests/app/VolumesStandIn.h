#pragma once

#include "app/AppController.h"

// The volumes panel is not under test here. Its refresh is stood in for by this
// counter; being weak, it yields to the panel's own definition if that is linked in.
inline int refreshVolumesCalls = 0;

[[gnu::weak]] void AppController::refreshVolumes() {
    ++refreshVolumesCalls;
}
