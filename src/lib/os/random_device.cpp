#include "lib/os/random_device.h"

#include <fcntl.h>
#include <unistd.h>

namespace latbox {
namespace {

bool readFrom(const char* device, unsigned& seed) {
  const int file = open(device, O_RDONLY | O_NONBLOCK);
  if (file < 0) return false;
  const bool complete = read(file, &seed, sizeof seed) == static_cast<ssize_t>(sizeof seed);
  close(file);
  return complete;
}

}  // namespace

bool readSeed(unsigned& seed) {
  static_assert(sizeof seed == 4);
  return readFrom("/dev/random", seed) || readFrom("/dev/urandom", seed);
}

}  // namespace latbox
