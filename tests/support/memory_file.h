// A regular file that stands in no folder: readers that take a path read it, and it is gone with the process,
// however that ends. Needs no test library.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace latbox::testing {

class MemoryFile {
 public:
  explicit MemoryFile(const std::string& text = "") : descriptor_(memfd_create("input", MFD_CLOEXEC)) {
    require(descriptor_ >= 0);
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
    set(text);
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  void set(const std::string& text) {
    require(ftruncate(descriptor_, 0) == 0);
    require(pwrite(descriptor_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
  }

  // Opened anew by whoever reads it, each time from its begin.
  const std::string& path() const { return path_; }

 private:
  static void require(bool well) {
    if (!well) throw std::system_error(errno, std::generic_category(), "memory file");
  }

  int descriptor_;
  std::string path_;
};

}  // namespace latbox::testing
