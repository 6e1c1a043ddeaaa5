// The seed of the run's random numbers.
#pragma once

namespace latbox {

// Seeds the library's generator and returns the seed: 0 draws one from the system, any other value is used as
// it is. The driver always uses the same one, so that a run repeats.
unsigned seedRandom(unsigned seed);

}  // namespace latbox
