#include "driver/random.h"

#include <cstdlib>

#include "lib/os/random_device.h"

namespace latbox {

unsigned seedRandom(unsigned seed) {
  if (seed == 0) readSeed(seed);
  std::srand(seed);
  return seed;
}

}  // namespace latbox
