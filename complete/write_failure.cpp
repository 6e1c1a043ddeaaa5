#include "complete/write_failure.h"

#include <fcntl.h>
#include <unistd.h>

namespace latbox::complete {

void synchronise(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  ::fsync(file);
  ::close(file);
}

}  // namespace latbox::complete
