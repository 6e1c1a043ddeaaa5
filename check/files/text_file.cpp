#include "check/files/text_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace latbox::check {

std::string readFile(const std::string& path) {
  errno = std::filesystem::is_directory(path) ? EISDIR : 0;
  std::ifstream file;
  if (errno == 0) file.open(path, std::ios::binary);
  std::ostringstream text;
  if (file.is_open() && file.peek() != std::ifstream::traits_type::eof()) text << file.rdbuf();
  if (!file.is_open() || file.bad() || text.bad())
    throw Unreadable(errno != 0 ? std::strerror(errno) : "cannot be read");
  return std::move(text).str();
}

}  // namespace latbox::check
