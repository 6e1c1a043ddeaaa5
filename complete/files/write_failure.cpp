#include "complete/files/write_failure.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace latbox::complete {

void synchronise(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  // There are files that cannot be, and that is no failure; a full disk may show only here.
  const int error = ::fsync(file) == 0 || errno == EINVAL || errno == EROFS ? 0 : errno;
  ::close(file);
  if (error != 0) throw WriteFailure(path + ": " + std::strerror(error));
}

void replaceFile(const std::string& path, const std::string& text, bool surely) {
  const std::string next = path + BESIDE;
  errno = 0;
  std::ofstream file(next, std::ios::binary | std::ios::trunc);
  file << text;
  file.close();
  if (!file.good()) {
    const std::string reason = errno != 0 ? std::strerror(errno) : "cannot be written";
    std::error_code ignored;
    std::filesystem::remove(next, ignored);
    throw WriteFailure(next + ": " + reason);
  }
  if (surely) synchronise(next);
  std::error_code error;
  std::filesystem::rename(next, path, error);
  if (error) throw WriteFailure(path + ": " + error.message());
}

}  // namespace latbox::complete
