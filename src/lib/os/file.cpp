#include "lib/os/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace latbox {
namespace {

// A descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return fd_; }
  bool open() const { return fd_ >= 0; }

 private:
  int fd_;
};

// Regular files only: a directory opens, but has no text, and a pipe may never end. Without O_NONBLOCK the
// mere opening of a pipe would wait for a writer.
Descriptor openForReading(const std::string& path, struct stat& status) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd >= 0 && (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))) {
    ::close(fd);
    return Descriptor(-1);
  }
  return Descriptor(fd);
}

bool writeAll(int fd, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count = ::write(fd, text.data() + done, text.size() - done);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  return true;
}

bool writeInPlace(const std::string& path, const std::string& text) {
  const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  return file.open() && writeAll(file.get(), text);
}

// The file that a link stands for: the link itself must survive the replacement.
std::string linkTarget(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), std::free);
  return resolved ? std::string(resolved.get()) : path;
}

enum class Replaced { yes, no, notPossible };

// Writes a second file beside the first and puts it in the first one's place. `notPossible` if the folder
// takes no second file.
Replaced replaceFile(const std::string& path, const std::string& text, const struct stat* old) {
  const std::string fresh = path + ".tmp";
  const Descriptor file(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (!file.open()) return Replaced::notPossible;
  if (old != nullptr && ::fchmod(file.get(), old->st_mode & 07777) != 0) errno = 0;
  if (writeAll(file.get(), text) && ::rename(fresh.c_str(), path.c_str()) == 0) return Replaced::yes;
  const int error = errno;
  ::unlink(fresh.c_str());
  errno = error;
  return Replaced::no;
}

bool writeWhole(const std::string& path, const std::string& text) {
  struct stat old;
  const bool exists = ::stat(path.c_str(), &old) == 0;
  if (exists && S_ISDIR(old.st_mode)) {
    errno = EISDIR;
    return false;
  }
  // A file that is write-protected counts as one that can't be opened for writing, though its folder would
  // let it be replaced.
  if (exists && ::access(path.c_str(), W_OK) != 0) return false;
  if (exists && !S_ISREG(old.st_mode)) return writeInPlace(path, text);
  switch (replaceFile(exists ? linkTarget(path) : path, text, exists ? &old : nullptr)) {
    case Replaced::yes:
      return true;
    case Replaced::no:
      return false;
    default:
      return writeInPlace(path, text);
  }
}

}  // namespace

bool readFile(const std::string& path, std::string& content) {
  struct stat status;
  const Descriptor file = openForReading(path, status);
  if (!file.open()) return false;
  content.clear();
  content.reserve(static_cast<std::size_t>(status.st_size));
  char block[1 << 16];
  for (;;) {
    const ssize_t count = ::read(file.get(), block, sizeof block);
    if (count == 0) return true;
    if (count > 0) {
      content.append(block, static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return false;
    }
  }
}

bool writeFile(const std::string& path, const std::string& text, std::string& reason) {
  errno = 0;
  if (writeWhole(path, text)) return true;
  reason = std::strerror(errno);
  return false;
}

bool canOpen(const std::string& path) {
  struct stat status;
  return openForReading(path, status).open();
}

bool modificationTime(const std::string& path, long& seconds) {
  struct stat status;
  if (!openForReading(path, status).open()) return false;
  seconds = static_cast<long>(status.st_mtime);
  return true;
}

void removeFile(const std::string& path) {
  ::unlink(path.c_str());
}

}  // namespace latbox
