#include "complete/write_failure.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace latbox::complete {

void synchronise(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  // There are files that cannot be, and that is no failure; a full disk may show only here.
  const int error = ::fsync(file) == 0 || errno == EINVAL || errno == EROFS ? 0 : errno;
  ::close(file);
  if (error != 0) throw WriteFailure(path + ": " + std::strerror(error));
}

}  // namespace latbox::complete
