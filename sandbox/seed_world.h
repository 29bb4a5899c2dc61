// Fills a world with the default world of default_world.h.

#ifndef OBOLO_SANDBOX_SEED_WORLD_H_
#define OBOLO_SANDBOX_SEED_WORLD_H_

#include "sandbox/world.h"

namespace obolo::sandbox {

// REQUIRES: `world` holds none of the default world's publishers, articles or
// customers yet (a cleared world, for instance).
void SeedDefaultWorld(World& world);

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_SEED_WORLD_H_
