#include "driver/random.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace latbox {
namespace {

bool readSeed(const char* device, unsigned& seed) {
  const int file = open(device, O_RDONLY | O_NONBLOCK);
  if (file < 0) return false;
  const bool complete = read(file, &seed, sizeof seed) == static_cast<ssize_t>(sizeof seed);
  close(file);
  return complete;
}

}  // namespace

unsigned seedRandom(unsigned seed) {
  static_assert(sizeof seed == 4);
  if (seed == 0 && !readSeed("/dev/random", seed)) readSeed("/dev/urandom", seed);
  std::srand(seed);
  return seed;
}

}  // namespace latbox
