// The system's source of randomness.
#pragma once

namespace latbox {

// A seed from /dev/random, or from /dev/urandom where that gives none at once. False, with `seed` as it was
// or in part overwritten, if neither can be read.
bool readSeed(unsigned& seed);

}  // namespace latbox
